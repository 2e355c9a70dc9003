#include "pickers/VXDocSec.h"

#include "pickers/TwoListPicker.h"

#include <QVBoxLayout>

namespace vx {

VXDocSec::VXDocSec(QWidget* parent)
    : QWidget(parent)
    , m_picker(new TwoListPicker(TwoListPicker::userDefinition(), this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_picker);
}

VXDocSec::~VXDocSec() = default;

void VXDocSec::setInit(const QString& initFilePath) {
    m_picker->init(initFilePath);
}

void VXDocSec::Done() {
    m_picker->done();
}

bool VXDocSec::isEof() const {
    return m_picker->isEof();
}

QString VXDocSec::currentListValue() const {
    return m_picker->currentListValue();
}

void VXDocSec::MoveFirst() {
    m_picker->moveFirst();
}

void VXDocSec::MoveNext() {
    m_picker->moveNext();
}

void VXDocSec::ClearContents() {
    m_picker->clearContents();
}

void VXDocSec::AddListItem(const QString& sItem) {
    m_picker->addListItem(sItem);
}

} // namespace vx

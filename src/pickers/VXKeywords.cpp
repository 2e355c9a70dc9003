#include "pickers/VXKeywords.h"

#include "pickers/TwoListPicker.h"

#include <QVBoxLayout>

namespace vx {

VXKeywords::VXKeywords(QWidget* parent)
    : QWidget(parent)
    , m_picker(new TwoListPicker(TwoListPicker::keywordDefinition(), this)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_picker);
}

VXKeywords::~VXKeywords() = default;

void VXKeywords::setInit(const QString& initFilePath) {
    m_picker->init(initFilePath);
}

void VXKeywords::Done() {
    m_picker->done();
}

bool VXKeywords::isEof() const {
    return m_picker->isEof();
}

QString VXKeywords::currentListValue() const {
    return m_picker->currentListValue();
}

void VXKeywords::MoveFirst() {
    m_picker->moveFirst();
}

void VXKeywords::MoveNext() {
    m_picker->moveNext();
}

void VXKeywords::ClearContents() {
    m_picker->clearContents();
}

void VXKeywords::AddListItem(const QString& sItem) {
    m_picker->addListItem(sItem);
}

} // namespace vx

#include "ControlWidgetInterface.h"

#include "data/Error.h"
#include "server/ControlFactory.h"

#include <QIcon>
#include <QLabel>

namespace vx::designer {

ControlWidgetInterface::ControlWidgetInterface(const QString& shortName, const QString& toolTip,
                                               QObject* parent)
    : QObject(parent)
    , m_shortName(shortName)
    , m_toolTip(toolTip) {}

QString ControlWidgetInterface::name() const {
    return QStringLiteral("vx::") + m_shortName;
}

QString ControlWidgetInterface::group() const {
    return QStringLiteral("VXUILib");
}

QString ControlWidgetInterface::toolTip() const {
    return m_toolTip;
}

QString ControlWidgetInterface::whatsThis() const {
    return m_toolTip + QStringLiteral(" (class VXUILib.") + m_shortName + u')';
}

QString ControlWidgetInterface::includeFile() const {
    return QStringLiteral("VXUILib/") + m_shortName + QStringLiteral(".h");
}

QIcon ControlWidgetInterface::icon() const {
    return {};
}

bool ControlWidgetInterface::isContainer() const {
    return false;
}

QWidget* ControlWidgetInterface::createWidget(QWidget* parent) {
    try {
        return ControlFactory::create(QStringLiteral("VXUILib.") + m_shortName, parent);
    } catch (const Error& error) {
        // Designer expects a widget; a label says why the control is missing.
        auto* label = new QLabel(error.description(), parent);
        label->setWordWrap(true);
        return label;
    }
}

bool ControlWidgetInterface::isInitialized() const {
    return m_initialized;
}

void ControlWidgetInterface::initialize(QDesignerFormEditorInterface* core) {
    Q_UNUSED(core)
    m_initialized = true;
}

QString ControlWidgetInterface::domXml() const {
    QString objectName = m_shortName;
    objectName.replace(0, 2, QStringLiteral("vx"));
    return QStringLiteral("<ui language=\"c++\">\n"
                          " <widget class=\"%1\" name=\"%2\">\n"
                          "  <property name=\"geometry\">\n"
                          "   <rect><x>0</x><y>0</y><width>400</width><height>300</height></rect>\n"
                          "  </property>\n"
                          " </widget>\n"
                          "</ui>\n")
        .arg(name(), objectName);
}

} // namespace vx::designer

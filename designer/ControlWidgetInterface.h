#pragma once

#include <QObject>
#include <QtUiPlugin/QDesignerCustomWidgetInterface>

namespace vx::designer {

// One control in Designer's widget box; the widget is made by the control factory by class
// name, so the plugin never depends on a control's own header.
class ControlWidgetInterface : public QObject, public QDesignerCustomWidgetInterface {
    Q_OBJECT
    Q_INTERFACES(QDesignerCustomWidgetInterface)

public:
    // shortName "VXIndex"; forms include the control as <VXUILib/VXIndex.h>.
    ControlWidgetInterface(const QString& shortName, const QString& toolTip, QObject* parent);

    QString name() const override;
    QString group() const override;
    QString toolTip() const override;
    QString whatsThis() const override;
    QString includeFile() const override;
    QIcon icon() const override;
    bool isContainer() const override;
    QWidget* createWidget(QWidget* parent) override;
    bool isInitialized() const override;
    void initialize(QDesignerFormEditorInterface* core) override;
    QString domXml() const override;

private:
    QString m_shortName;
    QString m_toolTip;
    bool m_initialized = false;
};

} // namespace vx::designer

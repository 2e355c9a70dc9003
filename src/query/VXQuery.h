#pragma once

#include <QString>
#include <QWidget>
#include <VXUILib/Recordset.h>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

// The search form of a group: the group's query form on one tab, a keyword picker on the other.
// It builds the query text the host hands to the hit list and applies criteria another program
// left in the query hand-over file.
class VXUILIB_EXPORT VXQuery : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXQuery")
    Q_CLASSINFO("Interface", "Refresh;GroupName;QueryString;UserID;QueryResult;MethodInitString;"
                             "Init;CurrentLibrary;CurrentGroup;RefreshFormContent")
    Q_CLASSINFO("Events", "KeyDown;PerformQuery")
    Q_CLASSINFO("WriteOnly", "GroupName;UserID;MethodInitString;CurrentLibrary;CurrentGroup")
    Q_PROPERTY(QString GroupName READ writeOnlyText WRITE setGroupName)
    Q_PROPERTY(QString QueryString READ queryString)
    Q_PROPERTY(short UserID READ writeOnlyNumber WRITE setUserID)
    Q_PROPERTY(vx::Recordset QueryResult READ queryResult)
    Q_PROPERTY(QString MethodInitString READ writeOnlyText WRITE setMethodInitString)
    Q_PROPERTY(QString CurrentLibrary READ writeOnlyText WRITE setCurrentLibrary)
    Q_PROPERTY(QString CurrentGroup READ writeOnlyText WRITE setCurrentGroup)

public:
    explicit VXQuery(QWidget* parent = nullptr);
    ~VXQuery() override;

    // Empties the form's criteria and the picked keywords.
    Q_INVOKABLE void Refresh();
    // Also the caption of the "Group" tab.
    void setGroupName(const QString& name);
    // The search for the filled form and picked keywords, restricted by document security when
    // the repository has it; empty when the form holds no criteria. Errors of the form, the
    // picker or the query parser are thrown to the caller as vx::Error.
    QString queryString();
    void setUserID(short userId);
    // The form's own result for its criteria.
    Recordset queryResult();
    // The group initialisation file handed to the keyword picker by Init.
    void setMethodInitString(const QString& initFilePath);
    // Loads the form from the form-definition file (which becomes the library-wide one) and
    // starts the picker; the form's load result. Throws vx::Error on failure.
    Q_INVOKABLE bool Init(QString& sInit);
    void setCurrentLibrary(const QString& library);
    // The group name without overwriting a caption GroupName already gave the tab.
    void setCurrentGroup(const QString& name);
    // Applies the query hand-over file, if one waits for this library and group, and raises
    // PerformQuery when every value went in; failures are shown and the file is deleted anyway.
    Q_INVOKABLE void RefreshFormContent();

    // Readers of the write-only properties, for the meta-object system only.
    QString writeOnlyText() const { return {}; }
    short writeOnlyNumber() const { return 0; }

signals:
    void KeyDown(short& KeyCode, short& Shift);
    void PerformQuery();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    void switchTab();
    void layOut();

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

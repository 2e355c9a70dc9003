#pragma once

#include <QString>
#include <QWidget>
#include <VXUILib/Recordset.h>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

/// The search form of a group: the group's query form on one tab, a keyword picker on the other.
/// It builds the query text the host hands to the hit list and applies criteria another program
/// left in the query hand-over file.
class VXUILIB_EXPORT VXQuery : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXQuery")
    Q_CLASSINFO("Interface", "Refresh;GroupName;QueryString;UserID;QueryResult;MethodInitString;"
                             "Init;CurrentLibrary;CurrentGroup;RefreshFormContent")
    Q_CLASSINFO("Events", "KeyDown;PerformQuery")
    Q_CLASSINFO("WriteOnly", "GroupName;UserID;MethodInitString;CurrentLibrary;CurrentGroup")
    /// Write-only: the group's name, also the caption of the "Group" tab.
    Q_PROPERTY(QString GroupName READ writeOnlyText WRITE setGroupName)
    /// The search for the filled form and picked keywords, for the hit list's DoQuery.
    Q_PROPERTY(QString QueryString READ queryString)
    /// Write-only: the user's id, by which document security restricts the search.
    Q_PROPERTY(short UserID READ writeOnlyNumber WRITE setUserID)
    /// The form's own result for its criteria.
    Q_PROPERTY(vx::Recordset QueryResult READ queryResult)
    /// Write-only: the group initialisation file, handed to the keyword picker.
    Q_PROPERTY(QString MethodInitString READ writeOnlyText WRITE setMethodInitString)
    /// Write-only: the library (collection of groups), first half of the hand-over section name.
    Q_PROPERTY(QString CurrentLibrary READ writeOnlyText WRITE setCurrentLibrary)
    /// Write-only: the group name, without overwriting the caption GroupName gave the tab.
    Q_PROPERTY(QString CurrentGroup READ writeOnlyText WRITE setCurrentGroup)

public:
    /// An empty search form; Init loads the group's form.
    explicit VXQuery(QWidget* parent = nullptr);
    ~VXQuery() override;

    /// Empties the form's criteria and the picked keywords.
    Q_INVOKABLE void Refresh();
    /// Writes #GroupName, also the caption of the "Group" tab.
    void setGroupName(const QString& name);
    /// The search for the filled form and picked keywords, restricted by document security when
    /// the repository has it; empty when the form holds no criteria. Errors of the form, the
    /// picker or the query parser are thrown to the caller as vx::Error.
    QString queryString();
    /// Writes #UserID.
    void setUserID(short userId);
    /// The form's own result for its criteria.
    Recordset queryResult();
    /// Writes #MethodInitString: the group initialisation file handed to the keyword picker by
    /// Init.
    void setMethodInitString(const QString& initFilePath);
    /// Loads the form from the form-definition file (which becomes the library-wide one) and
    /// starts the picker; the form's load result. Throws vx::Error on failure.
    Q_INVOKABLE bool Init(QString& sInit);
    /// Writes #CurrentLibrary.
    void setCurrentLibrary(const QString& library);
    /// The group name without overwriting a caption GroupName already gave the tab.
    void setCurrentGroup(const QString& name);
    /// Applies the query hand-over file, if one waits for this library and group, and raises
    /// PerformQuery when every value went in; failures are shown and the file is deleted anyway.
    Q_INVOKABLE void RefreshFormContent();

    /// \cond internal
    // Readers of the write-only properties, for the meta-object system only.
    QString writeOnlyText() const { return {}; }
    short writeOnlyNumber() const { return 0; }
    /// \endcond

signals:
    /// A key was pressed in the query form: the platform key code and shift state, which a
    /// directly connected slot may change.
    void KeyDown(short& KeyCode, short& Shift);
    /// RefreshFormContent filled the form from the hand-over file: the host runs the search.
    void PerformQuery();

    /// \cond internal
protected:
    void resizeEvent(QResizeEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    /// \endcond

private:
    void switchTab();
    void layOut();

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

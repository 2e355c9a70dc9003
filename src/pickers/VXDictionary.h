#pragma once

#include <QString>
#include <QWidget>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

/// The editor of a group's word list: one editable grid over the dictionary table. Every change
/// made in the grid goes straight to the table.
class VXUILIB_EXPORT VXDictionary : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXDictionary")
    Q_CLASSINFO("Interface", "Init;Done")
    Q_CLASSINFO("Events", "")
    Q_CLASSINFO("WriteOnly", "Init")
    /// Write-only: the group initialisation file. Writing it opens the editor's own connection
    /// to the group's repository and binds the grid to the dictionary table.
    Q_PROPERTY(QString Init READ init WRITE setInit)

public:
    /// An empty editor; writing Init binds it.
    explicit VXDictionary(QWidget* parent = nullptr);
    /// Closes the connection if Done has not.
    ~VXDictionary() override;

    /// \cond internal
    // Write-only: the reader exists for the meta-object system and answers empty.
    QString init() const { return {}; }
    /// \endcond
    /// Writes #Init: opens the group's repository and shows its words; a failure is shown to
    /// the user.
    void setInit(const QString& initFilePath);
    /// Unbinds the grid and closes the connection; errors are ignored.
    Q_INVOKABLE void Done();

private:
    void bind(const QString& initFilePath);
    void confirmDelete(int row);
    void showGridError(const QString& description);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

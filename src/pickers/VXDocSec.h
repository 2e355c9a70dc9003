#pragma once

#include <QString>
#include <QWidget>
#include <VXUILib/vxuilib_export.h>

// The C library's end-of-file macro would otherwise replace the property name while moc reads
// this header; the compiler proper never sees this.
#ifdef Q_MOC_RUN
#undef EOF
#endif

namespace vx {

class TwoListPicker;

/// A two-list picker over the group's users, collecting the users kept from a document.
/// Owners fill and read the picked list through the cursor members.
class VXUILIB_EXPORT VXDocSec : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXDocSec")
    Q_CLASSINFO("Interface",
                "Init;Done;EOF;CurrentListValue;MoveFirst;MoveNext;ClearContents;AddListItem")
    Q_CLASSINFO("Events", "")
    Q_CLASSINFO("WriteOnly", "Init")
    /// Write-only: the group initialisation file. Writing it opens the picker's own connection
    /// to the group's repository and fills the source list with the user names.
    Q_PROPERTY(QString Init READ init WRITE setInit)
    /// True when the cursor has passed the last picked item (or MoveFirst found none).
    Q_PROPERTY(bool EOF READ isEof)
    /// The picked item under the cursor.
    Q_PROPERTY(QString CurrentListValue READ currentListValue)

public:
    /// An empty picker; writing Init fills its source list.
    explicit VXDocSec(QWidget* parent = nullptr);
    /// Closes the connection if Done has not.
    ~VXDocSec() override;

    /// \cond internal
    // Write-only: the reader exists for the meta-object system and answers empty.
    QString init() const { return {}; }
    /// \endcond
    /// Writes #Init: opens the group's repository and fills the source list; a failure is shown
    /// to the user.
    void setInit(const QString& initFilePath);
    /// Closes the picker's connection; errors are ignored.
    Q_INVOKABLE void Done();
    /// Reads #EOF.
    bool isEof() const;
    /// Reads #CurrentListValue.
    QString currentListValue() const;
    /// Moves the cursor (the selection of the picked list) to the first picked item; EOF when
    /// there is none.
    Q_INVOKABLE void MoveFirst();
    /// Moves the cursor to the next picked item; EOF after the last.
    Q_INVOKABLE void MoveNext();
    /// Empties the picked list.
    Q_INVOKABLE void ClearContents();
    /// Appends an item to the picked list, even one already there.
    Q_INVOKABLE void AddListItem(const QString& sItem);

private:
    TwoListPicker* const m_picker; // child widget, owned by Qt
};

} // namespace vx

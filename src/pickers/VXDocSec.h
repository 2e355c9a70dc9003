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

// A two-list picker over the group's users, collecting the users kept from a document.
// Owners fill and read the picked list through the cursor members.
class VXUILIB_EXPORT VXDocSec : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXDocSec")
    Q_CLASSINFO("Interface",
                "Init;Done;EOF;CurrentListValue;MoveFirst;MoveNext;ClearContents;AddListItem")
    Q_CLASSINFO("Events", "")
    Q_CLASSINFO("WriteOnly", "Init")
    Q_PROPERTY(QString Init READ init WRITE setInit)
    Q_PROPERTY(bool EOF READ isEof)
    Q_PROPERTY(QString CurrentListValue READ currentListValue)

public:
    explicit VXDocSec(QWidget* parent = nullptr);
    ~VXDocSec() override;

    // Write-only: the reader exists for the meta-object system and answers empty.
    QString init() const { return {}; }
    void setInit(const QString& initFilePath);
    Q_INVOKABLE void Done();
    bool isEof() const;
    QString currentListValue() const;
    Q_INVOKABLE void MoveFirst();
    Q_INVOKABLE void MoveNext();
    Q_INVOKABLE void ClearContents();
    Q_INVOKABLE void AddListItem(const QString& sItem);

private:
    TwoListPicker* const m_picker; // child widget, owned by Qt
};

} // namespace vx

#pragma once

#include <QString>
#include <QWidget>
#include <VXUILib/vxuilib_export.h>
#include <memory>

namespace vx {

// The editor of a group's word list: one editable grid over the dictionary table. Every change
// made in the grid goes straight to the table.
class VXUILIB_EXPORT VXDictionary : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXDictionary")
    Q_CLASSINFO("Interface", "Init;Done")
    Q_CLASSINFO("Events", "")
    Q_CLASSINFO("WriteOnly", "Init")
    Q_PROPERTY(QString Init READ init WRITE setInit)

public:
    explicit VXDictionary(QWidget* parent = nullptr);
    ~VXDictionary() override;

    // Write-only: the reader exists for the meta-object system and answers empty.
    QString init() const { return {}; }
    void setInit(const QString& initFilePath);
    Q_INVOKABLE void Done();

private:
    void bind(const QString& initFilePath);
    void confirmDelete(int row);
    void showGridError(const QString& description);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

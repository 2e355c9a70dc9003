#pragma once

#include <QDialog>
#include <QtGlobal>
#include <functional>

class QLabel;
class QPushButton;

namespace vx {

// The size of a byte count in megabytes of 1,000,000 bytes, as the "#########.##" format has
// always written it: at most two decimals, rounded half away from zero, no digit forced on either
// side of the point and the point always there: "2.5", "3.", ".5", ".".
QString megabytesText(qint64 bytes);

// The "Documents Property" form: how many documents are selected and how many bytes their files
// hold. TotalCount and TotalSize are write-only for callers; OK closes the form.
class DocumentProperty : public QDialog {
    Q_OBJECT
    Q_PROPERTY(qint32 TotalCount READ totalCount WRITE setTotalCount)
    Q_PROPERTY(qint64 TotalSize READ totalSize WRITE setTotalSize)

public:
    explicit DocumentProperty(QWidget* parent = nullptr);
    ~DocumentProperty() override;

    // Readers for the meta-object system; they answer what was written.
    qint32 totalCount() const { return m_count; }
    qint64 totalSize() const { return m_size; }
    void setTotalCount(qint32 count);
    void setTotalSize(qint64 bytes);

    // Shows the form and returns once it is closed. While a hook is installed the hook gets the
    // shown form instead of the user (tests read it, may click OK); it is hidden afterwards.
    void showModal();
    using ShowHook = std::function<void(DocumentProperty&)>;
    // Returns the hook installed before.
    static ShowHook setShowHook(ShowHook hook);

private:
    QLabel* m_countLabel = nullptr;
    QLabel* m_sizeLabel = nullptr;
    QPushButton* m_ok = nullptr;
    qint32 m_count = 0;
    qint64 m_size = 0;
};

} // namespace vx

#pragma once

#include <QString>
#include <QtGlobal>
#include <memory>

class QObject;

namespace vx {

class HitListContext;

// The hit list's record form: fills the dynamic form and both pickers from the current result
// row, writes an edited record back (group row, keyword rows, excluded users through the
// security manager) and converts between user ids and names.
class RecordForm {
public:
    // The pickers are the hit list's children "kss3" and "dcs", reached by member name only.
    RecordForm(HitListContext& hitList, QObject* keywordsPicker, QObject* usersPicker);
    ~RecordForm();
    RecordForm(const RecordForm&) = delete;
    RecordForm& operator=(const RecordForm&) = delete;

    // The session's security manager: created by Init when the repository has per-item
    // security, released by Done.
    void openSecurityManager();
    void releaseSecurityManager();

    void UpdateForm();
    void SaveData();
    QString GetUserName(qint16 userId);
    qint32 GetUserId(const QString& userName);

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

#pragma once

#include "session/companions/VXDynaForm.h"

#include <memory>

namespace vx {

// The default dynamic form: one labelled editor per field of a form-definition file, by field
// type, in a scrolling form layout. It reaches the repository only through the data-link file
// the definition names (groupdatalink), for the pick lists of combo fields and for its search.
// Internal widgets carry object names: "scroll", "page", "label_<column>" and
// "field_<column>" (a second field of the same column gets "_2" appended, and so on).
class DynaForm : public VXDynaForm {
    Q_OBJECT
    // Why the last FieldsValid failed: one line per field ("Amount: ..."), for the host to show.
    Q_PROPERTY(QString FieldProblems READ fieldProblems)

public:
    explicit DynaForm(QWidget* parent = nullptr);
    ~DynaForm() override;

    QString QueryText() const override;
    Recordset QueryRecordset() override;
    QString FieldName() const override;
    QVariant FieldValue() const override;
    void setFieldValue(const QVariant& value) override;
    bool FieldEOF() const override;
    bool ListItemPresent() const override;
    void ResetFields() override;
    void MoveFirstField() override;
    void MoveNextField() override;
    void MoveFirstListItem() override;
    void MoveNextListItem() override;
    QString ListItemText() const override;
    QString FieldCaption() const override;
    void ClearFieldList() override;
    void AddFieldListItem(const QString& text) override;
    bool FieldsValid() const override;
    void ClearForm() override;
    bool LoadForm(QString& path) override;

    // The number of fields of the loaded form.
    int fieldCount() const;
    QString fieldProblems() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

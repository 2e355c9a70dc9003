#pragma once

#include <QString>
#include <QVariant>
#include <QWidget>
#include <VXUILib/Recordset.h>
#include <VXUILib/vxuilib_export.h>

namespace vx {

/// The dynamic form placed as the child named "Group" on the index, query and hit-list controls.
/// It builds a group's index form from a form-definition file and offers a cursor over the
/// fields (form order) and, for a list field, a cursor over its entries. The member names are
/// the names controls and hosts bind to late, so they keep their original spelling.
class VXUILIB_EXPORT VXDynaForm : public QWidget {
    Q_OBJECT
    // Members called by dispatch number keep these numbers.
    // clang-format off
    Q_CLASSINFO("ClassName", "VXDynaForm.VXDynaForm")
    Q_CLASSINFO("Interface", "QueryText;QueryRecordset;FieldName;FieldValue;FieldEOF;ListItemPresent;ResetFields;MoveFirstField;MoveNextField;MoveFirstListItem;MoveNextListItem;ListItemText;FieldCaption;ClearFieldList;AddFieldListItem;FieldsValid;ClearForm;LoadForm")
    Q_CLASSINFO("Events", "KeyDown")
    Q_CLASSINFO("DispatchIds", "QueryText=1;QueryRecordset=3;FieldName=4;FieldValue=5;FieldEOF=6;ListItemPresent=9;ResetFields=11;MoveFirstField=13;MoveNextField=14;MoveFirstListItem=15;MoveNextListItem=16;ListItemText=17;FieldCaption=18;ClearFieldList=24;AddFieldListItem=25;FieldsValid=26;ClearForm=27;LoadForm=29")
    // clang-format on
    /// The search built from what was entered (dispatch number 1).
    Q_PROPERTY(QString QueryText READ QueryText)
    /// Column name of the current field (4).
    Q_PROPERTY(QString FieldName READ FieldName)
    /// Value of the current field (5).
    Q_PROPERTY(QVariant FieldValue READ FieldValue WRITE setFieldValue)
    /// True once the field cursor has passed the last field (6).
    Q_PROPERTY(bool FieldEOF READ FieldEOF)
    /// True while the entry cursor stands on an entry (9).
    Q_PROPERTY(bool ListItemPresent READ ListItemPresent)
    /// Text of the current entry of a list field (17).
    Q_PROPERTY(QString ListItemText READ ListItemText)
    /// Caption of the current field (18).
    Q_PROPERTY(QString FieldCaption READ FieldCaption)
    /// True when the entries pass the form's own checks (26).
    Q_PROPERTY(bool FieldsValid READ FieldsValid)

public:
    /// An empty form; LoadForm builds it.
    explicit VXDynaForm(QWidget* parent = nullptr)
        : QWidget(parent) {}
    ~VXDynaForm() override = default;

    /// The search built from what was entered; empty when nothing was.
    virtual QString QueryText() const = 0;
    /// That search opened on the form's own connection; a closed record set when nothing was
    /// entered.
    virtual Recordset QueryRecordset() = 0;

    /// Column name of the current field.
    virtual QString FieldName() const = 0;
    /// Value of the current field; an invalid QVariant when the user left it unset.
    virtual QVariant FieldValue() const = 0;
    /// Sets the value of the current field (for a list field, its entries separated by ";").
    virtual void setFieldValue(const QVariant& value) = 0;
    /// True once the field cursor has passed the last field.
    virtual bool FieldEOF() const = 0;
    /// True while the current list field's entry cursor stands on an entry.
    virtual bool ListItemPresent() const = 0;

    /// Called just before the values of a hand-over file are applied to the form.
    Q_INVOKABLE virtual void ResetFields() = 0;
    /// Moves the field cursor to the first field (form order).
    Q_INVOKABLE virtual void MoveFirstField() = 0;
    /// Moves the field cursor to the next field.
    Q_INVOKABLE virtual void MoveNextField() = 0;
    /// Moves the entry cursor of the current list field to its first entry.
    Q_INVOKABLE virtual void MoveFirstListItem() = 0;
    /// Moves the entry cursor to the next entry.
    Q_INVOKABLE virtual void MoveNextListItem() = 0;

    /// Text of the current entry of the current list field.
    virtual QString ListItemText() const = 0;
    /// Caption (label) of the current field as the user sees it.
    virtual QString FieldCaption() const = 0;

    /// Removes every entry of the current list field.
    Q_INVOKABLE virtual void ClearFieldList() = 0;
    /// Appends an entry to the current list field.
    Q_INVOKABLE virtual void AddFieldListItem(const QString& text) = 0;
    /// True when the entries pass the form's own checks.
    virtual bool FieldsValid() const = 0;
    /// Empties every field of the form.
    Q_INVOKABLE virtual void ClearForm() = 0;
    /// Builds the form from the form-definition file; true on success.
    Q_INVOKABLE virtual bool LoadForm(QString& path) = 0;

signals:
    /// Raised for every key pressed in the form; a directly connected slot may change the values.
    void KeyDown(short& KeyCode, short& Shift);
};

} // namespace vx

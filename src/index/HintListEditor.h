#pragma once

#include "data/Connection.h"

#include <QWidget>
#include <functional>
#include <memory>

class QComboBox;
class QTableView;

namespace vx {

class VXDynaForm;

// The "Edit Hint Lists" page (picTab3): a choice of the fields whose pick list may be edited
// (cbFields) above a grid bound to the chosen field's hint table (Hints).
class HintListEditor : public QWidget {
    Q_OBJECT

public:
    // The group name comes from the first tab's caption, the connection from the open session.
    // Without a form (it could not be created) the editor offers nothing.
    HintListEditor(VXDynaForm* form, std::function<QString()> groupCaption,
                   std::function<Connection()> connection, QWidget* parent = nullptr);
    ~HintListEditor() override;

    // Fills cbFields with the captions of the fields whose hint list is editable.
    void loadFields(qint32 userPermission);
    // Closes and drops the hint record set and unbinds the grid.
    void releaseHints();
    bool hasOpenHints() const;

    // Whether the field of this column may have its hint list edited.
    static bool hintAllowUpdate(const QString& column);

protected:
    void focusInEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;

private:
    void editHintsOfChosenField();
    void confirmDelete(int row);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

#pragma once

#include <QWidget>
#include <memory>

namespace vx {

class HitListContext;

// The hit list's find and replace panel ("PicFindReplace"): searches the clicked result column
// and replaces values in one document or in every document of the current query.
class FindReplacePanel : public QWidget {
    Q_OBJECT
public:
    FindReplacePanel(HitListContext& hitList, QWidget* parent);
    ~FindReplacePanel() override;

    // The "Find Replace" item of the column menu: refuses memo and list columns, otherwise
    // shows the panel for the clicked column.
    void openForClickedColumn();
    // A header click while the panel is shown: the clicked column becomes the searched one.
    void clickedColumnChanged();
    // Shift+Ctrl+R, A, F and C while the panel is shown; true when the key was used.
    bool handleShortcut(int key, Qt::KeyboardModifiers modifiers);
    // Cancel, or any toolbar command: hides the panel and lays the control out without it.
    void closePanel();

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

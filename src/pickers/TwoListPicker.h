#pragma once

#include <QString>
#include <QWidget>
#include <memory>

class QListWidget;
class QPushButton;

namespace vx {

// The body shared by the keyword and user pickers: a source list filled from the group database,
// a picked list, the two buttons between them, and the cursor the owning controls read the picked
// list through. The cursor is the picked list's selection, so reading it moves what the user sees.
class TwoListPicker : public QWidget {
    Q_OBJECT

public:
    // What tells one picker from the other.
    struct Definition {
        QString sourceListName;
        QString pickedListName;
        QString sourceCaption;
        QString pickedCaption;
        QString sourceQuery;
        QString shownColumn;
    };
    static const Definition& keywordDefinition();
    static const Definition& userDefinition();

    explicit TwoListPicker(const Definition& definition, QWidget* parent = nullptr);
    ~TwoListPicker() override;

    // Opens the picker's own connection and fills the source list; failures are shown, not thrown.
    void init(const QString& initFilePath);
    // Closes the connection; never fails.
    void done();

    bool isEof() const;
    QString currentListValue() const;
    void moveFirst();
    void moveNext();
    void clearContents();
    void addListItem(const QString& item);

    // The two buttons' work, also reached by double clicks. Errors are ignored.
    void pickSelected();
    void removeSelected();

    QListWidget* sourceList() const;
    QListWidget* pickedList() const;

private:
    void fillSourceList(const QString& initFilePath);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

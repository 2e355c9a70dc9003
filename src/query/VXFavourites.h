#pragma once

#include <QString>
#include <QVariant>
#include <QWidget>
#include <VXUILib/vxuilib_export.h>
#include <functional>
#include <memory>

namespace vx {

/// A user's saved queries of one group, shown as a list. They live in memory while the group is
/// open and go to the per-user settings (section = group name) when it is closed by Done or
/// replaced by another group's Init.
class VXUILIB_EXPORT VXFavourites : public QWidget {
    Q_OBJECT
    Q_CLASSINFO("ClassName", "VXUILib.VXFavourites")
    Q_CLASSINFO("Interface", "Init;AddItem;RemoveItem;Done")
    Q_CLASSINFO("Events", "SelectedItem")

public:
    /// An empty list; Init loads a group's favourites.
    explicit VXFavourites(QWidget* parent = nullptr);
    /// Drops what was not saved by Done.
    ~VXFavourites() override;

    /// Loads the group's favourites, saving the loaded group's first; true when at least one
    /// was loaded. An empty name changes nothing and gives false.
    Q_INVOKABLE bool Init(QString& sGroup);
    /// Adds a favourite (kept in memory until Done); false for an empty or already used name.
    Q_INVOKABLE bool AddItem(QString& sName, QString& sString);
    /// Takes an entry off the list by 1-based position (a number) or by key (a text). The saved
    /// query stays until Done, which saves only what the list holds.
    Q_INVOKABLE bool RemoveItem(QVariant& sName);
    /// Saves the current group's favourites and empties the control.
    Q_INVOKABLE void Done();

signals:
    /// The user chose a favourite (double click or "Find"): its name and its query string,
    /// which the host runs.
    void SelectedItem(QString& sName, QString& sString);

    /// \cond internal
protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    /// \endcond

private:
    void chooseSelected();
    void deleteSelected();
    void runGuarded(const QString& title, const std::function<void()>& action);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx

#pragma once

#include "ExportVolume.h"
#include "data/Connection.h"

#include <QList>
#include <QPair>
#include <QString>
#include <memory>

namespace vx::viewer {

// An opened export volume and what the viewer keeps about it outside the export: a state folder
// per export (the same for every copy or CD of it) holding the group initialisation file the
// controls are given, the settings store (favourites, column widths) and the places where other
// volumes were found. Nothing is ever written into the export: the database is opened read-only
// and immutable.
class ViewerSession {
public:
    // Opens the volume's database. Throws vx::Error with a clear message when the database is
    // missing, unreadable or not an export's database.
    ViewerSession(const ExportVolume& volume, const QString& stateRoot);
    ~ViewerSession();
    ViewerSession(const ViewerSession&) = delete;
    ViewerSession& operator=(const ViewerSession&) = delete;

    const ExportVolume& volume() const;
    // The read-only connection to the portable database.
    Connection connection() const;

    QString groupName() const; // the group table
    qint32 groupId() const;
    // The group initialisation file the controls' Init is given (in the state folder).
    QString initFilePath() const;
    // The data-link file the controls connect through: the volume's own "veltrane.udl" when it
    // opens the database beside it read-only, else one of the state folder's.
    QString dataLinkPath() const;
    // The search form: the volume's "veltrane.xqr" (a copy naming the state folder's data link
    // when the volume's own link would not open read-only).
    QString queryFormPath() const;
    // The hit list's record form: the search form with one field per column (in the state
    // folder), and its columns as (column, caption) in form order.
    QString recordFormPath() const;
    QList<QPair<QString, QString>> formColumns() const;
    QString stateFolder() const;

    // Where a volume was found before, or empty.
    QString rememberedVolume(const QString& name) const;
    void rememberVolume(const QString& name, const QString& folder);

    // Moves the per-user settings store into the export's state folder for the session's life.
    void useExportSettings();

private:
    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::viewer

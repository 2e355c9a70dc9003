#pragma once

#include <QString>
#include <QtGlobal>
#include <VXUILib/vxuilib_export.h>

namespace vx {

class Connection;

// Ids for new KTItem and KTFile rows. Each comes from a row of the counter table that is raised
// and read in one statement, so two sessions filing at the same moment never get the same id
// (reading the table's maximum and adding one gave both the same). A repository made before the
// counter existed gets the table and its rows on first use, starting from the current maxima.
class VXUILIB_EXPORT IdCounter {
public:
    enum class Kind { Item, File };

    // Creates the counter table, empty (the repository tool runs it with the fixed tables).
    static QString createStatement();

    // The next id of the kind; throws vx::Error when the counter can be neither read nor made.
    static qint32 next(Connection& connection, Kind kind);

    // Raises both counters to at least the highest ids in use: rows filed with ids of their own
    // (the direct commit takes the host's) would otherwise collide with the next ids handed out.
    static void catchUp(Connection& connection);
};

} // namespace vx

#pragma once

#include <QString>
#include <QtGlobal>
#include <VXUILib/vxuilib_export.h>

namespace vx {

class Connection;

// Ids for new KTItem and KTFile rows, never the same for two sessions filing at the same moment
// (reading the table's maximum and adding one gave both the same). Where the engine has
// sequences, each kind has one ("ktitem_itemid_seq", "ktfile_fileid_seq"): drawing from it waits
// for nobody. Elsewhere a row of the counter table is raised and read in one statement inside
// the filing's transaction; the engine's write lock serialises filers there anyway. A
// repository made before either existed gets them on first use, continuing from the current
// maxima.
class VXUILIB_EXPORT IdCounter {
public:
    enum class Kind { Item, File };

    // Creates the counter table, empty (the repository tool runs it with the fixed tables).
    static QString createStatement();

    // Makes the sequences where the engine has them, raised above the ids in use; nothing
    // elsewhere. Run it outside the filing's transaction (on opening the repository): a
    // sequence made inside one would hold other filers until it ends.
    static void prepare(Connection& connection);

    // The sequences prepare() makes (none where the engine has no sequences).
    static QStringList sequences(const Connection& connection);

    // The next id of the kind; throws vx::Error when the counter can be neither read nor made.
    static qint32 next(Connection& connection, Kind kind);

    // Raises both counters (or sequences) to at least the highest ids in use: rows filed with ids
    // of their own (the direct commit takes the host's) would otherwise collide with the next ids
    // handed out.
    static void catchUp(Connection& connection);
};

} // namespace vx

#include "data/Error.h"
#include "data/Recordset.h"
#include "operations/DocumentOperations.h"
#include "operations/DocumentProperty.h"
#include "operations/HitListContext.h"
#include "operations/Progressbar.h"
#include "session/Conversions.h"
#include "session/UiServices.h"

#include <QFileInfo>
#include <limits>

namespace vx {

namespace {

// The byte count of the first file of one document, or 0 when it has none or the host cannot
// reach it.
qint64 documentBytes(HitListContext& hitList, qint32 itemId) {
    Recordset rows;
    rows.open(QStringLiteral("select * from ktfile where itemid = ") + numberToText(qint64(itemId)),
              hitList.connection(), CursorType::Keyset, LockType::Optimistic, CommandType::Text);
    qint64 bytes = 0;
    if (!rows.eof() && !rows.field(QStringLiteral("fName")).isNull()) {
        const QString located =
            hitList.locateDocumentFromID(itemId, rows.value(QStringLiteral("fName")).toString(),
                                         rows.value(QStringLiteral("Volume")).toString());
        if (located != QLatin1String("ERROR")) {
            const QFileInfo file(located);
            if (!file.isFile())
                throw Error(53, QStringLiteral("File not found: ") + located);
            bytes = file.size();
        }
    }
    rows.close();
    return bytes;
}

} // namespace

bool propertyDocuments(HitListContext& hitList) {
    try {
        const QList<qint32> selection = hitList.selectionForCommand();
        qint64 totalBytes = 0;
        {
            BusyCursor busy;
            ProgressScope progress(hitList.controlWidget(), selection.size());
            for (qsizetype i = 0; i < selection.size(); ++i) {
                progress.setValue(i + 1);
                totalBytes += documentBytes(hitList, selection[i]);
                // The total has always been a 32-bit count.
                if (totalBytes > std::numeric_limits<qint32>::max())
                    throw Error(ErrorNumber::Overflow, QStringLiteral("Overflow"));
            }
        }
        DocumentProperty form(hitList.controlWidget());
        form.setTotalCount(qint32(selection.size()));
        form.setTotalSize(totalBytes);
        form.showModal();
        hitList.raiseCurrentItemID();
        return true;
    } catch (const Error& error) {
        ui().messageBox(error.description(), MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("PropertyDocuments"));
    } catch (const std::exception& error) {
        ui().messageBox(QString::fromLocal8Bit(error.what()),
                        MessageStyle::OkOnly | MessageStyle::Critical,
                        QStringLiteral("PropertyDocuments"));
    }
    return false;
}

} // namespace vx

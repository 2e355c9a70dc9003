#include "session/IdCounter.h"

#include "data/Connection.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "session/Conversions.h"
#include "session/Schema.h"

namespace vx {

namespace {

struct CounterKind {
    QString name;     // the counter row
    QString sequence; // where the engine has sequences
    QString table;    // where the ids are used
    QString column;
};

CounterKind kindOf(IdCounter::Kind kind) {
    if (kind == IdCounter::Kind::Item)
        return {QStringLiteral("itemid"), QStringLiteral("ktitem_itemid_seq"), table::Item,
                QStringLiteral("itemid")};
    return {QStringLiteral("fileid"), QStringLiteral("ktfile_fileid_seq"), table::File,
            QStringLiteral("fileid")};
}

qint32 fromSequence(Connection& connection, const CounterKind& kind) {
    Driver& driver = connection.driver();
    qint64 id = 0;
    try {
        id = driver.nextSequenceValue(kind.sequence);
    } catch (const Error& error) {
        if (error.number() != ErrorNumber::TableNotFound)
            throw;
        driver.raiseSequence(kind.sequence, kind.table, kind.column);
        id = driver.nextSequenceValue(kind.sequence);
    }
    return qint32(id); // the sequences are made for 32-bit ids and stop there
}

QString highestInUse(const CounterKind& kind) {
    return QStringLiteral("(SELECT COALESCE(MAX([%1]), 0) FROM [%2])").arg(kind.column, kind.table);
}

void createTable(Connection& connection) {
    try {
        connection.execute(IdCounter::createStatement());
    } catch (const Error&) {
        // Another session made it first (the seeding below fails plainly if it is truly missing).
    }
}

// Adds the kind's row, starting from the highest id in use; another session may have added it.
void seed(Connection& connection, const CounterKind& kind) {
    try {
        connection.execute(QStringLiteral("INSERT INTO [%1] ([name], [lastid]) SELECT '%2', %3")
                               .arg(table::Counter, kind.name, highestInUse(kind)));
    } catch (const Error& error) {
        if (error.conflict() != Conflict::UniqueViolation)
            throw;
    }
}

} // namespace

QString IdCounter::createStatement() {
    return QStringLiteral("CREATE TABLE [%1] ([name] VARCHAR(20) NOT NULL, [lastid] LONG NOT NULL, "
                          "CONSTRAINT [pk_%1] PRIMARY KEY ([name]))")
        .arg(table::Counter);
}

void IdCounter::prepare(Connection& connection) {
    Driver& driver = connection.driver();
    if (!driver.hasSequences())
        return;
    for (const Kind kind : {Kind::Item, Kind::File}) {
        const CounterKind counter = kindOf(kind);
        driver.raiseSequence(counter.sequence, counter.table, counter.column);
    }
}

QStringList IdCounter::sequences(const Connection& connection) {
    if (!connection.driver().hasSequences())
        return {};
    return {kindOf(Kind::Item).sequence, kindOf(Kind::File).sequence};
}

qint32 IdCounter::next(Connection& connection, Kind kind) {
    const CounterKind counter = kindOf(kind);
    if (connection.driver().hasSequences())
        return fromSequence(connection, counter);
    const QString raise =
        QStringLiteral("UPDATE [%1] SET [lastid] = [lastid] + 1 WHERE [name] = '%2' RETURNING "
                       "[lastid]")
            .arg(table::Counter, counter.name);
    for (int round = 0; round < 3; ++round) {
        try {
            Recordset raised;
            raised.open(raise, connection);
            if (!raised.eof())
                return toInt32(raised.value(0));
        } catch (const Error& error) {
            if (error.number() != ErrorNumber::TableNotFound)
                throw;
            createTable(connection);
        }
        seed(connection, counter);
    }
    throw Error(ErrorNumber::Unspecified,
                QStringLiteral("The id counter (table %1) cannot be set up.").arg(table::Counter));
}

void IdCounter::catchUp(Connection& connection) {
    if (connection.driver().hasSequences()) {
        prepare(connection);
        return;
    }
    for (const Kind kind : {Kind::Item, Kind::File}) {
        const CounterKind counter = kindOf(kind);
        const QString highest = highestInUse(counter);
        connection.execute(
            QStringLiteral("UPDATE [%1] SET [lastid] = %2 WHERE [name] = '%3' AND [lastid] < %2")
                .arg(table::Counter, highest, counter.name));
    }
}

} // namespace vx

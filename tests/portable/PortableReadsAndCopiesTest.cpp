#include "PortableFixture.h"
#include "WithoutFileOverride.h"
#include "data/Error.h"
#include "portable/DocumentCopyQueue.h"
#include "portable/FileCopier.h"
#include "portable/SelectionRows.h"
#include "support/ErrorNumberOf.h"

#include <QFile>

using namespace vx;
using namespace vx::test;

namespace {

QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    ASSERT_EQ(file.write(content), content.size());
}

// The first row of `select * from TABLE where itemid = ID` as text, or empty without one.
QString firstRowOf(const Connection& repository, const QString& table, qint32 id) {
    const QStringList rows =
        rowsOf(repository, "select * from " + table + " where itemid = " + QString::number(id));
    return rows.value(0);
}

QString currentRowOf(const Recordset& rows) {
    QStringList values;
    for (int i = 0; i < rows.fieldCount(); ++i)
        values << rows.value(i).toString();
    return values.join(u'|');
}

class SelectionRowsTest : public PortableFixture {};

TEST_F(SelectionRowsTest, ChunkedReadsOfferTheRowsThePerDocumentQueriesReturnFirst) {
    Connection repository = hitList->connection();
    // Item 7 lacks its group row, item 8 its file rows; item 9 gains a second file after its own.
    repository.execute("DELETE FROM Invoices WHERE itemid = 7");
    repository.execute("DELETE FROM KTFile WHERE itemid = 8");
    repository.execute("INSERT INTO KTFile (fileid, itemid, fname, fsize) "
                       "VALUES (900000, 9, 'second.txt', 5)");
    // Past one chunk, in no particular order, with repeats and ids nobody has.
    QList<qint32> selection;
    for (qint32 id = 300; id >= 1; --id)
        selection << id;
    selection << 9 << 9 << 7 << 123456 << 8;
    for (qint32 id = 1; id <= 250; ++id)
        selection << (id % 3 == 0 ? 100000 + id : id);
    ASSERT_GT(selection.size(), SelectionRows::ChunkSize + 1);

    SelectionRows rows(repository, "Invoices", selection);
    int found = 0;
    for (qsizetype index = 0; index < selection.size(); ++index) {
        const qint32 id = selection[index];
        const QString file = firstRowOf(repository, "ktfile", id);
        const QString groupRow = firstRowOf(repository, "Invoices", id);
        const QString item = firstRowOf(repository, "KTItem", id);
        const bool complete = !file.isEmpty() && !groupRow.isEmpty() && !item.isEmpty();
        ASSERT_EQ(rows.moveTo(index), complete) << "item " << id;
        if (!complete)
            continue;
        ++found;
        EXPECT_EQ(currentRowOf(rows.file()), file) << "item " << id;
        EXPECT_EQ(currentRowOf(rows.groupRow()), groupRow) << "item " << id;
        EXPECT_EQ(currentRowOf(rows.item()), item) << "item " << id;
    }
    // Everything but items 7 and 8 and the made-up ids was found.
    EXPECT_EQ(found, 298 + 2 + 167 - 2);
    // Going back into an earlier chunk reads it again.
    ASSERT_TRUE(rows.moveTo(0));
    EXPECT_EQ(rows.item().value("itemid").toInt(), 300);
    ASSERT_TRUE(rows.moveTo(selection.size() - 1));
    EXPECT_EQ(rows.item().value("itemid").toInt(), 250);
    EXPECT_EQ(rows.file().value("fname").toString(), "inv0000250.txt");
}

class FileCopierTest : public ::testing::Test {
protected:
    QTemporaryDir folder;
    QString path(const QString& name) const { return folder.filePath(name); }
};

TEST_F(FileCopierTest, CopiesEveryByteAndWritesOverLongerFiles) {
    QByteArray large(3 * 1048576 + 17, Qt::Uninitialized);
    for (qsizetype i = 0; i < large.size(); ++i)
        large[i] = char((i * 7919) % 251);
    writeFile(path("large.bin"), large);
    writeFile(path("empty.bin"), {});
    writeFile(path("short.txt"), "short");
    writeFile(path("target.txt"), "a much longer text that is already there");

    FileCopier copier;
    copier.copyOverwriting(path("large.bin"), path("large-copy.bin"));
    copier.copyOverwriting(path("empty.bin"), path("empty-copy.bin"));
    copier.copyOverwriting(path("short.txt"), path("target.txt"));
    // The same copier goes on serving after each kind of copy.
    copier.copyOverwriting(path("large.bin"), path("large-again.bin"));

    EXPECT_EQ(contentOf(path("large-copy.bin")), large);
    EXPECT_EQ(contentOf(path("large-again.bin")), large);
    EXPECT_TRUE(QFileInfo(path("empty-copy.bin")).isFile());
    EXPECT_EQ(QFileInfo(path("empty-copy.bin")).size(), 0);
    EXPECT_EQ(contentOf(path("target.txt")), "short");
}

TEST_F(FileCopierTest, MissingSourcesAndUnwritableTargetsFailWithoutLeavingFiles) {
    FileCopier copier;
    writeFile(path("source.txt"), "content");
    QDir().mkpath(path("folder"));
    for (const QString& missing : {path("absent.txt"), path("folder")}) {
        try {
            copier.copyOverwriting(missing, path("copy.txt"));
            ADD_FAILURE() << "no error for " << missing.toStdString();
        } catch (const Error& error) {
            EXPECT_EQ(error.number(), 53);
            EXPECT_EQ(error.description(), "File not found: " + QDir::toNativeSeparators(missing));
        }
        EXPECT_FALSE(QFileInfo::exists(path("copy.txt")));
    }
    const QString nowhere = path("no-such-folder/copy.txt");
    try {
        copier.copyOverwriting(path("source.txt"), nowhere);
        ADD_FAILURE() << "no error for a target in a missing folder";
    } catch (const Error& error) {
        EXPECT_TRUE(error.description().startsWith("Cannot copy "))
            << error.description().toStdString();
    }
    EXPECT_FALSE(QFileInfo::exists(nowhere));
}

TEST_F(FileCopierTest, ATargetThatCannotBeOpenedIsReportedAndKept) {
    writeFile(path("source.txt"), "new content");
    writeFile(path("theirs.txt"), "their content");
    QFile::setPermissions(path("theirs.txt"), QFileDevice::ReadOwner | QFileDevice::ReadOther);
    {
        // The folder is writable: the file could be deleted and made again, but is not.
        WithoutFileOverride owner;
        if (!owner.ok())
            GTEST_SKIP() << "cannot drop the file-access capabilities of root";
        FileCopier copier;
        try {
            copier.copyOverwriting(path("source.txt"), path("theirs.txt"));
            ADD_FAILURE() << "a read-only target was written";
        } catch (const Error& error) {
            EXPECT_TRUE(error.description().contains("cannot be written"))
                << error.description().toStdString();
        }
    }
    EXPECT_EQ(contentOf(path("theirs.txt")), "their content");
}

} // namespace

TEST_F(FileCopierTest, QueuedCopiesRunInOrderUntilTheFirstFailure) {
    writeFile(path("a.txt"), "a");
    writeFile(path("b.txt"), "b");
    {
        DocumentCopyQueue copies;
        for (int i = 0; i < 300; ++i) // more than the queue holds at once
            copies.add(path(i % 2 ? "a.txt" : "b.txt"), path(QString("copy%1.txt").arg(i)));
        copies.finish();
    }
    for (int i = 0; i < 300; ++i)
        ASSERT_EQ(contentOf(path(QString("copy%1.txt").arg(i))), i % 2 ? "a" : "b") << i;

    DocumentCopyQueue copies;
    // The failure surfaces at the next call after it, whichever that is.
    const qint32 number = errorNumberOf([&] {
        copies.add(path("a.txt"), path("first.txt"));
        copies.add(path("absent.txt"), path("second.txt"));
        copies.add(path("b.txt"), path("third.txt")); // dropped once the failure is seen
        copies.finish();
    });
    EXPECT_EQ(number, 53);
    EXPECT_EQ(contentOf(path("first.txt")), "a");
    EXPECT_FALSE(QFileInfo::exists(path("second.txt")));
    EXPECT_FALSE(QFileInfo::exists(path("third.txt")));
}

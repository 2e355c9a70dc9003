#pragma once

#include "companions/DefaultCompanions.h"
#include "data/Recordset.h"
#include "operations/Progressbar.h"
#include "support/FakeHitListContext.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QDir>
#include <QFile>
#include <gtest/gtest.h>

namespace vx::test {

// An operation driven through a stand-in hit list on a fresh copy of the sample repository.
class FileOpsFixture : public ::testing::Test {
protected:
    static void SetUpTestSuite() { registerDefaultCompanions(); }

    TestEnvironment environment;
    SampleRepository sample;
    FakeHitListContext hitList{sample};

    ScriptedUiServices& ui() const { return environment.ui(); }

    // A new empty folder inside the test's temporary folder.
    QString makeFolder(const QString& name) const {
        const QString path = environment.filePath(name);
        QDir().mkpath(path);
        return path;
    }

    QString documentPath(const QString& fileName) const {
        return sample.documentFolder() + QLatin1Char('/') + fileName;
    }

    static QByteArray contentsOf(const QString& path) {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    // The value of `column` in the first file row of a document (rows in file order).
    QVariant fileValue(qint32 itemId, const QString& column, int row = 0) {
        Recordset files;
        files.open(
            QStringLiteral("select * from ktfile where itemid = %1 order by fileid").arg(itemId),
            hitList.connection());
        files.move(row);
        return files.eof() ? QVariant() : files.value(column);
    }

    void execute(const QString& sql) { hitList.connection().execute(sql); }

    static bool progressShown() {
        return Progressbar::current() && Progressbar::current()->isVisible();
    }
};

// The sample's main document file of an item.
inline QString mainFileName(qint32 itemId) {
    return QStringLiteral("inv%1.txt").arg(itemId, 7, 10, QLatin1Char('0'));
}

} // namespace vx::test

#pragma once

#include "QueryRows.h"
#include "companions/DefaultCompanions.h"
#include "data/Connection.h"
#include "data/Recordset.h"
#include "portable/MediaDialog.h"
#include "portable/PortableDatabase.h"
#include "session/LibraryState.h"
#include "support/FakeHitListContext.h"
#include "support/SampleRepository.h"
#include "support/TestEnvironment.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <memory>

namespace vx::test {

// The visible media dialog, or null.
inline MediaDialog* shownMediaDialog() {
    for (QWidget* widget : QApplication::topLevelWidgets()) {
        if (auto* dialog = qobject_cast<MediaDialog*>(widget); dialog && dialog->isVisible())
            return dialog;
    }
    return nullptr;
}

// A sample, the process's folder set to it (the viewer files lie in its "veltrane" folder), a
// stand-in hit list and an empty destination for the export.
class PortableFixture : public ::testing::Test {
protected:
    PortableFixture()
        : m_previousFolder(QDir::currentPath()) {
        registerDefaultCompanions();
        QDir::setCurrent(sample.dir());
        hitList = std::make_unique<FakeHitListContext>(sample);
        destination = QDir(destinationFolder.path()).filePath(QStringLiteral("out"));
        QDir().mkpath(destination);
    }
    ~PortableFixture() override {
        hitList.reset();
        QDir::setCurrent(m_previousFolder);
    }

    // Works the media dialog like a user once the export shows it: picks the item, types the
    // size (when given) and the base (when given), clicks OK or Cancel.
    void chooseMedium(int item, const QString& size = {}, const QString& base = {},
                      bool cancel = false) {
        environment.ui().onProcessEvents([=] {
            MediaDialog* dialog = shownMediaDialog();
            if (!dialog)
                return;
            dialog->findChild<QComboBox*>(QStringLiteral("cmb_MediaType"))->setCurrentIndex(item);
            if (!size.isNull())
                dialog->findChild<QLineEdit*>(QStringLiteral("txt_Size"))->setText(size);
            if (!base.isNull())
                dialog->findChild<QLineEdit*>(QStringLiteral("txtBase"))->setText(base);
            dialog
                ->findChild<QPushButton*>(cancel ? QStringLiteral("btn_Cancel")
                                                 : QStringLiteral("btn_Ok"))
                ->click();
        });
    }

    // The one export root made in the destination.
    QString exportRoot() const {
        const QStringList roots = QDir(destination).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
        return roots.size() == 1 ? QDir(destination).filePath(roots.first()) : QString();
    }

    Connection openPortable(const QString& volumeFolder) const {
        Connection connection;
        connection.open(portableConnectionText(volumeFolder + QStringLiteral("/veltrane.znl")));
        return connection;
    }

    void setFileSize(qint32 itemId, qint64 bytes) const {
        Connection repository = hitList->connection();
        repository.execute(QStringLiteral("UPDATE KTFile SET fsize = %1 WHERE itemid = %2")
                               .arg(bytes)
                               .arg(itemId));
    }

    TestEnvironment environment;
    SampleRepository sample;
    std::unique_ptr<FakeHitListContext> hitList;
    QTemporaryDir destinationFolder;
    QString destination;

private:
    QString m_previousFolder;
};

} // namespace vx::test

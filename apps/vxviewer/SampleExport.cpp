#include "SampleExport.h"

#include "core/SampleBuilder.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"
#include "session/UnattendedUiServices.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDirIterator>
#include <QDomDocument>
#include <QFile>
#include <QFileInfo>
#include <QPushButton>
#include <memory>

namespace vx::viewer {

namespace {

// The media dialog's item "FULL-EXPORT (To Folder)".
constexpr int FolderExportItem = 2;

// Every live document, its columns named by the form's captions as the search form names them.
QString everyDocumentQuery(const QString& indexForm, const QString& group) {
    QFile file(indexForm);
    QDomDocument form;
    if (!file.open(QIODevice::ReadOnly) || !form.setContent(&file))
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The sample's form %1 cannot be read.").arg(indexForm));
    QString columns;
    const QDomNodeList controls = form.elementsByTagName(QStringLiteral("control"));
    for (int i = 0; i < controls.size(); ++i) {
        const QDomElement control = controls.at(i).toElement();
        columns += QStringLiteral(", ") + group + u'.' +
                   control.firstChildElement(QStringLiteral("columnname")).text().trimmed() +
                   QStringLiteral(" AS [") +
                   control.firstChildElement(QStringLiteral("caption")).text().trimmed() + u']';
    }
    return QStringLiteral("SELECT DISTINCT ktitem.itemid AS itemid, ktitem.idx_date AS "
                          "IndexDate") +
           columns + QStringLiteral(" FROM ktitem, ") + group +
           QStringLiteral(" WHERE ktitem.itemid = ") + group +
           QStringLiteral(".itemid AND ktitem.deleted = 0");
}

} // namespace

SampleExport::SampleExport(UnattendedUiServices& ui, QObject* parent)
    : QObject(parent)
    , m_ui(ui) {}

QString SampleExport::make(const QString& sampleDir, const QString& destination) {
    const repo::SampleResult sample = repo::createSample(sampleDir);
    m_documents = QDir(sample.dir).filePath(QStringLiteral("documents"));
    const QString group = QFileInfo(sample.initFilePath).completeBaseName();
    // The export takes the viewer's files from the folder the hit list was started in.
    const QString previousFolder = QDir::currentPath();
    QDir::setCurrent(sample.dir);
    QDir().mkpath(destination);

    std::unique_ptr<QWidget> hitList(ControlFactory::create(QStringLiteral("VXUILib.VXHitList")));
    m_hitList = hitList.get();
    connect(hitList.get(), SIGNAL(LocateDocumentFromID(qint32&, QString&, QString&)), this,
            SLOT(LocateDocumentFromID(qint32&, QString&, QString&)), Qt::DirectConnection);
    writeMember(hitList.get(), "GroupName", group);
    writeMember(hitList.get(), "GroupID", 1);
    writeMember(hitList.get(), "UserName", QStringLiteral("admin"));
    writeMember(hitList.get(), "UserPermission", 128);
    const QString indexForm =
        QDir(sample.dir).filePath(QStringLiteral("config/") + group + QStringLiteral(".xml"));
    writeMember(hitList.get(), "GroupInitString", indexForm);
    writeMember(hitList.get(), "Init", sample.initFilePath);
    hitList->resize(900, 500);
    writeMember(hitList.get(), "DoQuery", everyDocumentQuery(indexForm, group));
    if (auto* grid = hitList->findChild<QAbstractItemView*>(QStringLiteral("HitList")))
        grid->selectAll();

    m_ui.queueFolder(destination);
    m_ui.onProcessEvents([] {
        for (QWidget* widget : QApplication::topLevelWidgets()) {
            if (widget->objectName() != u"pic_MediaType" || !widget->isVisible())
                continue;
            widget->findChild<QComboBox*>(QStringLiteral("cmb_MediaType"))
                ->setCurrentIndex(FolderExportItem);
            widget->findChild<QPushButton*>(QStringLiteral("btn_Ok"))->click();
        }
    });
    callMember(hitList.get(), "ExportToVeltrane");
    m_ui.onProcessEvents({});
    callMember(hitList.get(), "Done");
    m_hitList = nullptr;
    QDir::setCurrent(previousFolder);

    const QStringList roots = QDir(destination).entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    if (roots.size() != 1)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The sample's export did not come out in %1.")
                        .arg(QDir::toNativeSeparators(destination)));
    return QDir(destination).filePath(roots.first());
}

void SampleExport::LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume) {
    Q_UNUSED(itemid)
    Q_UNUSED(sVolume)
    QString answer = QStringLiteral("ERROR");
    if (!sFile.contains(u'/') && !sFile.contains(u'\\') && !sFile.trimmed().isEmpty()) {
        QDirIterator files(m_documents, {sFile.trimmed()}, QDir::Files,
                           QDirIterator::Subdirectories);
        if (files.hasNext())
            answer = files.next();
    }
    writeMember(m_hitList, "DocumentToMove", answer);
}

} // namespace vx::viewer

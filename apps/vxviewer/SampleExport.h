#pragma once

#include <QObject>
#include <QString>

namespace vx {
class UnattendedUiServices;
}

namespace vx::viewer {

// Makes a portable export to look at when none is at hand (the tour): builds the repository
// tool's sample, searches it with the hit list as a host would, selects every row and exports
// them to a folder through the hit list's own command, answering its questions on the way.
class SampleExport : public QObject {
    Q_OBJECT

public:
    SampleExport(UnattendedUiServices& ui, QObject* parent = nullptr);

    // The export's root folder under destination; throws vx::Error when the export failed.
    QString make(const QString& sampleDir, const QString& destination);

public slots:
    // The hit list asks where each document's file is.
    void LocateDocumentFromID(qint32& itemid, QString& sFile, QString& sVolume);

private:
    UnattendedUiServices& m_ui;
    QString m_documents;
    QObject* m_hitList = nullptr;
};

} // namespace vx::viewer

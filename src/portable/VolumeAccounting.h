#pragma once

#include <QString>
#include <QtGlobal>

namespace vx {

// Which volume of a portable export each document file goes to. Sizes come from the
// repository's file rows, not from the files, and a medium holds `mediaSizeMB` megabytes
// (1 MB = 1048576 bytes). A CD export opens the next volume at the file that makes the running
// total exceed the medium, and starts the new total at zero; a folder export is one volume.
class VolumeAccounting {
public:
    enum class Placement {
        Place,    // the file goes into the current volume
        Skip,     // no file (not found, or exactly the medium's size): rows only
        TooLarge, // larger than the medium: the export cannot go on
    };

    // `firstVolumeName`: the folder export's volume (the drive's label or "VeltNoVol"); a CD
    // export names its volumes base + "0000", "0001" ...
    VolumeAccounting(bool toCD, qint32 mediaSizeMB, QString base, QString firstVolumeName = {});

    static QString cdVolumeName(const QString& base, qint16 counter);

    Placement placementOf(qint64 fileSize, bool fileFound) const;
    // Counts a placed file; true when it opened a new volume (whose folders the caller creates).
    bool addFile(qint64 fileSize);

    QString volumeName() const { return m_volumeName; }
    qint16 volumeCounter() const { return m_counter; }
    qint64 runningTotal() const { return m_runningTotal; }
    QString base() const { return m_base; }

private:
    bool m_toCD;
    qint32 m_mediaSizeMB;
    QString m_base;
    QString m_volumeName;
    qint16 m_counter = 0;
    qint64 m_runningTotal = 0;
};

} // namespace vx

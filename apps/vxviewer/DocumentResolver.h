#pragma once

#include <QString>

class QWidget;

namespace vx::viewer {

class ViewerSession;

// Where an exported document's file is: the portable KTFile row names the file ("fname") and
// the volume it was copied to ("volume", empty for a folder export). The file is
// "Document/<fname>" of that volume: the open one, a volume folder beside it, one found before,
// or one the user inserts or chooses when asked for it by name.
class DocumentResolver {
public:
    explicit DocumentResolver(ViewerSession& session, QWidget* owner = nullptr);

    struct Location {
        QString path;    // the file's full path when found
        QString problem; // otherwise what the user is told
        bool found() const { return !path.isEmpty(); }
    };

    // The exported file of an item, if any (false for the placeholder row 0 and for documents
    // whose file was not exported). Never asks the user.
    bool hasFile(qint32 itemId) const;
    // The file of an item; asks for a volume that is not at hand.
    Location locate(qint32 itemId);
    // The file of a stored name on a stored volume (the hit list's own locate events).
    Location locate(const QString& storedName, const QString& volumeName);

    // True when a stored file name is a plain name inside its folder.
    static bool isPlainFileName(const QString& name);

private:
    QString volumeFolder(const QString& volumeName, const QString& storedName);

    ViewerSession& m_session;
    QWidget* m_owner;
};

} // namespace vx::viewer

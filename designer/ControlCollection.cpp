#include "ControlCollection.h"

#include "ControlWidgetInterface.h"
#include "companions/DefaultCompanions.h"
#include "server/ControlFactory.h"

namespace vx::designer {

ControlCollection::ControlCollection(QObject* parent)
    : QObject(parent) {
    // The controls create their form and indexing companions by class name.
    registerDefaultCompanions();
    registerLibraryControls();
    struct Entry {
        const char* shortName;
        const char* folder;
        const char* toolTip;
    };
    static constexpr Entry entries[] = {
        {"VXIndex", "index", "Index form, keywords, dictionary and hint lists of a new document"},
        {"VXQuery", "query", "Search form of a group with its keyword picker"},
        {"VXFavourites", "query", "A user's saved queries of a group"},
        {"VXHitList", "hitlist", "Search results with record form and document commands"},
        {"VXKeywords", "pickers", "Keyword picker: available and chosen keywords"},
        {"VXDocSec", "pickers", "User picker for document security"},
        {"VXDictionary", "pickers", "Dictionary editor"},
    };
    for (const Entry& entry : entries)
        m_widgets << new ControlWidgetInterface(QString::fromLatin1(entry.shortName),
                                                QString::fromLatin1(entry.folder),
                                                QString::fromLatin1(entry.toolTip), this);
}

ControlCollection::~ControlCollection() = default;

QList<QDesignerCustomWidgetInterface*> ControlCollection::customWidgets() const {
    return m_widgets;
}

} // namespace vx::designer

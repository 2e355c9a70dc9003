#include "ControlCollection.h"

#include "ControlWidgetInterface.h"

#include <VXUILib/ControlFactory.h>
#include <VXUILib/DefaultCompanions.h>

namespace vx::designer {

ControlCollection::ControlCollection(QObject* parent)
    : QObject(parent) {
    // The controls create their form and indexing companions by class name.
    registerDefaultCompanions();
    registerLibraryControls();
    struct Entry {
        const char* shortName;
        const char* toolTip;
    };
    static constexpr Entry entries[] = {
        {"VXIndex", "Index form, keywords, dictionary and hint lists of a new document"},
        {"VXQuery", "Search form of a group with its keyword picker"},
        {"VXFavourites", "A user's saved queries of a group"},
        {"VXHitList", "Search results with record form and document commands"},
        {"VXKeywords", "Keyword picker: available and chosen keywords"},
        {"VXDocSec", "User picker for document security"},
        {"VXDictionary", "Dictionary editor"},
    };
    for (const Entry& entry : entries)
        m_widgets << new ControlWidgetInterface(QString::fromLatin1(entry.shortName),
                                                QString::fromLatin1(entry.toolTip), this);
}

ControlCollection::~ControlCollection() = default;

QList<QDesignerCustomWidgetInterface*> ControlCollection::customWidgets() const {
    return m_widgets;
}

} // namespace vx::designer

#include "HitPrinter.h"

#include "HitSearch.h"
#include "ViewerSession.h"
#include "data/Error.h"
#include "server/ControlFactory.h"
#include "server/LateBinding.h"

#include <QTextStream>
#include <QWidget>
#include <memory>

namespace vx::viewer {

int printHits(const QStringList& arguments, const QString& stateRoot, QTextStream& out,
              QTextStream& err) {
    if (arguments.isEmpty()) {
        err << "vxviewer: --print-hits needs the export's folder: --print-hits FOLDER "
               "[COLUMN=VALUE ...] [--keyword WORD ...]\n";
        return 2;
    }
    SearchCriteria criteria;
    try {
        criteria = SearchCriteria::fromArguments(arguments.mid(1));
    } catch (const Error& error) {
        err << "vxviewer: " << error.description() << '\n';
        return 2;
    }
    if (criteria.isEmpty()) {
        err << "vxviewer: give at least one COLUMN=VALUE or --keyword WORD to search for.\n";
        return 2;
    }
    try {
        ViewerSession session(ExportVolume::open(arguments.first()), stateRoot);
        std::unique_ptr<QWidget> query(ControlFactory::create(QStringLiteral("VXUILib.VXQuery")));
        writeMember(query.get(), "GroupName", session.groupName());
        writeMember(query.get(), "MethodInitString", session.initFilePath());
        QString form = session.queryFormPath();
        bool loaded = false;
        if (!QMetaObject::invokeMethod(query.get(), "Init", Qt::DirectConnection,
                                       Q_RETURN_ARG(bool, loaded), Q_ARG(QString&, form)) ||
            !loaded)
            throw Error(ErrorNumber::Unspecified,
                        QStringLiteral("The export's search form %1 cannot be loaded.").arg(form));
        writeMember(query.get(), "UserID", -1);
        try {
            search::fill(query.get(), criteria);
        } catch (const Error& error) {
            err << "vxviewer: " << error.description() << '\n';
            return 2;
        }
        const QString text = search::queryText(query.get(), session);
        if (text.trimmed().isEmpty()) {
            err << "vxviewer: the criteria give the search form nothing to look for.\n";
            return 2;
        }
        for (const qint32 id : search::itemIds(session, text))
            out << id << '\n';
        out.flush();
        return 0;
    } catch (const Error& error) {
        err << "vxviewer: " << error.description() << '\n';
        return 1;
    }
}

} // namespace vx::viewer

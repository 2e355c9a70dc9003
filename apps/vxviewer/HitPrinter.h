#pragma once

#include <QString>
#include <QStringList>

class QTextStream;

namespace vx::viewer {

// vxviewer --print-hits FOLDER [COLUMN=VALUE ...] [--keyword WORD ...]: runs the query the search
// form builds for the criteria on the export in FOLDER and writes the matching item ids to out,
// sorted, one a line. Problems go to err. Returns the exit code: 0 done, 1 the export could not
// be searched, 2 bad arguments.
int printHits(const QStringList& arguments, const QString& stateRoot, QTextStream& out,
              QTextStream& err);

} // namespace vx::viewer

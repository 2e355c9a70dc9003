#pragma once

#include <QString>

namespace vx {

class VXDynaForm;

// Applies the one-shot index hand-over file ("~znindex") to the form, then deletes it. A value
// that does not convert to its field's type is reported and the file is kept for a retry.
class IndexHandOver {
public:
    static inline const QString FileName = QStringLiteral("~znindex");

    // Section of this library's group: library + "-" + group.
    IndexHandOver(const QString& currentLibrary, const QString& groupName);

    // False when there was no file or applying it failed.
    bool apply(VXDynaForm& form) const;

private:
    QString m_section;
};

} // namespace vx

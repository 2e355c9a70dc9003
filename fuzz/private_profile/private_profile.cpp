// INI files read as the platform's private-profile functions read them: hand-over files and
// group initialisation files come from other programs.
#include "FuzzInput.h"
#include "data/Error.h"
#include "session/PrivateProfile.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vx;
    fuzz::Input input(data, size);
    const int buffer = 1 + input.byte() % 300;
    const QString section = input.text(32);
    const QString path = fuzz::writeScratchFile(QStringLiteral("profile.ini"), input.rest());
    try {
        for (const QString& name : {section, QStringLiteral("datalinks")}) {
            for (const QString& key : privateProfileKeys(path, name))
                readPrivateProfileString(path, name, key, QStringLiteral("-"), buffer);
            readPrivateProfileString(path, name, QStringLiteral("Group"), QString(), buffer);
        }
    } catch (const Error&) {
    }
    return 0;
}

// Form-definition files through the session's reader: as bytes read from the file, and as text.
#include "FuzzInput.h"
#include "data/Error.h"
#include "session/FormDefinition.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vx;
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    const QString path = fuzz::writeScratchFile(QStringLiteral("form.xml"), bytes);
    try {
        const FormDefinition definition = FormDefinition::load(path);
        for (const FormControl& control : definition.controls())
            definition.controlForColumn(control.columnName);
    } catch (const Error&) {
    }
    try {
        FormDefinition::fromText(QString::fromUtf8(bytes));
    } catch (const Error&) {
    }
    return 0;
}

// Connection texts and data-link files: the init-string parser and the file reader (UTF-16
// with the platform's header, or plain UTF-8).
#include "FuzzInput.h"
#include "data/ConnectionProperties.h"
#include "data/Error.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    using namespace vx;
    const QByteArray bytes(reinterpret_cast<const char*>(data), qsizetype(size));
    try {
        ConnectionProperties properties = ConnectionProperties::parse(QString::fromUtf8(bytes));
        for (const auto& [key, value] : properties.entries())
            properties.value(key);
        properties.mergeMissing(ConnectionProperties::parse(QStringLiteral("Provider=SQLite")));
    } catch (const Error&) {
    }
    try {
        const ConnectionProperties fromFile =
            readDataLinkFile(fuzz::writeScratchFile(QStringLiteral("link.udl"), bytes));
        fromFile.value(QStringLiteral("Data Source"));
    } catch (const Error&) {
    }
    return 0;
}

#include "operations/TextFilePrinter.h"

#include "data/Error.h"

#include <QFile>
#include <QFontDatabase>
#include <QPrinter>
#include <QPrinterInfo>
#include <QTextDocument>

namespace vx {
namespace {

QString& redirectedOutput() {
    thread_local QString path;
    return path;
}

[[noreturn]] void failPrint(const QString& path, const QString& reason) {
    throw Error(ErrorNumber::Unspecified, QStringLiteral("Cannot print %1: %2").arg(path, reason));
}

} // namespace

void TextFilePrinter::print(const QString& path) {
    QPrinter printer(QPrinter::HighResolution);
    if (!redirectedOutput().isEmpty()) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(redirectedOutput());
    } else if (QPrinterInfo::defaultPrinter().isNull()) {
        failPrint(path, QStringLiteral("no printer is installed."));
    }
    print(path, printer);
}

void TextFilePrinter::print(const QString& path, QPrinter& printer) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        failPrint(path, file.errorString());
    QTextDocument document;
    document.setDefaultFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
    document.setPlainText(QString::fromUtf8(file.readAll()));
    document.setDocumentMargin(0);
    printer.setDocName(path);
    document.print(&printer);
    if (!printer.isValid())
        failPrint(path, QStringLiteral("the printer is not available."));
}

void TextFilePrinter::setOutputFileName(const QString& pdfPath) {
    redirectedOutput() = pdfPath;
}

QString TextFilePrinter::outputFileName() {
    return redirectedOutput();
}

} // namespace vx

#pragma once

#include <QString>

class QPrinter;

namespace vx {

// Prints a plain text file, the fallback when the desktop cannot open the Print command's text
// file. Throws vx::Error when the file cannot be read or nothing can print it.
class TextFilePrinter {
public:
    // On the default printer, or into the PDF file set by setOutputFileName.
    static void print(const QString& path);
    // On the given printer.
    static void print(const QString& path, QPrinter& printer);

    // Sends the calling thread's prints to this PDF file instead of a printer (a host without
    // printers, tests); empty goes back to the default printer.
    static void setOutputFileName(const QString& pdfPath);
    static QString outputFileName();
};

} // namespace vx

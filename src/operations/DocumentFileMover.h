#pragma once

#include <QString>

namespace vx {

// Copies a document file to `destination`, replacing a file of that name there. The copy is
// written beside the destination under a temporary name and renamed over it only when complete,
// so a failure leaves the destination as it was. Keeps the source's modification time. Copying
// a file onto itself does nothing. Throws vx::Error when the copy cannot be made.
void copyDocumentFile(const QString& source, const QString& destination);

// Moves a document file: copies it to `destination` and deletes the source only when the
// destination then holds a file of the source's size. True when the file now lies at
// `destination` only (or already lay there); false on any failure, the source then still in
// place.
bool moveDocumentFile(const QString& source, const QString& destination);

} // namespace vx

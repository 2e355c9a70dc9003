#pragma once

namespace vx {

class HitListContext;

// The hit list's commands on the selected documents. Each one takes the selection itself
// (HitListContext::selectionForCommand), shows its own messages and progress, catches its own
// errors and returns whether it ran to the end.

// Marks the selected documents deleted (DeleteMarking.cpp).
bool markForDeletion(HitListContext& hitList);
// Count and total size of the selected documents' files (DocumentProperties.cpp).
bool propertyDocuments(HitListContext& hitList);

// The files of the selected documents (VolumeOperations.cpp).
bool updateVolume(HitListContext& hitList);
bool moveFilesAndUpdateVolume(HitListContext& hitList);
bool copyDocuments(HitListContext& hitList);
// The toolbar's Move command: asks copy or move, waits for the answer, runs it
// (CopyMoveCommand.cpp).
void chooseCopyOrMove(HitListContext& hitList);

// Index data out of the repository: a FoxPro table (DataExport.cpp), a comma-separated text
// file opened or printed by the desktop (TextExport.cpp).
bool exportData(HitListContext& hitList);
bool printData(HitListContext& hitList);

} // namespace vx

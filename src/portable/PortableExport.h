#pragma once

namespace vx {

class HitListContext;

// Packages the selected documents for the CD viewer: volume folders with the viewer's files,
// the rewritten query form definition, the portable database and the document files.
void exportToVeltrane(HitListContext& hitList);

} // namespace vx

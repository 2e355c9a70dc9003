#include "session/LibraryState.h"

namespace vx {

LibraryState& library() {
    thread_local LibraryState state;
    return state;
}

void resetLibraryState() {
    library() = LibraryState{};
}

} // namespace vx

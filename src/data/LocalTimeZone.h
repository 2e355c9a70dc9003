#pragma once

namespace vx {

// Dates come and go as local wall-clock times, one local-time conversion per value read or
// written. With TZ unset, the C library looks at the zone file again on every one of them (a file
// system call each, ten times the conversion itself); naming that same file in TZ has it read
// once. The zone stays the system's; a change to it is then seen at the next start. Does nothing
// where TZ is set already or the system keeps its zone elsewhere.
void keepLocalTimeZoneLoaded();

} // namespace vx

#pragma once

namespace vx {

class HandOverFile;
class VXDynaForm;

namespace query {

// Puts the criteria another program left in the query hand-over file into the form's fields.
// Range fields (numbers, dates) stand twice on the query form and read "<column>FROM", then
// "<column>TO". Absent keys leave a field as it is. Throws vx::Error on a value that does not
// convert; the fields filled before it keep their values.
void applyQueryHandOver(VXDynaForm& form, const HandOverFile& file);

} // namespace query
} // namespace vx

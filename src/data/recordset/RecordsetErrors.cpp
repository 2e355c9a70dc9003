#include "data/recordset/RecordsetErrors.h"

namespace vx::errors {

Error noCurrentRecord() {
    return Error(ErrorNumber::NoCurrentRecord,
                 QStringLiteral("Either BOF or EOF is True, or the current record has been "
                                "deleted. Requested operation requires a current record."));
}

Error itemNotFound() {
    return Error(ErrorNumber::ItemNotFound,
                 QStringLiteral("Item cannot be found in the collection corresponding to the "
                                "requested name or ordinal."));
}

Error objectClosed() {
    return Error(ErrorNumber::ObjectClosed,
                 QStringLiteral("Operation is not allowed when the object is closed."));
}

Error invalidArgument() {
    return Error(ErrorNumber::InvalidArgument,
                 QStringLiteral("Arguments are of the wrong type, are out of acceptable range, "
                                "or are in conflict with one another."));
}

Error notUpdatable() {
    return Error(ErrorNumber::NotSupported,
                 QStringLiteral("Current Recordset does not support updating. This may be a "
                                "limitation of the provider, or of the selected locktype."));
}

Error bookmarkInvalid() {
    return Error(BookmarkInvalid, QStringLiteral("Bookmark is invalid."));
}

Error rowNotFoundForUpdate() {
    return Error(RowNotFoundForUpdate,
                 QStringLiteral("Row cannot be located for updating. Some values may have been "
                                "changed since it was last read."));
}

Error notAllowedInContext() {
    return Error(NotAllowedInContext, QStringLiteral("Operation is not allowed in this context."));
}

Error typeMismatch() {
    return Error(ErrorNumber::TypeMismatch, QStringLiteral("Type mismatch"));
}

Error overflow() {
    return Error(ErrorNumber::Overflow, QStringLiteral("Overflow"));
}

Error valueDoesNotFit() {
    return Error(ErrorNumber::ValueDoesNotFit,
                 QStringLiteral("Multiple-step operation generated errors. Check each status "
                                "value."));
}

} // namespace vx::errors

#pragma once

#include <QString>
#include <QtGlobal>
#include <VXUILib/vxdata_export.h>
#include <exception>
#include <string>

/// Everything VXUILib offers hosts: the controls, the companion interfaces and their registry,
/// the UI services, and the connection, record set and error types of its data layer.
namespace vx {

/// Error numbers the controls know by value; kept as the platform's data-access layer reports
/// them.
namespace ErrorNumber {
/// A number does not fit its type.
inline constexpr qint32 Overflow = 6;
/// A value cannot be converted to the type asked for.
inline constexpr qint32 TypeMismatch = 13;
/// Any other failure.
inline constexpr qint32 Unspecified = qint32(0x80004005);
/// The SQL text is not valid.
inline constexpr qint32 SyntaxError = qint32(0x80040E14);
/// A value is too long or too large for its column.
inline constexpr qint32 ValueDoesNotFit = qint32(0x80040E21);
/// A key or constraint of the repository was violated.
inline constexpr qint32 IntegrityViolation = qint32(0x80040E2F);
/// The table named does not exist.
inline constexpr qint32 TableNotFound = qint32(0x80040E37);
/// A column named does not exist.
inline constexpr qint32 ColumnNotFound = qint32(0x80040E10);
/// The record set is before its first or after its last row.
inline constexpr qint32 NoCurrentRecord = qint32(0x800A0BCD);
/// The record set does not support the operation (for example updating a computed result).
inline constexpr qint32 NotSupported = qint32(0x800A0CB3);
/// No field of that name or index.
inline constexpr qint32 ItemNotFound = qint32(0x800A0CC1);
/// The connection or record set is closed.
inline constexpr qint32 ObjectClosed = qint32(0x800A0E78);
/// The data link names a provider this library does not have.
inline constexpr qint32 ProviderNotFound = qint32(0x800A0E7A);
/// An argument is out of range or of the wrong kind.
inline constexpr qint32 InvalidArgument = qint32(0x800A0BB9);
} // namespace ErrorNumber

/// Why a statement lost to another session's work at the same moment; such a failure usually
/// succeeds when the whole unit of work is run again.
enum class Conflict {
    None,            ///< Not a conflict with another session.
    Busy,            ///< The engine's lock was held too long ("database is locked").
    Serialization,   ///< A concurrent transaction changed what this one read.
    Deadlock,        ///< Chosen as the victim of a lock cycle.
    UniqueViolation, ///< A key that had to be new was taken meanwhile.
};

/// The one exception type of the library: a number and a description, like the platform's
/// error object. Controls catch it at each public operation and show the description; the
/// record set, connection and query text calls a host makes throw it.
class VXDATA_EXPORT Error : public std::exception {
public:
    /// An error with its number (see ErrorNumber), its text and what raised it.
    Error(qint32 number, QString description, QString source = {});

    /// The error number (see ErrorNumber).
    qint32 number() const noexcept { return m_number; }
    /// The text shown to the user.
    const QString& description() const noexcept { return m_description; }
    /// What raised the error (the engine or the operation); may be empty.
    const QString& source() const noexcept { return m_source; }
    /// Whether the failure was a conflict with another session, worth running again.
    Conflict conflict() const noexcept { return m_conflict; }
    /// Marks the error as a conflict with another session.
    Error& setConflict(Conflict conflict) noexcept {
        m_conflict = conflict;
        return *this;
    }
    /// The description in UTF-8.
    const char* what() const noexcept override { return m_what.c_str(); }

private:
    qint32 m_number;
    QString m_description;
    QString m_source;
    std::string m_what;
    Conflict m_conflict = Conflict::None;
};

} // namespace vx

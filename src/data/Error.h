#pragma once

#include <QString>
#include <QtGlobal>
#include <VXUILib/vxdata_export.h>
#include <exception>
#include <string>

namespace vx {

// Error numbers the controls know by value; kept as the platform's data-access layer reports them.
namespace ErrorNumber {
inline constexpr qint32 Overflow = 6;
inline constexpr qint32 TypeMismatch = 13;
inline constexpr qint32 Unspecified = qint32(0x80004005);
inline constexpr qint32 SyntaxError = qint32(0x80040E14);
inline constexpr qint32 ValueDoesNotFit = qint32(0x80040E21);
inline constexpr qint32 IntegrityViolation = qint32(0x80040E2F);
inline constexpr qint32 TableNotFound = qint32(0x80040E37);
inline constexpr qint32 ColumnNotFound = qint32(0x80040E10);
inline constexpr qint32 NoCurrentRecord = qint32(0x800A0BCD);
inline constexpr qint32 NotSupported = qint32(0x800A0CB3);
inline constexpr qint32 ItemNotFound = qint32(0x800A0CC1);
inline constexpr qint32 ObjectClosed = qint32(0x800A0E78);
inline constexpr qint32 ProviderNotFound = qint32(0x800A0E7A);
inline constexpr qint32 InvalidArgument = qint32(0x800A0BB9);
} // namespace ErrorNumber

// Why a statement lost to another session's work at the same moment; such a failure usually
// succeeds when the whole unit of work is run again (see retryTransient).
enum class Conflict {
    None,
    Busy,            // the engine's lock was held too long ("database is locked")
    Serialization,   // a concurrent transaction changed what this one read
    Deadlock,        // chosen as the victim of a lock cycle
    UniqueViolation, // a key that had to be new was taken meanwhile
};

// The one exception type of the layers: a number and a description, like the platform's error
// object. Controls catch it at each public operation and show the description.
class VXDATA_EXPORT Error : public std::exception {
public:
    Error(qint32 number, QString description, QString source = {});

    qint32 number() const noexcept { return m_number; }
    const QString& description() const noexcept { return m_description; }
    const QString& source() const noexcept { return m_source; }
    Conflict conflict() const noexcept { return m_conflict; }
    Error& setConflict(Conflict conflict) noexcept {
        m_conflict = conflict;
        return *this;
    }
    const char* what() const noexcept override { return m_what.c_str(); }

private:
    qint32 m_number;
    QString m_description;
    QString m_source;
    std::string m_what;
    Conflict m_conflict = Conflict::None;
};

} // namespace vx

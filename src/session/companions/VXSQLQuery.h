#pragma once

#include <QObject>
#include <QString>
#include <VXUILib/vxuilib_export.h>

namespace vx {

/// The query parser ("VXQueryParser.VXSQLQuery"): restricts a search to the documents a user
/// may see, where the repository has document security.
class VXUILIB_EXPORT VXSQLQuery : public QObject {
    Q_OBJECT
    // clang-format off
    Q_CLASSINFO("ClassName", "VXQueryParser.VXSQLQuery")
    Q_CLASSINFO("Interface", "QueryStringWithSecurity")
    // clang-format on

public:
    /// A parser; it holds no state between calls.
    explicit VXSQLQuery(QObject* parent = nullptr)
        : QObject(parent) {}
    ~VXSQLQuery() override = default;

    /// The query restricted to the items the user may see by KTSecurity.
    Q_INVOKABLE virtual QString QueryStringWithSecurity(const QString& query, qint16& userId) = 0;
};

} // namespace vx

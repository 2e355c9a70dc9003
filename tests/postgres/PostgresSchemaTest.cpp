#include "PostgresFixture.h"
#include "data/Recordset.h"
#include "data/sqlite/SqliteDriver.h"

namespace vx::test {
namespace {

using PostgresSchema = PostgresFixture;

TEST_F(PostgresSchema, TablesCarryTheirDeclaredNamesAndKinds) {
    driver->execute(QStringLiteral("CREATE TABLE KTSecurity ([itemid] LONG, [UserID] LONG)"));
    driver->execute(QStringLiteral("CREATE TABLE [InvoicesCustomerHints] ([Customer] TEXT(20))"));
    driver->execute(QStringLiteral("CREATE TABLE plain (x LONG)"));
    driver->execute(QStringLiteral("CREATE VIEW KTSecurityView AS SELECT * FROM KTSecurity"));

    QHash<QString, QString> types;
    for (const TableEntry& entry : driver->tables())
        types.insert(entry.name, entry.type);
    EXPECT_EQ(types.value(QStringLiteral("KTSecurity")), u"TABLE");
    EXPECT_EQ(types.value(QStringLiteral("InvoicesCustomerHints")), u"TABLE");
    EXPECT_EQ(types.value(QStringLiteral("plain")), u"TABLE");
    EXPECT_EQ(types.value(QStringLiteral("ktsecurityview")), u"VIEW");
    EXPECT_EQ(types.value(QStringLiteral("pg_class")), u"SYSTEM TABLE");
    EXPECT_FALSE(types.contains(QStringLiteral("ktsecurity")));

    // The schema rowset the index control reads finds the table by exact name.
    Connection connection = connect();
    Recordset schema = connection.openSchema(SchemaKind::Tables);
    bool securityTable = false;
    for (; !schema.eof(); schema.moveNext()) {
        securityTable = securityTable ||
                        (schema.value(QStringLiteral("TABLE_TYPE")).toString() == u"TABLE" &&
                         schema.value(QStringLiteral("TABLE_NAME")).toString() == u"KTSecurity");
    }
    EXPECT_TRUE(securityTable);
}

TEST_F(PostgresSchema, ProviderTypesMatchTheEmbeddedEngineForSharedTypes) {
    SqliteDriver embedded;
    embedded.open(ConnectionProperties::parse(QStringLiteral("Data Source=:memory:")), {}, {});
    auto rowsFor = [](const QList<ProviderTypeEntry>& types, DataType type) {
        QStringList rows;
        for (const ProviderTypeEntry& entry : types) {
            if (entry.dataType == type)
                rows << QStringLiteral("%1|%2|%3|%4|%5")
                            .arg(entry.typeName, QString::number(entry.columnSize),
                                 entry.literalPrefix, entry.literalSuffix,
                                 entry.bestMatch ? QStringLiteral("best") : QStringLiteral("-"));
        }
        return rows;
    };
    const auto ours = driver->providerTypes();
    const auto theirs = embedded.providerTypes();
    for (DataType type :
         {DataType::WChar, DataType::VarWChar, DataType::LongVarWChar, DataType::Date,
          DataType::Integer, DataType::SmallInt, DataType::Double, DataType::Boolean}) {
        EXPECT_FALSE(rowsFor(ours, type).isEmpty()) << int(type);
        EXPECT_EQ(rowsFor(ours, type), rowsFor(theirs, type)) << int(type);
    }
    // Every type a column can report has a row.
    for (DataType type : {DataType::BigInt, DataType::Single, DataType::Currency, DataType::Numeric,
                          DataType::Guid, DataType::LongVarBinary})
        EXPECT_FALSE(rowsFor(ours, type).isEmpty()) << int(type);
}

} // namespace
} // namespace vx::test

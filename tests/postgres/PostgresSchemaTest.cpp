#include "PostgresFixture.h"
#include "data/Recordset.h"
#include "data/sqlite/SqliteDriver.h"

using namespace Qt::StringLiterals;

namespace vx::test {
namespace {

using PostgresSchema = PostgresFixture;

TEST_F(PostgresSchema, TablesCarryTheirDeclaredNamesAndKinds) {
    driver->execute(u"CREATE TABLE KTSecurity ([itemid] LONG, [UserID] LONG)"_s);
    driver->execute(u"CREATE TABLE [InvoicesCustomerHints] ([Customer] TEXT(20))"_s);
    driver->execute(u"CREATE TABLE plain (x LONG)"_s);
    driver->execute(u"CREATE VIEW KTSecurityView AS SELECT * FROM KTSecurity"_s);

    QHash<QString, QString> types;
    for (const TableEntry& entry : driver->tables())
        types.insert(entry.name, entry.type);
    EXPECT_EQ(types.value(u"KTSecurity"_s), u"TABLE");
    EXPECT_EQ(types.value(u"InvoicesCustomerHints"_s), u"TABLE");
    EXPECT_EQ(types.value(u"plain"_s), u"TABLE");
    EXPECT_EQ(types.value(u"ktsecurityview"_s), u"VIEW");
    EXPECT_EQ(types.value(u"pg_class"_s), u"SYSTEM TABLE");
    EXPECT_FALSE(types.contains(u"ktsecurity"_s));

    // The schema rowset the index control reads finds the table by exact name.
    Connection connection = connect();
    Recordset schema = connection.openSchema(SchemaKind::Tables);
    bool securityTable = false;
    for (; !schema.eof(); schema.moveNext()) {
        securityTable =
            securityTable || (schema.value(u"TABLE_TYPE"_s).toString() == u"TABLE" &&
                              schema.value(u"TABLE_NAME"_s).toString() == u"KTSecurity");
    }
    EXPECT_TRUE(securityTable);
}

TEST_F(PostgresSchema, ProviderTypesMatchTheEmbeddedEngineForSharedTypes) {
    SqliteDriver embedded;
    embedded.open(ConnectionProperties::parse(u"Data Source=:memory:"_s), {}, {});
    auto rowsFor = [](const QList<ProviderTypeEntry>& types, DataType type) {
        QStringList rows;
        for (const ProviderTypeEntry& entry : types) {
            if (entry.dataType == type)
                rows << u"%1|%2|%3|%4|%5"_s.arg(entry.typeName, QString::number(entry.columnSize),
                                                entry.literalPrefix, entry.literalSuffix,
                                                entry.bestMatch ? u"best"_s : u"-"_s);
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

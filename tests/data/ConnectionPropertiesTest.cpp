#include "data/ConnectionProperties.h"

#include "ScratchDatabase.h"
#include "data/Error.h"

#include <QFile>
#include <QStringDecoder>
#include <QTemporaryDir>
#include <gtest/gtest.h>

namespace vx::test {
namespace {

TEST(ConnectionProperties, ParsesKeysAndQuotedValues) {
    const auto properties = ConnectionProperties::parse(QStringLiteral(
        "Provider=SQLite; data source = \"C:\\a;b\\x.db\" ;"
        "Jet OLEDB:Database Password = ' morvantel';Name='it''s';Other=\"a\"\"b\";"));
    EXPECT_EQ(properties.value("PROVIDER"), u"SQLite");
    EXPECT_EQ(properties.value("Data Source"), u"C:\\a;b\\x.db");
    // The blank inside the quotes belongs to the password.
    EXPECT_EQ(properties.value("jet oledb:database password"), u" morvantel");
    EXPECT_EQ(properties.value("name"), u"it's");
    EXPECT_EQ(properties.value("other"), u"a\"b");
    EXPECT_FALSE(properties.contains("User ID"));
    EXPECT_EQ(properties.value("User ID", "none"), u"none");
    EXPECT_EQ(properties.entries().size(), 5);

    // The export connection text ends in the lone closing quote of an extended-properties value
    // written without its opening one.
    const auto exportText = ConnectionProperties::parse(QStringLiteral(
        "Provider=MSDASQL.1;Extended Properties=DSN=Visual FoxPro Tables;UID=;SourceDB=/tmp/x;\""));
    EXPECT_EQ(exportText.value("Extended Properties"), u"DSN=Visual FoxPro Tables");
    EXPECT_EQ(exportText.value("SourceDB"), u"/tmp/x");
    EXPECT_EQ(exportText.entries().size(), 4);
}

TEST(ConnectionProperties, MergeKeepsOwnValuesAndSetReplacesByAnyCase) {
    auto own = ConnectionProperties::parse("Data Source=mine.db");
    own.mergeMissing(ConnectionProperties::parse("Provider=SQLite;DATA SOURCE=theirs.db"));
    EXPECT_EQ(own.value("data source"), u"mine.db");
    EXPECT_EQ(own.value("provider"), u"SQLite");
    own.set("PROVIDER", "PostgreSQL");
    EXPECT_EQ(own.value("Provider"), u"PostgreSQL");
    EXPECT_EQ(own.entries().size(), 2);
}

TEST(ConnectionProperties, MalformedTextIsRefusedClearly) {
    EXPECT_TRUE(expectError([] { ConnectionProperties::parse("Provider=SQLite;junk"); },
                            ErrorNumber::InvalidArgument)
                    .contains(u"junk"));
    expectError([] { ConnectionProperties::parse("Password='open"); },
                ErrorNumber::InvalidArgument);
    expectError([] { ConnectionProperties::parse("=value"); }, ErrorNumber::InvalidArgument);
}

TEST(DataLinkFile, WritesTheUtf16FormAndReadsItAndUtf8Back) {
    QTemporaryDir folder;
    const QString path = folder.filePath("group.udl");
    writeDataLinkFile(path, "Provider=SQLite;Data Source=\"r\u00e9po.db\"");

    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = file.readAll();
    ASSERT_TRUE(bytes.startsWith("\xFF\xFE"));
    const QString text = QStringDecoder(QStringDecoder::Utf16LE).decode(bytes.mid(2));
    EXPECT_TRUE(text.startsWith(
        QStringLiteral("[oledb]\r\n; Everything after this line is an OLE DB initstring\r\n"
                       "Provider=SQLite;")));

    const auto properties = readDataLinkFile(path);
    EXPECT_EQ(properties.value("Data Source"), u"r\u00e9po.db");
    EXPECT_EQ(properties.value("Provider"), u"SQLite");

    // Plain UTF-8, with the header or only a byte-order mark.
    QFile a(folder.filePath("a.udl")), b(folder.filePath("b.udl"));
    ASSERT_TRUE(a.open(QIODevice::WriteOnly) && b.open(QIODevice::WriteOnly));
    a.write("[oledb]\n; Everything after this line is an OLE DB initstring\n"
            "Provider=SQLite;Data Source=a.db\n");
    b.write("\xEF\xBB\xBFProvider=SQLite;Data Source=b.db");
    a.close();
    b.close();
    EXPECT_EQ(readDataLinkFile(a.fileName()).value("Data Source"), u"a.db");
    EXPECT_EQ(readDataLinkFile(b.fileName()).value("Data Source"), u"b.db");
}

TEST(DataLinkFile, MissingEmptyOrHeaderOnlyFilesNameTheFile) {
    QTemporaryDir folder;
    QFile(folder.filePath("empty.udl")).open(QIODevice::WriteOnly);
    writeDataLinkFile(folder.filePath("header.udl"), QString());
    for (const char* name : {"missing.udl", "empty.udl", "header.udl"}) {
        const QString path = folder.filePath(QString::fromLatin1(name));
        EXPECT_TRUE(
            expectError([&] { readDataLinkFile(path); }, ErrorNumber::Unspecified).contains(path));
    }

    expectError([] { readDataLinkFile(QString()); }, ErrorNumber::InvalidArgument);
}

TEST(DataLinkFile, AFileHoldingAPasswordIsForItsOwnerOnly) {
    QTemporaryDir folder;
    const auto ownerOnly = QFileDevice::ReadOwner | QFileDevice::WriteOwner;
    const auto others = QFileDevice::ReadGroup | QFileDevice::WriteGroup | QFileDevice::ExeGroup |
                        QFileDevice::ReadOther | QFileDevice::WriteOther | QFileDevice::ExeOther;
    struct Case {
        QString initString;
        bool secret;
    };
    const QList<Case> cases{
        {"Provider=PostgreSQL;Host=db;Database=r;User ID=u;Password=s3cret", true},
        {"Provider=PostgreSQL;Host=db;Database=r;User ID=u;PWD=' s3cret'", true},
        {"Provider=PostgreSQL;Host=db;Database=r;User ID=u", false},
        {"Provider=SQLite;Data Source=r.db", false},
    };
    // A file that was readable by everyone before is narrowed when it comes to hold a password.
    const QString path = folder.filePath("group.udl");
    QFile(path).open(QIODevice::WriteOnly);
    QFile::setPermissions(path, ownerOnly | QFileDevice::ReadGroup | QFileDevice::ReadOther);
    for (const Case& c : cases) {
        writeDataLinkFile(path, c.initString);
        const auto permissions = QFile::permissions(path);
        if (c.secret) {
            EXPECT_EQ(permissions & others, QFileDevice::Permissions())
                << c.initString.toStdString();
            EXPECT_EQ(permissions & ownerOnly, ownerOnly);
        }
        EXPECT_EQ(readDataLinkFile(path).value("Host"),
                  ConnectionProperties::parse(c.initString).value("Host"));
    }
    // A new file without one gets what the umask gives, readable by the group's users.
    const QString shared = folder.filePath("shared.udl");
    writeDataLinkFile(shared, cases.last().initString);
    QFile probe(folder.filePath("probe"));
    ASSERT_TRUE(probe.open(QIODevice::WriteOnly));
    EXPECT_EQ(QFile::permissions(shared), probe.permissions());
}

} // namespace
} // namespace vx::test

#include "data/Connection.h"

#include "data/ConnectionProperties.h"
#include "data/Driver.h"
#include "data/Error.h"
#include "data/Recordset.h"
#include "data/dialect/SqlLexer.h"
#include "data/schema/SchemaRowsets.h"

#include <QDir>
#include <QFileInfo>

namespace vx {

namespace {

const QString fileNameKey = QStringLiteral("File Name");
const QString providerKey = QStringLiteral("Provider");
const QString dataSourceKey = QStringLiteral("Data Source");
constexpr qint32 objectOpen = qint32(0x800A0E79);

// One statement per call, as record-set opens have it: a second statement after a ";" would let
// a value spliced into the text run statements of its own.
void requireOneStatement(const QString& sql) {
    bool ended = false;
    for (const dialect::SqlToken& token : dialect::tokenize(sql)) {
        if (!token.isSignificant())
            continue;
        if (token.isSymbol(u";"))
            ended = true;
        else if (ended)
            throw Error(ErrorNumber::SyntaxError,
                        QStringLiteral("Characters found after end of SQL statement."));
    }
}

// The connection text's own keys, completed from the data-link file it names. A file-based
// data source given relative to the data-link file is made absolute against its folder.
ConnectionProperties resolveProperties(const QString& connectionText) {
    ConnectionProperties properties = ConnectionProperties::parse(connectionText);
    if (!properties.contains(fileNameKey))
        return properties;

    const QString linkPath = properties.value(fileNameKey).trimmed();
    if (linkPath.isEmpty())
        throw Error(ErrorNumber::InvalidArgument,
                    QStringLiteral("The connection text names no data-link file: \"File Name\" "
                                   "is empty. Check the group's initialisation file."));
    properties.mergeMissing(readDataLinkFile(linkPath));

    const QString source = properties.value(dataSourceKey).trimmed();
    if (!source.isEmpty() && source != u":memory:" && QFileInfo(source).isRelative())
        properties.set(dataSourceKey,
                       QDir(QFileInfo(linkPath).absolutePath()).absoluteFilePath(source));
    return properties;
}

// Keeps the session open while the appender lives, and refuses rows once the connection closed
// (the engine's appender would outlive its driver otherwise).
class SessionRowAppender : public RowAppender {
public:
    SessionRowAppender(Connection connection, std::unique_ptr<RowAppender> appender)
        : m_connection(std::move(connection))
        , m_driver(&m_connection.driver())
        , m_appender(std::move(appender)) {}

    void append(std::span<const QVariant> values) override {
        requireSameDriver();
        m_appender->append(values);
    }
    void finish() override {
        requireSameDriver();
        m_appender->finish();
    }

private:
    void requireSameDriver() const {
        if (!m_connection.isOpen() || &m_connection.driver() != m_driver)
            throw Error(ErrorNumber::ObjectClosed,
                        QStringLiteral("Operation is not allowed when the object is closed."));
    }

    Connection m_connection;
    const Driver* m_driver;
    std::unique_ptr<RowAppender> m_appender;
};

} // namespace

struct Connection::Private {
    std::unique_ptr<Driver> driver;
    QString connectionText;
    QString provider;

    ~Private() {
        if (driver) {
            try {
                driver->close();
            } catch (...) { // closing while tearing down has nobody to report to
            }
        }
    }

    Driver& openDriver() const {
        if (!driver || !driver->isOpen())
            throw Error(ErrorNumber::ObjectClosed,
                        QStringLiteral("Operation is not allowed when the object is closed."));
        return *driver;
    }
};

Connection::Connection()
    : d(std::make_shared<Private>()) {}
Connection::~Connection() = default;
Connection::Connection(const Connection&) = default;
Connection& Connection::operator=(const Connection&) = default;
// A moved-from connection stays usable (and closed), as a fresh one is.
Connection::Connection(Connection&& other) noexcept
    : d(std::move(other.d)) {
    other.d = std::make_shared<Private>();
}
Connection& Connection::operator=(Connection&& other) noexcept {
    if (this != &other) {
        d = std::move(other.d);
        other.d = std::make_shared<Private>();
    }
    return *this;
}

void Connection::open(const QString& connectionText, const QString& user, const QString& password) {
    if (isOpen())
        throw Error(objectOpen,
                    QStringLiteral("Operation is not allowed when the object is open."));
    const ConnectionProperties properties = resolveProperties(connectionText);
    std::unique_ptr<Driver> driver = createDriver(properties.value(providerKey));
    driver->open(properties, user, password);
    d->driver = std::move(driver);
    d->connectionText = connectionText;
    d->provider = d->driver->name();
}

void Connection::close() {
    if (!d->driver)
        return;
    std::unique_ptr<Driver> driver = std::move(d->driver);
    driver->close(); // pending transactions are rolled back
}

bool Connection::isOpen() const {
    return d->driver && d->driver->isOpen();
}

QString Connection::connectionText() const {
    return d->connectionText;
}

QString Connection::providerName() const {
    return isOpen() ? d->provider : QString();
}

qint64 Connection::execute(const QString& sql) {
    Driver& driver = d->openDriver();
    requireOneStatement(sql);
    return driver.execute(sql);
}

void Connection::beginTrans(TransactionKind kind) {
    Driver& driver = d->openDriver();
    if (kind == TransactionKind::AllOrNothing)
        driver.beginAllOrNothingTransaction();
    else
        driver.beginTransaction();
}

void Connection::commitTrans() {
    d->openDriver().commitTransaction();
}

void Connection::rollbackTrans() {
    d->openDriver().rollbackTransaction();
}

int Connection::transactionLevel() const {
    return isOpen() ? d->driver->transactionLevel() : 0;
}

std::unique_ptr<RowAppender> Connection::appendRows(const QString& table,
                                                    const QStringList& columns) {
    return std::make_unique<SessionRowAppender>(*this, d->openDriver().appendRows(table, columns));
}

Recordset Connection::openSchema(SchemaKind kind) {
    Driver& driver = d->openDriver();
    switch (kind) {
    case SchemaKind::Tables:
        return Recordset::fromRows(tablesRowset(driver.tables()));
    case SchemaKind::ProviderTypes:
        return Recordset::fromRows(providerTypesRowset(driver.providerTypes()));
    }
    throw Error(ErrorNumber::NotSupported,
                QStringLiteral("Object or provider is not capable of performing requested "
                               "operation."));
}

QStringList Connection::indexNames() const {
    return d->openDriver().indexNames();
}

Driver& Connection::driver() const {
    return d->openDriver();
}

Transaction::Transaction(Connection connection, TransactionKind kind)
    : m_connection(std::move(connection)) {
    m_connection.beginTrans(kind);
}

Transaction::~Transaction() {
    if (!m_open)
        return;
    try {
        m_connection.rollbackTrans();
    } catch (...) { // a destructor cannot report; the engine drops the transaction on close
    }
}

void Transaction::commit() {
    if (!m_open)
        throw Error(ErrorNumber::Unspecified,
                    QStringLiteral("The transaction has already been committed."));
    m_connection.commitTrans();
    m_open = false;
}

} // namespace vx

#include "PostgresServer.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

// The harness forks the server as another user and has it die with the tests: Linux only.
#if defined(Q_OS_LINUX)
#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QThread>
#include <algorithm>
#include <arpa/inet.h>
#include <fcntl.h>
#include <grp.h>
#include <netinet/in.h>
#include <pwd.h>
#include <signal.h>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>
#endif

using namespace Qt::StringLiterals;

namespace vx::test {

const QString superUser = QStringLiteral("vxadmin");

#if defined(Q_OS_LINUX)

namespace {

constexpr int initTimeoutMs = 120000;
constexpr int startTimeoutMs = 30000;
constexpr int stopTimeoutMs = 15000;
constexpr int startAttempts = 3;

// The newest installed server whose folder holds what the harness runs.
QString findBinaries() {
    QStringList candidates;
    const QString configured = qEnvironmentVariable("VX_POSTGRES_BIN");
    if (!configured.isEmpty())
        candidates << configured;
    QDir versions(QStringLiteral("/usr/lib/postgresql"));
    QStringList installed = versions.entryList(QDir::Dirs | QDir::NoDotAndDotDot);
    std::sort(installed.begin(), installed.end(),
              [](const QString& a, const QString& b) { return a.toInt() > b.toInt(); });
    for (const QString& version : installed)
        candidates << versions.filePath(version + QStringLiteral("/bin"));
    for (const QString& folder : candidates) {
        const QDir bin(folder);
        if (QFile::exists(bin.filePath(QStringLiteral("initdb"))) &&
            QFile::exists(bin.filePath(QStringLiteral("postgres"))) &&
            QFile::exists(bin.filePath(QStringLiteral("createdb"))))
            return bin.absolutePath();
    }
    return {};
}

quint16 freeLoopbackPort() {
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    if (fd < 0)
        return 0;
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof(address);
    quint16 port = 0;
    if (::bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length) == 0)
        port = ntohs(address.sin_port);
    ::close(fd);
    return port;
}

QString tailOf(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QByteArray text = file.readAll();
    return QString::fromUtf8(text.right(3000));
}

// Whether the process has ended (reaped); its exit code in `code`.
bool hasEnded(pid_t pid, int& code) {
    int status = 0;
    const pid_t done = ::waitpid(pid, &status, WNOHANG);
    if (done != pid)
        return false;
    code = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    return true;
}

// Waits for the process to end; -1 when it is still running after `timeoutMs`.
int waitForExit(pid_t pid, int timeoutMs) {
    QElapsedTimer timer;
    timer.start();
    int code = 0;
    while (!hasEnded(pid, code)) {
        if (timer.elapsed() > timeoutMs)
            return -1;
        QThread::msleep(20);
    }
    return code;
}

} // namespace

struct PostgresServer::Private {
    QString binaries;
    QString skipReason;
    QString failure;
    std::unique_ptr<QTemporaryDir> folder;
    bool switchUser = false;
    uid_t uid = 0;
    gid_t gid = 0;
    pid_t serverPid = -1;
    quint16 port = 0;
    QString password;
    int databases = 0;

    bool running() const { return serverPid > 0; }
    QString path(const QString& name) const { return folder->filePath(name); }
    QString dataFolder() const { return path(QStringLiteral("data")); }
    QString logPath() const { return path(QStringLiteral("server.log")); }

    // Starts a program with its output in the log; as the server's user when `asServerUser`.
    pid_t spawn(const QString& program, const QStringList& arguments, bool asServerUser) const {
        std::vector<std::string> strings{program.toStdString()};
        for (const QString& argument : arguments)
            strings.push_back(argument.toStdString());
        std::vector<char*> argv;
        for (auto& text : strings)
            argv.push_back(text.data());
        argv.push_back(nullptr);
        const std::string log = logPath().toStdString();
        const std::string workingFolder = folder->path().toStdString();
        const bool changeUser = asServerUser && switchUser;

        const pid_t pid = ::fork();
        if (pid != 0)
            return pid;
        // Child: only async-signal-safe calls from here.
        if (changeUser &&
            (::setgroups(0, nullptr) != 0 || ::setgid(gid) != 0 || ::setuid(uid) != 0))
            ::_exit(126);
        // Set after the user change, which clears it: the server goes when the tests go.
        ::prctl(PR_SET_PDEATHSIG, SIGINT);
        const int fd = ::open(log.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
        if (fd >= 0) {
            ::dup2(fd, STDOUT_FILENO);
            ::dup2(fd, STDERR_FILENO);
            ::close(fd);
        }
        if (::chdir(workingFolder.c_str()) != 0)
            ::_exit(126);
        ::execv(argv[0], argv.data());
        ::_exit(127);
    }

    bool run(const QString& program, const QStringList& arguments, bool asServerUser,
             int timeoutMs) {
        const pid_t pid = spawn(program, arguments, asServerUser);
        if (pid < 0) {
            failure = QStringLiteral("cannot start %1").arg(program);
            return false;
        }
        const int code = waitForExit(pid, timeoutMs);
        if (code == 0)
            return true;
        if (code < 0) {
            ::kill(pid, SIGKILL);
            ::waitpid(pid, nullptr, 0);
        }
        failure = QStringLiteral("%1 failed (%2); log:\n%3")
                      .arg(program, code < 0 ? QStringLiteral("timed out") : QString::number(code),
                           tailOf(logPath()));
        return false;
    }

    // The server is up once its pid file says "ready" (its 8th line).
    bool waitUntilReady() {
        QElapsedTimer timer;
        timer.start();
        const QString pidFile = QDir(dataFolder()).filePath(QStringLiteral("postmaster.pid"));
        while (timer.elapsed() < startTimeoutMs) {
            int code = 0;
            if (hasEnded(serverPid, code)) {
                serverPid = -1;
                return false;
            }
            QFile file(pidFile);
            if (file.open(QIODevice::ReadOnly)) {
                const QList<QByteArray> lines = file.readAll().split('\n');
                if (lines.size() > 7 && lines[7].trimmed() == "ready")
                    return true;
            }
            QThread::msleep(25);
        }
        return false;
    }

    void stop() {
        if (serverPid <= 0)
            return;
        ::kill(serverPid, SIGINT); // fast shutdown: clients are disconnected
        if (waitForExit(serverPid, stopTimeoutMs) < 0) {
            ::kill(serverPid, SIGKILL);
            ::waitpid(serverPid, nullptr, 0);
        }
        serverPid = -1;
    }

    void start() {
        binaries = findBinaries();
        if (binaries.isEmpty()) {
            skipReason = QStringLiteral("no PostgreSQL server binaries (initdb, postgres, "
                                        "createdb) under /usr/lib/postgresql/*/bin or "
                                        "VX_POSTGRES_BIN");
            return;
        }
        if (::geteuid() == 0) {
            // initdb and the server refuse to run as root.
            const passwd* user = ::getpwnam("postgres");
            if (!user) {
                skipReason = QStringLiteral("running as root and there is no \"postgres\" user "
                                            "to run the test server as");
                return;
            }
            switchUser = true;
            uid = user->pw_uid;
            gid = user->pw_gid;
        }
        folder = std::make_unique<QTemporaryDir>(QDir::tempPath() +
                                                 QStringLiteral("/vxpostgres-XXXXXX"));
        if (!folder->isValid()) {
            failure = QStringLiteral("cannot create a temporary folder");
            return;
        }
        const QByteArray folderPath = QFile::encodeName(folder->path());
        if (switchUser && ::chown(folderPath.constData(), uid, gid) != 0) {
            failure = QStringLiteral("cannot hand the temporary folder to the postgres user");
            return;
        }
        ::chmod(folderPath.constData(), 0700);

        password = QString::number(QRandomGenerator::global()->generate64(), 16);
        const QString passwordFile = path(QStringLiteral("password"));
        {
            QFile file(passwordFile);
            if (!file.open(QIODevice::WriteOnly)) {
                failure = QStringLiteral("cannot write the password file");
                return;
            }
            file.write(password.toUtf8() + '\n');
        }
        if (switchUser)
            ::chown(QFile::encodeName(passwordFile).constData(), uid, gid);

        const QDir bin(binaries);
        if (!run(bin.filePath(u"initdb"_s),
                 {u"-D"_s, dataFolder(), u"-U"_s, superUser, u"--pwfile="_s + passwordFile,
                  u"--auth-local=trust"_s, u"--auth-host=scram-sha-256"_s, u"-E"_s, u"UTF8"_s,
                  u"--locale=C.UTF-8"_s, u"--no-sync"_s, u"--no-instructions"_s},
                 true, initTimeoutMs))
            return;

        for (int attempt = 0; attempt < startAttempts; ++attempt) {
            port = freeLoopbackPort();
            // Durability is worthless for a throw-away server; speed is not.
            serverPid = spawn(bin.filePath(u"postgres"_s),
                              {u"-D"_s, dataFolder(), u"-p"_s, QString::number(port), u"-c"_s,
                               u"listen_addresses=127.0.0.1"_s, u"-c"_s,
                               u"unix_socket_directories="_s + folder->path(), u"-c"_s,
                               u"fsync=off"_s, u"-c"_s, u"synchronous_commit=off"_s, u"-c"_s,
                               u"full_page_writes=off"_s, u"-c"_s, u"max_connections=40"_s},
                              true);
            if (serverPid > 0 && waitUntilReady())
                return;
            stop(); // the port may have been taken meanwhile: try another
        }
        failure = QStringLiteral("the server did not start; log:\n") + tailOf(logPath());
    }
};

#else

struct PostgresServer::Private {
    QString binaries;
    QString skipReason;
    QString failure;
    std::unique_ptr<QTemporaryDir> folder;
    quint16 port = 0;
    QString password;
    int databases = 0;

    void start() {
        skipReason = QStringLiteral("the throw-away PostgreSQL server runs on Linux only");
    }
    void stop() {}
    bool running() const { return false; }
    bool run(const QString&, const QStringList&, bool, int) { return false; }
};

#endif

PostgresServer& PostgresServer::instance() {
    static PostgresServer server;
    return server;
}

PostgresServer::PostgresServer()
    : d(std::make_unique<Private>()) {
    d->start();
}

PostgresServer::~PostgresServer() {
    d->stop();
}

bool PostgresServer::isAvailable() const {
    return d->skipReason.isEmpty();
}

QString PostgresServer::skipReason() const {
    return d->skipReason;
}

bool PostgresServer::isRunning() const {
    return d->running();
}

QString PostgresServer::failure() const {
    return d->failure;
}

QString PostgresServer::createDatabase() {
    return createDatabaseFrom(QString());
}

QString PostgresServer::createDatabaseFrom(const QString& templateDatabase) {
    if (!isRunning())
        return {};
    const QString name = QStringLiteral("vxtest%1").arg(++d->databases);
    QStringList arguments{u"-h"_s, d->folder->path(), u"-p"_s, QString::number(d->port),
                          u"-U"_s, superUser};
    if (!templateDatabase.isEmpty())
        arguments << QStringLiteral("-T") << templateDatabase;
    arguments << name;
    if (!d->run(QDir(d->binaries).filePath(QStringLiteral("createdb")), arguments, false, 60000))
        return {};
    return initStringWithoutPassword(name) + QStringLiteral(";Password=") + d->password;
}

QString PostgresServer::initStringWithoutPassword(const QString& database) const {
    return QStringLiteral("Provider=PostgreSQL;Host=127.0.0.1;Port=%1;Database=%2;User ID=%3")
        .arg(QString::number(d->port), database, superUser);
}

QString PostgresServer::password() const {
    return d->password;
}

quint16 PostgresServer::port() const {
    return d->port;
}

} // namespace vx::test

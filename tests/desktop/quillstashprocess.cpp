#include "desktop/quillstashprocess.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QTest>

#include <csignal>

namespace {

constexpr int startTimeoutMs = 10000;

// The category prefix and the message type are the logging set-up's
// business; match the message part only.
const QRegularExpression tickLine(QStringLiteral("(?:^|[\\s:])tick (\\d{10,})\\s*$"));
const QRegularExpression captureLine(QStringLiteral("(?:^|[\\s:])captured (\\S+) types: (.*)$"));

} // namespace

QuillstashProcess::QuillstashProcess(const QString &home, QObject *parent)
    : QObject(parent), m_home(home)
{
    connect(&m_process, &QProcess::readyReadStandardError, this, &QuillstashProcess::readStandardError);
    connect(&m_process, &QProcess::finished, this, &QuillstashProcess::readStandardError);
}

QuillstashProcess::~QuillstashProcess()
{
    if (isRunning()) {
        m_process.kill();
        m_process.waitForFinished(startTimeoutMs);
    }
}

QString QuillstashProcess::configHome(const QString &home)
{
    return home + QStringLiteral("/.config");
}

QString QuillstashProcess::settingsPath(const QString &home)
{
    return configHome(home) + QStringLiteral("/Quillstash/Quillstash.conf");
}

QString QuillstashProcess::autostartPath(const QString &home)
{
    return configHome(home) + QStringLiteral("/autostart/quillstash.desktop");
}

bool QuillstashProcess::start()
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), m_home);
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), configHome(m_home));
    env.insert(QStringLiteral("XDG_DATA_HOME"), m_home + QStringLiteral("/.local/share"));
    env.insert(QStringLiteral("XDG_CACHE_HOME"), m_home + QStringLiteral("/.cache"));
    env.insert(QStringLiteral("QT_LOGGING_RULES"),
               QStringLiteral("quillstash.capture.debug=true;quillstash.tick.debug=true"));
    // The message type in front of each line makes a warning plain to see in
    // a failure report.
    env.insert(QStringLiteral("QT_MESSAGE_PATTERN"),
               QStringLiteral("%{type} %{if-category}%{category}: %{endif}%{message}"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    if (!env.contains(QStringLiteral("XDG_RUNTIME_DIR"))) {
        // A login session always has one; without it Qt complains on stderr.
        const QString runtime = m_home + QStringLiteral("/.runtime");
        QDir().mkpath(runtime);
        QFile::setPermissions(runtime, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    }
    m_process.setProcessEnvironment(env);
    m_process.setProgram(QStringLiteral(QUILLSTASH_BIN));
    m_process.setArguments({});
    m_process.setProcessChannelMode(QProcess::SeparateChannels);
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.start();
    return m_process.waitForStarted(startTimeoutMs);
}

bool QuillstashProcess::terminate(int timeoutMs)
{
    if (!isRunning())
        return true;
    ::kill(pid_t(m_process.processId()), SIGTERM);
    if (QTest::qWaitFor([this] { return !isRunning(); }, timeoutMs))
        return true;
    m_process.kill();
    m_process.waitForFinished(startTimeoutMs);
    return false;
}

bool QuillstashProcess::isRunning() const
{
    return m_process.state() != QProcess::NotRunning;
}

QList<qint64> QuillstashProcess::ticks() const
{
    QList<qint64> stamps;
    for (const Line &line : m_lines) {
        const QRegularExpressionMatch match = tickLine.match(line.text);
        if (match.hasMatch())
            stamps.append(match.captured(1).toLongLong());
    }
    return stamps;
}

QList<QuillstashProcess::Capture> QuillstashProcess::captures() const
{
    QList<Capture> found;
    for (const Line &line : m_lines) {
        const QRegularExpressionMatch match = captureLine.match(line.text);
        if (match.hasMatch())
            found.append({match.captured(1), match.captured(2).split(QStringLiteral(", ")), line.receivedMs});
    }
    return found;
}

QStringList QuillstashProcess::unexpectedLines(const QStringList &allowed) const
{
    QStringList unexpected;
    for (const Line &line : m_lines) {
        if (tickLine.match(line.text).hasMatch() || captureLine.match(line.text).hasMatch()
            || allowed.contains(line.text))
            continue;
        unexpected.append(line.text);
    }
    return unexpected;
}

bool QuillstashProcess::waitForTickCount(int count, int timeoutMs)
{
    return QTest::qWaitFor([&] { return ticks().size() >= count; }, timeoutMs);
}

bool QuillstashProcess::waitForCaptureCount(int count, int timeoutMs)
{
    return QTest::qWaitFor([&] { return captures().size() >= count; }, timeoutMs);
}

bool QuillstashProcess::waitForMoreTicks(int n, int timeoutMs)
{
    return waitForTickCount(int(ticks().size()) + n, timeoutMs);
}

void QuillstashProcess::readStandardError()
{
    m_partial += m_process.readAllStandardError();
    const qint64 now = QDateTime::currentMSecsSinceEpoch();
    qsizetype end;
    while ((end = m_partial.indexOf('\n')) >= 0) {
        m_lines.append({now, QString::fromUtf8(m_partial.left(end))});
        m_partial.remove(0, end + 1);
    }
    if (!isRunning() && !m_partial.isEmpty()) {
        m_lines.append({now, QString::fromUtf8(m_partial)});
        m_partial.clear();
    }
}

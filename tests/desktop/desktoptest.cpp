#include "desktop/desktoptest.h"

#include <QBuffer>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <xcb/xcb.h>

#include <algorithm>
#include <csignal>

namespace {

constexpr int waitMs = 5000;
constexpr int quitTimeoutMs = 10000;

// The message pattern set below puts the type and the category in front of
// each message, so that a warning is plain to see in a failure report.
const QRegularExpression tickLine(QStringLiteral("^debug quillstash\\.tick: tick (\\d{10,})$"));
const QRegularExpression captureLine(QStringLiteral("^debug quillstash\\.capture: captured (\\S+) types: (.*)$"));

} // namespace

void DesktopTest::SetUp()
{
    ASSERT_TRUE(m_home.isValid());
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb")) << "run desktop tests under xvfb-run";
    ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run desktop tests under dbus-run-session";
    // Xvfb machines have no sound card, and ALSA would say so on stderr; its
    // null device plays sounds into nothing as a desktop would play them.
    QFile asoundrc(m_home.filePath(QStringLiteral(".asoundrc")));
    ASSERT_TRUE(asoundrc.open(QIODevice::WriteOnly) && asoundrc.write("pcm.!default { type null }\n") > 0);
    m_connection = xcb_connect(nullptr, nullptr);
    ASSERT_FALSE(xcb_connection_has_error(m_connection));
    xcb_intern_atom_reply_t *atom =
        xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, 9, "CLIPBOARD"), nullptr);
    ASSERT_TRUE(atom);
    m_clipboardAtom = atom->atom;
    free(atom);
    ASSERT_TRUE(clearClipboard());
    m_notices = std::make_unique<NotificationServer>();
    ASSERT_TRUE(m_notices->start()) << "another notice server runs on this bus";

    auto readLines = [this] {
        m_partial += m_program.readAllStandardError();
        for (qsizetype end; (end = m_partial.indexOf('\n')) >= 0; m_partial.remove(0, end + 1))
            m_lines.append(QString::fromUtf8(m_partial.left(end)));
        if (m_program.state() == QProcess::NotRunning && !m_partial.isEmpty())
            m_lines.append(QString::fromUtf8(std::exchange(m_partial, {})));
    };
    QObject::connect(&m_program, &QProcess::readyReadStandardError, readLines);
    QObject::connect(&m_program, &QProcess::finished, readLines);
}

void DesktopTest::TearDown()
{
    m_program.kill();
    m_program.waitForFinished(waitMs);
    for (const auto &owner : m_owners) {
        ::kill(pid_t(owner->processId()), SIGCONT);
        owner->kill();
        owner->waitForFinished(waitMs);
    }
    // Our own clipboard data must not become the next test's first entry.
    QGuiApplication::clipboard()->clear();
    if (m_connection)
        xcb_disconnect(m_connection);
}

bool DesktopTest::startProgram()
{
    // The clipboard and the notice server are shared: an earlier run must be gone.
    EXPECT_EQ(m_program.state(), QProcess::NotRunning);
    m_lines.clear();
    m_program.setProcessEnvironment(programEnvironment());
    m_program.setStandardOutputFile(QProcess::nullDevice());
    m_program.start(QStringLiteral(QUILLSTASH_BIN), {});
    return m_program.waitForStarted(waitMs) && waitForMoreTicks(1, waitMs);
}

QProcessEnvironment DesktopTest::programEnvironment() const
{
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("HOME"), m_home.path());
    env.insert(QStringLiteral("XDG_CONFIG_HOME"), m_home.filePath(QStringLiteral(".config")));
    env.insert(QStringLiteral("QT_LOGGING_RULES"),
               QStringLiteral("quillstash.capture.debug=true;quillstash.tick.debug=true"));
    env.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("%{type} %{if-category}%{category}: %{endif}%{message}"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    if (!env.contains(QStringLiteral("XDG_RUNTIME_DIR"))) {
        // A login session always has one; without it Qt complains on stderr.
        QDir(m_home.path()).mkdir(QStringLiteral(".runtime"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        env.insert(QStringLiteral("XDG_RUNTIME_DIR"), m_home.filePath(QStringLiteral(".runtime")));
    }
    return env;
}

void DesktopTest::quitProgram(const QStringList &allowed)
{
    ::kill(pid_t(m_program.processId()), SIGTERM);
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_program.state() == QProcess::NotRunning; }, quitTimeoutMs))
        << "the program did not end within 10 s of SIGTERM";
    EXPECT_EQ(m_program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(m_program.exitCode(), 0);
    QStringList unexpected = otherLines();
    unexpected.removeIf([&](const QString &line) { return allowed.contains(line); });
    EXPECT_TRUE(unexpected.isEmpty()) << "unexpected output:\n" << unexpected.join(u'\n').toStdString();
}

QList<qint64> DesktopTest::ticks() const
{
    QList<qint64> stamps;
    for (const QString &line : m_lines) {
        if (const QRegularExpressionMatch match = tickLine.match(line); match.hasMatch())
            stamps.append(match.captured(1).toLongLong());
    }
    return stamps;
}

QList<QStringList> DesktopTest::captures() const
{
    QList<QStringList> types;
    for (const QString &line : m_lines) {
        if (const QRegularExpressionMatch match = captureLine.match(line); match.hasMatch())
            types.append(match.captured(2).split(QStringLiteral(", ")));
    }
    return types;
}

QStringList DesktopTest::captureIndexes() const
{
    QStringList indexes;
    for (const QString &line : m_lines) {
        if (const QRegularExpressionMatch match = captureLine.match(line); match.hasMatch())
            indexes.append(match.captured(1));
    }
    return indexes;
}

QStringList DesktopTest::otherLines() const
{
    QStringList other = m_lines;
    other.removeIf([](const QString &line) { return tickLine.match(line).hasMatch() || captureLine.match(line).hasMatch(); });
    return other;
}

bool DesktopTest::waitForMoreTicks(int n, int timeoutMs)
{
    const qsizetype count = ticks().size() + n;
    return QTest::qWaitFor([&] { return ticks().size() >= count; }, timeoutMs);
}

bool DesktopTest::waitForCaptures(int count)
{
    return QTest::qWaitFor([&] { return captures().size() >= count; }, twoTicksMs);
}

bool DesktopTest::copy(const QByteArray &data, const QString &target, bool stop)
{
    const quint32 before = owner();
    QProcess &xclip = *m_owners.emplace_back(std::make_unique<QProcess>());
    // -quiet keeps xclip in the foreground, so that its pid is the owner's;
    // even so it tells of every request it serves.
    QStringList arguments{QStringLiteral("-selection"), QStringLiteral("clipboard"), QStringLiteral("-quiet")};
    if (!target.isEmpty())
        arguments << QStringLiteral("-t") << target;
    xclip.setStandardOutputFile(QProcess::nullDevice());
    xclip.setStandardErrorFile(QProcess::nullDevice());
    xclip.start(QStringLiteral("xclip"), arguments);
    if (!xclip.waitForStarted(waitMs))
        return false;
    xclip.write(data);
    while (xclip.bytesToWrite() > 0 && xclip.waitForBytesWritten(waitMs)) {
    }
    xclip.closeWriteChannel();
    // No event loop here: the reader under test starts at the owner change,
    // and a stop must land while it still reads.
    QElapsedTimer waiting;
    waiting.start();
    while (owner() == before) {
        if (waiting.elapsed() > waitMs)
            return false;
    }
    if (stop)
        ::kill(pid_t(xclip.processId()), SIGSTOP);
    return true;
}

std::optional<QByteArray> DesktopTest::read(const QString &target)
{
    QProcess xclip;
    xclip.start(QStringLiteral("xclip"), {QStringLiteral("-selection"), QStringLiteral("clipboard"),
                                          QStringLiteral("-o"), QStringLiteral("-t"), target});
    // QProcess drains the pipe from the event loop, so xclip never blocks on it.
    if (!QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, waitMs)
        || xclip.exitStatus() != QProcess::NormalExit || xclip.exitCode() != 0)
        return std::nullopt;
    return xclip.readAllStandardOutput();
}

quint32 DesktopTest::owner() const
{
    xcb_get_selection_owner_reply_t *reply = xcb_get_selection_owner_reply(
        m_connection, xcb_get_selection_owner(m_connection, m_clipboardAtom), nullptr);
    const quint32 window = reply ? reply->owner : 0;
    free(reply);
    return window;
}

bool DesktopTest::clearClipboard()
{
    QSignalSpy seen(QGuiApplication::clipboard(), &QClipboard::changed);
    xcb_set_selection_owner(m_connection, XCB_NONE, m_clipboardAtom, XCB_CURRENT_TIME);
    xcb_flush(m_connection);
    return QTest::qWaitFor([&] { return owner() == 0 && !seen.isEmpty(); }, waitMs);
}

bool DesktopTest::waitForOwner() const
{
    return QTest::qWaitFor([&] { return owner() != 0; }, waitMs);
}

bool DesktopTest::ownClipboard(QMimeData *mime)
{
    if (!clearClipboard()) {
        delete mime;
        return false;
    }
    QGuiApplication::clipboard()->setMimeData(mime);
    return waitForOwner();
}

QList<NotificationServer::Notice> DesktopTest::noticesTitled(const QString &summary) const
{
    QList<NotificationServer::Notice> titled = m_notices->notices();
    titled.removeIf([&](const NotificationServer::Notice &notice) { return notice.summary != summary; });
    return titled;
}

QByteArray DesktopTest::smallPng()
{
    QImage image(9, 6, QImage::Format_ARGB32);
    image.fill(qRgba(20, 200, 40, 255));
    image.setPixel(4, 3, qRgba(0, 0, 255, 128));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

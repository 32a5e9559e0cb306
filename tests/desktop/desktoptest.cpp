#include "desktop/desktoptest.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QSignalSpy>
#include <QTest>

#include <xcb/xcb.h>

#include <csignal>

namespace {

constexpr int waitMs = 5000;

// The message pattern below puts type and category first, so a warning stands out in a failure report.
const QRegularExpression tickLine(QStringLiteral("^debug quillstash\\.tick: tick \\d{10,}$"));
const QRegularExpression captureLine(QStringLiteral("^debug quillstash\\.capture: captured (\\S+) types: (.*)$"));
const QRegularExpression rowLine(QStringLiteral("^debug quillstash\\.table: row (\\d+) of (\\d+) (icon .*)$"));

} // namespace

void DesktopTest::SetUp()
{
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb")) << "run desktop tests under xvfb-run";
    // Xvfb has no sound card, and ALSA would say so on stderr: its null device plays into nothing.
    QFile asoundrc(m_home.filePath(QStringLiteral(".asoundrc")));
    ASSERT_TRUE(asoundrc.open(QIODevice::WriteOnly) && asoundrc.write("pcm.!default { type null }\n") > 0);
    m_connection = qGuiApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    xcb_intern_atom_reply_t *atom = xcb_intern_atom_reply(m_connection, xcb_intern_atom(m_connection, 0, 9, "CLIPBOARD"), nullptr);
    m_clipboardAtom = atom->atom;
    free(atom);
    ASSERT_TRUE(clearClipboard());
    m_notices = std::make_unique<NotificationServer>();
    ASSERT_TRUE(m_notices->start()) << "run desktop tests under dbus-run-session, with no other notice server";
    ASSERT_TRUE(m_tray.start()) << "another tray owns org.kde.StatusNotifierWatcher on this bus";

    QObject::connect(&m_program, &QProcess::readyReadStandardError, [this] {
        m_program.setReadChannel(QProcess::StandardError);
        while (m_program.canReadLine()) {
            const QString line = QString::fromUtf8(m_program.readLine()).chopped(1);
            if (tickLine.match(line).hasMatch()) {
                ++m_output.ticks;
            } else if (const QRegularExpressionMatch capture = captureLine.match(line); capture.hasMatch()) {
                m_output.captureIndexes.append(capture.captured(1));
                m_output.captures.append(capture.captured(2).split(QStringLiteral(", ")));
            } else if (const QRegularExpressionMatch row = rowLine.match(line); row.hasMatch()) {
                m_output.rows.resize(row.captured(2).toInt());
                m_output.rows[row.captured(1).toInt()] = row.captured(3);
            } else {
                m_output.other.append(line);
            }
        }
    });
}

bool DesktopTest::startProgram()
{
    m_output = {};
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
    env.insert(QStringLiteral("QT_LOGGING_RULES"), QStringLiteral("quillstash.capture.debug=true;quillstash.tick.debug=true;quillstash.table.debug=true"));
    env.insert(QStringLiteral("QT_MESSAGE_PATTERN"), QStringLiteral("%{type} %{if-category}%{category}: %{endif}%{message}"));
    env.remove(QStringLiteral("QT_QPA_PLATFORM"));
    return env;
}

void DesktopTest::quitProgram(const QStringList &expectedLines, bool terminate)
{
    if (terminate)
        ::kill(pid_t(m_program.processId()), SIGTERM);
    EXPECT_TRUE(QTest::qWaitFor([this] { return m_program.state() == QProcess::NotRunning; }, 2 * waitMs))
        << "the program did not end within 10 s";
    EXPECT_TRUE(m_program.exitStatus() == QProcess::NormalExit && m_program.exitCode() == 0);
    EXPECT_EQ(m_output.other.join(u'\n').toStdString(), expectedLines.join(u'\n').toStdString()) << "output beyond ticks and captures";
}

bool DesktopTest::waitForMoreTicks(int n, int timeoutMs)
{
    const qsizetype count = m_output.ticks + n;
    return QTest::qWaitFor([&] { return m_output.ticks >= count; }, timeoutMs);
}

bool DesktopTest::waitForCaptures(int count)
{
    return QTest::qWaitFor([&] { return captures().size() >= count; }, twoTicksMs);
}

bool DesktopTest::copy(const QByteArray &data, const QString &target)
{
    const quint32 before = owner();
    // xclip serves from the background until another owner takes over.
    QProcess xclip;
    xclip.start("xclip", {"-selection", "clipboard", "-t", target.isEmpty() ? QStringLiteral("UTF8_STRING") : target});
    xclip.write(data);
    xclip.closeWriteChannel();
    return xclip.waitForFinished(waitMs) && QTest::qWaitFor([&] { return owner() != before; }, waitMs);
}

QByteArray DesktopTest::read(const QString &target)
{
    QProcess xclip;
    xclip.start("xclip", {"-selection", "clipboard", "-o", "-t", target});
    // QProcess drains the pipe from the event loop, so xclip never blocks on it.
    EXPECT_TRUE(QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, waitMs)
                && xclip.exitStatus() == QProcess::NormalExit && xclip.exitCode() == 0)
        << "the clipboard does not serve " << target.toStdString();
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

bool DesktopTest::ownClipboard(QMimeData *mime)
{
    const bool cleared = clearClipboard();
    QGuiApplication::clipboard()->setMimeData(mime);
    return cleared && QTest::qWaitFor([&] { return owner() != 0; }, waitMs);
}

QStringList DesktopTest::noticeBodies(const QString &summary, int count) const
{
    QStringList bodies;
    (void)QTest::qWaitFor([&] {
        bodies.clear();
        for (const NotificationServer::Notice &notice : m_notices->notices()) {
            if (notice.summary == summary)
                bodies.append(notice.body);
        }
        return bodies.size() >= count;
    }, twoTicksMs);
    return bodies;
}

std::optional<QString> DesktopTest::xdotool(const QStringList &arguments)
{
    QProcess process;
    process.start(QStringLiteral("xdotool"), arguments);
    if (!process.waitForFinished(waitMs) || process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return std::nullopt;
    return QString::fromLatin1(process.readAllStandardOutput()).trimmed();
}

QString DesktopTest::focusWindow(const QString &title)
{
    QString id;
    (void)QTest::qWaitFor([&] {
        return !(id = xdotool({"search", "--onlyvisible", "--name", title}).value_or(QString()).section(u'\n', 0, 0)).isEmpty();
    }, 3000);
    if (!id.isEmpty())
        xdotool({"windowfocus", "--sync", id});
    return id;
}

bool DesktopTest::quitAsks(const QString &title)
{
    return !focusWindow(title).isEmpty() && xdotool({"key", "ctrl+q"})
        && !focusWindow(QStringLiteral("^Warning$")).isEmpty();
}

QRect DesktopTest::windowGeometry(const QString &window)
{
    // X=, Y=, WIDTH=, HEIGHT= lines.
    QMap<QString, int> v;
    for (const QString &line : xdotool({"getwindowgeometry", "--shell", window}).value_or(QString()).split(u'\n'))
        v[line.section(u'=', 0, 0)] = line.section(u'=', 1).toInt();
    return {v["X"], v["Y"], v["WIDTH"], v["HEIGHT"]};
}

#include "desktop/desktoptest.h"

#include <QClipboard>
#include <QFile>
#include <QDBusConnectionInterface>
#include <QGuiApplication>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>

namespace {

const QString noticeService = QStringLiteral("org.freedesktop.Notifications");

// Xvfb machines have no sound card; ALSA's null device stands in for one, so
// that sounds play (into nothing) as on a desktop.
void giveNullSoundCard(const QString &home)
{
    QFile asoundrc(home + QStringLiteral("/.asoundrc"));
    if (asoundrc.exists() || !asoundrc.open(QIODevice::WriteOnly))
        return;
    asoundrc.write("pcm.!default { type null }\n");
}

} // namespace

void DesktopTest::SetUp()
{
    ASSERT_TRUE(m_home.isValid());
    ASSERT_EQ(QGuiApplication::platformName(), QStringLiteral("xcb"))
        << "desktop tests need a display (run them under xvfb-run)";
    ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "desktop tests need a session bus";
    giveNullSoundCard(home());
    // Objects built inside this process play their sounds under its own HOME.
    giveNullSoundCard(QString::fromLocal8Bit(qgetenv("HOME")));
    m_xclip = std::make_unique<Xclip>();
    ASSERT_TRUE(clearClipboard()) << "could not empty the clipboard";
    if (m_withNoticeServer) {
        m_notices = std::make_unique<NotificationServer>();
        ASSERT_TRUE(m_notices->start()) << "another notice server owns " << noticeService.toStdString();
    }
}

void DesktopTest::TearDown()
{
    for (const auto &program : m_programs)
        program->terminate();
    m_programs.clear();
    // Our own clipboard data must not become the next test's first entry.
    QGuiApplication::clipboard()->clear();
    m_xclip.reset();
    m_notices.reset();
}

QuillstashProcess &DesktopTest::startProgram()
{
    // Earlier runs of this test must be gone: the clipboard and the notice
    // server are shared.
    for (const auto &program : m_programs)
        EXPECT_FALSE(program->isRunning());
    m_programs.push_back(std::make_unique<QuillstashProcess>(home()));
    QuillstashProcess &program = *m_programs.back();
    EXPECT_TRUE(program.start()) << "could not start " << QUILLSTASH_BIN;
    return program;
}

void DesktopTest::quitProgram(QuillstashProcess &program, const QStringList &allowedLines)
{
    EXPECT_TRUE(program.terminate()) << "the program did not end within 10 s of SIGTERM";
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    const QStringList unexpected = program.unexpectedLines(allowedLines);
    EXPECT_TRUE(unexpected.isEmpty()) << "unexpected output:\n"
                                      << unexpected.join(u'\n').toStdString();
}

bool DesktopTest::clearClipboard()
{
    QSignalSpy seen(QGuiApplication::clipboard(), &QClipboard::changed);
    if (!m_xclip->clear())
        return false;
    return QTest::qWaitFor([&] { return !seen.isEmpty(); }, 5000);
}

bool DesktopTest::ownClipboard(QMimeData *mime)
{
    if (!clearClipboard()) {
        delete mime;
        return false;
    }
    QGuiApplication::clipboard()->setMimeData(mime);
    return m_xclip->waitForOwnerChange(0);
}

std::optional<NotificationServer::Notice> DesktopTest::waitForNotice(const QString &summary, int timeoutMs)
{
    std::optional<NotificationServer::Notice> found;
    [[maybe_unused]] const bool arrived = QTest::qWaitFor(
        [&] {
            const QList<NotificationServer::Notice> titled = noticesTitled(summary);
            if (!titled.isEmpty())
                found = titled.first();
            return found.has_value();
        },
        timeoutMs);
    return found;
}

QList<NotificationServer::Notice> DesktopTest::noticesTitled(const QString &summary) const
{
    QList<NotificationServer::Notice> titled;
    if (!m_notices)
        return titled;
    for (const NotificationServer::Notice &notice : m_notices->notices()) {
        if (notice.summary == summary)
            titled.append(notice);
    }
    return titled;
}

QString DesktopTest::category(const NotificationServer::Notice &notice)
{
    return notice.hints.value(QStringLiteral("category")).toString();
}

#include "platform/x11/x11pasteboard.h"

#include "support/scriptedowner.h"

#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QProcess>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace {

constexpr int settleMs = 3000;

// xclip -o blocks until the owner answers; when the owner is this program,
// that needs the event loop running meanwhile.
QByteArray readClipboard(const QString &target)
{
    QProcess xclip;
    xclip.start("xclip", {"-o", "-selection", "clipboard", "-t", target});
    EXPECT_TRUE(QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, settleMs)) << "xclip -o hung";
    return xclip.readAllStandardOutput();
}

bool waitForData(const X11Pasteboard &pasteboard, const QString &type, const QByteArray &data, int timeoutMs = settleMs)
{
    return QTest::qWaitFor([&] { return pasteboard.dataForType(type) == data; }, timeoutMs);
}

class X11PasteboardTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(QGuiApplication::platformName(), "xcb") << "run under xvfb-run"; }
    X11Pasteboard pasteboard;
};

// A copy is a new change whose bytes arrive unchanged, and an owner that goes away leaves an empty
// state. (Text and pictures are copied in the desktop tests, a large binary format below.)
TEST_F(X11PasteboardTest, CopiedFormatArrivesUnderItsTypeAndGoesWithItsOwner)
{
    const int before = pasteboard.changeCount();
    auto owner = std::make_unique<ScriptedOwner>(
        QList<ScriptedOwner::Format>{{"text/html", ScriptedOwner::Answer::Data, "<p>html</p>"}});
    ASSERT_TRUE(waitForData(pasteboard, "public.html", "<p>html</p>"));
    EXPECT_EQ(pasteboard.types(), QStringList{"public.html"});
    EXPECT_GT(pasteboard.changeCount(), before);
    // Qt stamps its own writes with the last server time it saw: it must
    // see this change too, or the next test's own write is refused.
    QSignalSpy qtSaw(QGuiApplication::clipboard(), &QClipboard::changed);
    owner.reset();
    ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.types().isEmpty() && !qtSaw.isEmpty(); }, settleMs));
}

// (Text and pictures are restored in the desktop tests.)
TEST_F(X11PasteboardTest, OwnStateIsOfferedByteForByteAndNotReadBack)
{
    const QByteArray binary("\0\1\2\xff", 4);
    const QStringList types{"public.html", "public.url", "com.example.binary", "quillstash.ignore"};
    int declared = pasteboard.declareTypes(types);
    EXPECT_EQ(pasteboard.changeCount(), declared);
    EXPECT_FALSE(pasteboard.setData("x", "public.rtf")) << "not declared";
    // QMimeData alone would rewrite the line end of the address.
    const QByteArray data[] = {"<i>own</i>", "https://example.com/own\n", binary, ""};
    for (int i = 0; i < types.size(); ++i)
        EXPECT_TRUE(pasteboard.setData(data[i], types[i]));
    EXPECT_EQ(pasteboard.types(), types);
    const std::pair<const char *, QByteArray> offered[] = {
        {"text/html", "<i>own</i>"}, {"text/uri-list", "https://example.com/own\n"}, {"com.example.binary", binary}};
    for (const auto &[format, bytes] : offered)
        EXPECT_EQ(readClipboard(format), bytes) << format;
    // One text format carries both text types.
    declared = pasteboard.declareTypes({"public.utf8-plain-text", "quillstash.ignore"});
    pasteboard.setData("own text", "public.utf8-plain-text");
    EXPECT_EQ(pasteboard.types(), (QStringList{"public.utf8-plain-text", "NSStringPboardType", "quillstash.ignore"}));
    EXPECT_EQ(pasteboard.dataForType("NSStringPboardType"), "own text");

    // Changes are read in order: had the reader taken the own state, it would have counted before the next copy.
    ScriptedOwner owner({{"UTF8_STRING", ScriptedOwner::Answer::Data, "copied after the own state"}});
    ASSERT_TRUE(waitForData(pasteboard, "public.utf8-plain-text", "copied after the own state"));
    EXPECT_EQ(pasteboard.changeCount(), declared + 1);
    EXPECT_FALSE(pasteboard.setData("late", "public.html")) << "the declared state is gone";
}

// Read on the worker: the GUI thread goes on running its event loop.
TEST_F(X11PasteboardTest, LargeDataArrivesWholeThroughIncrWithoutStallingTheGui)
{
    constexpr qsizetype size = 30 * 1024 * 1024;
    QByteArray data(size, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32 *>(data.data()), size / 4);
    QTemporaryFile file;
    ASSERT_TRUE(file.open() && file.write(data) == size && file.flush());
    QTimer heartbeat;
    QElapsedTimer sinceBeat;
    qint64 longestGapMs = 0;
    QObject::connect(&heartbeat, &QTimer::timeout, [&] { longestGapMs = std::max(longestGapMs, sinceBeat.restart()); });
    sinceBeat.start();
    heartbeat.start(5);
    QProcess xclip;
    xclip.start("xclip", {"-i", "-quiet", "-selection", "clipboard", "-t", "application/x-large", file.fileName()});
    ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.types().contains("application/x-large"); }, 20000));
    EXPECT_TRUE(pasteboard.dataForType("application/x-large") == data);
    EXPECT_LT(longestGapMs, 200);
    xclip.kill();
    xclip.waitForFinished();
}

} // namespace

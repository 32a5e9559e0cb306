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

class X11PasteboardTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(QGuiApplication::platformName(), "xcb") << "run under xvfb-run"; }
    X11Pasteboard pasteboard;
};

// The own state is offered byte for byte (text and pictures are restored in the desktop tests) and not read back;
// another program's copy replaces it, and leaves an empty state when that program goes.
TEST_F(X11PasteboardTest, OwnStateIsOfferedByteForByteAndAnotherOwnersStateGoesWithIt)
{
    const QByteArray binary("\0\1\2\xff", 4);
    const QStringList types{"public.html", "public.url", "com.example.binary", "quillstash.ignore"};
    const int declared = pasteboard.declareTypes(types);
    // QMimeData alone would rewrite the line end of the address.
    const QByteArray data[] = {"<i>own</i>", "https://example.com/own\n", binary, ""};
    for (int i = 0; i < types.size(); ++i)
        EXPECT_TRUE(pasteboard.setData(data[i], types[i]));
    EXPECT_EQ(pasteboard.types(), types);
    const std::pair<const char *, QByteArray> offered[] = {
        {"text/html", "<i>own</i>"}, {"text/uri-list", "https://example.com/own\n"}, {"com.example.binary", binary}};
    for (const auto &[format, bytes] : offered) {
        // xclip -o blocks until the owner, this program, answers: the event loop must run meanwhile.
        QProcess xclip;
        xclip.start("xclip", {"-o", "-selection", "clipboard", "-t", format});
        EXPECT_TRUE(QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, settleMs)) << format;
        EXPECT_EQ(xclip.readAllStandardOutput(), bytes) << format;
    }

    auto owner = std::make_unique<ScriptedOwner>(
        QList<ScriptedOwner::Format>{{"text/html", ScriptedOwner::Answer::Data, "<p>html</p>"}});
    ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.dataForType("public.html") == "<p>html</p>"; }, settleMs));
    EXPECT_EQ(pasteboard.changeCount(), declared + 1) << "the own state was read back";
    EXPECT_FALSE(pasteboard.setData("late", "public.html")) << "the declared state is gone";
    // Qt stamps its own writes with the last server time it saw: it must see this change too, or a later own
    // write is refused.
    QSignalSpy qtSaw(QGuiApplication::clipboard(), &QClipboard::changed);
    owner.reset();
    ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.types().isEmpty() && !qtSaw.isEmpty(); }, settleMs));
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

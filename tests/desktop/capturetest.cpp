#include "desktop/desktoptest.h"

#include <QBuffer>
#include <QClipboard>
#include <QDateTime>
#include <QDBusConnectionInterface>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QProcess>
#include <QTest>

#include <algorithm>
#include <iostream>

namespace {

const QStringList textTypes{QStringLiteral("public.utf8-plain-text"), QStringLiteral("NSStringPboardType")};

QByteArray smallPng()
{
    QImage image(7, 5, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    image.setPixel(3, 2, qRgb(250, 10, 10));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

qint64 longestGap(const QList<qint64> &stamps)
{
    qint64 longest = 0;
    for (qsizetype i = 1; i < stamps.size(); ++i)
        longest = std::max(longest, stamps[i] - stamps[i - 1]);
    return longest;
}

} // namespace

class CaptureTest : public DesktopTest
{
protected:
    // Copies text with xclip and waits for the entry; returns the time from
    // the owner change to the captured line, or -1 when none came in time.
    qint64 copyAndWaitForCapture(QuillstashProcess &program, const QByteArray &text, int timeoutMs)
    {
        const int before = int(program.captures().size());
        const qint64 copied = QDateTime::currentMSecsSinceEpoch();
        if (!m_xclip->copy(text))
            return -1;
        if (!program.waitForCaptureCount(before + 1, timeoutMs))
            return -1;
        return program.captures().at(before).receivedMs - copied;
    }
};

TEST_F(CaptureTest, copiedTextBecomesAnEntryWithinTwoTicksAndIsAnnounced)
{
    QuillstashProcess &program = startProgram();
    ASSERT_TRUE(program.waitForTickCount(1, startUpTimeoutMs)) << "no tick line";

    const auto recStart = waitForNotice(QStringLiteral("Quillstash"), tickMs);
    ASSERT_TRUE(recStart) << "the first tick announced no recording";
    EXPECT_EQ(recStart->appName, QStringLiteral("Quillstash"));
    EXPECT_EQ(recStart->body, QStringLiteral("Rec Start"));
    EXPECT_EQ(category(*recStart), QStringLiteral("RecStartPasteboardNotification"));
    EXPECT_NE(recStart->expireTimeout, 0) << "notices must expire";

    const QString text = QStringLiteral("Grüße vom Schreibtisch, copied by xclip");
    const qint64 latency = copyAndWaitForCapture(program, text.toUtf8(), 2 * tickMs + 200);
    ASSERT_GE(latency, 0) << "no entry within two ticks";
    std::cout << "copy to captured: " << latency << " ms" << std::endl;

    const QuillstashProcess::Capture capture = program.captures().first();
    EXPECT_EQ(capture.indexCount, QStringLiteral("0"));
    EXPECT_EQ(capture.types, textTypes);

    const auto added = waitForNotice(QStringLiteral("Add to Table"), tickMs);
    ASSERT_TRUE(added) << "no notice for the new entry";
    EXPECT_EQ(added->appName, QStringLiteral("Quillstash"));
    EXPECT_EQ(added->body, text);
    EXPECT_EQ(category(*added), QStringLiteral("AddPasteboardNotification"));

    // The same text copied again is a new state, so a new entry.
    ASSERT_TRUE(program.waitForMoreTicks(1, 2 * tickMs));
    ASSERT_GE(copyAndWaitForCapture(program, text.toUtf8(), 2 * tickMs + 200), 0)
        << "a second copy of the same text was not captured";
    EXPECT_EQ(program.captures().at(1).indexCount, QStringLiteral("1"));

    quitProgram(program);
}

TEST_F(CaptureTest, copiedPngBecomesAnImageEntryWithTiff)
{
    QuillstashProcess &program = startProgram();
    ASSERT_TRUE(program.waitForTickCount(1, startUpTimeoutMs));

    ASSERT_TRUE(m_xclip->copy(smallPng(), QStringLiteral("image/png")));
    ASSERT_TRUE(program.waitForCaptureCount(1, 2 * tickMs + 200)) << "no entry within two ticks";

    const QStringList types = program.captures().first().types;
    const std::string listed = types.join(QStringLiteral(", ")).toStdString();
    EXPECT_TRUE(types.contains(QStringLiteral("public.tiff"))) << listed;
    EXPECT_TRUE(types.contains(QStringLiteral("public.png"))) << listed;
    // Protocol targets and Qt's made-up image format are no pasteboard types.
    EXPECT_FALSE(types.contains(QStringLiteral("application/x-qt-image"))) << listed;
    EXPECT_FALSE(types.contains(QStringLiteral("TARGETS"))) << listed;

    const auto added = waitForNotice(QStringLiteral("Add to Table"), tickMs);
    ASSERT_TRUE(added);
    EXPECT_EQ(added->body, QStringLiteral("[ public.tiff ]"));
    EXPECT_EQ(added->body, QStringLiteral("[ ") + types.first() + QStringLiteral(" ]"));

    quitProgram(program);
}

// States a password manager marks as secret must leave no trace. The test
// process owns the clipboard for them (xclip offers only one target), so it
// has to keep its event loop running while the program reads.
TEST_F(CaptureTest, secretStatesAddNothingWhileOrdinaryOnesAreCaptured)
{
    struct State
    {
        const char *what;
        QList<std::pair<QString, QByteArray>> formats;
        bool captured;
    };
    const QList<State> states{
        {"password manager hint secret",
         {{QStringLiteral("text/plain"), "hunter2-hint"},
          {QStringLiteral("x-kde-passwordManagerHint"), "secret"}},
         false},
        {"concealed type",
         {{QStringLiteral("text/plain"), "hunter2-concealed"},
          {QStringLiteral("org.nspasteboard.ConcealedType"), QByteArray()}},
         false},
        {"hint that is not secret", {{QStringLiteral("text/plain"), "not a password"},
                                     {QStringLiteral("x-kde-passwordManagerHint"), "public"}},
         true},
        {"plain text from the same owner", {{QStringLiteral("text/plain"), "ordinary text"}}, true},
    };

    QuillstashProcess &program = startProgram();
    ASSERT_TRUE(program.waitForTickCount(1, startUpTimeoutMs));

    for (const State &state : states) {
        SCOPED_TRACE(state.what);
        const int capturesBefore = int(program.captures().size());
        const int addedBefore = int(noticesTitled(QStringLiteral("Add to Table")).size());
        auto *mime = new QMimeData;
        for (const auto &[format, data] : state.formats)
            mime->setData(format, data);
        ASSERT_TRUE(ownClipboard(mime));

        if (state.captured) {
            ASSERT_TRUE(program.waitForCaptureCount(capturesBefore + 1, 2 * tickMs + 200));
            EXPECT_EQ(program.captures().last().types.mid(0, 2), textTypes);
            ASSERT_TRUE(QTest::qWaitFor(
                [&] { return noticesTitled(QStringLiteral("Add to Table")).size() > addedBefore; }, tickMs));
            EXPECT_EQ(noticesTitled(QStringLiteral("Add to Table")).last().body,
                      QString::fromUtf8(state.formats.first().second));
            // Notices of one title less than a second apart are dropped on purpose.
            ASSERT_TRUE(program.waitForMoreTicks(1, 2 * tickMs));
        } else {
            ASSERT_TRUE(program.waitForMoreTicks(3, 4 * tickMs));
            EXPECT_EQ(program.captures().size(), capturesBefore);
            EXPECT_EQ(noticesTitled(QStringLiteral("Add to Table")).size(), addedBefore);
        }
    }

    // The program is still recording: an ordinary copy after the secrets counts.
    const int capturesBefore = int(program.captures().size());
    ASSERT_TRUE(m_xclip->copy("after the secrets"));
    ASSERT_TRUE(program.waitForCaptureCount(capturesBefore + 1, 2 * tickMs + 200));

    quitProgram(program);
}

// A clipboard owner that never answers (stopped with SIGSTOP) must neither
// freeze the tick nor delay the next copy.
TEST_F(CaptureTest, stoppedOwnerFreezesNeitherTheTickNorTheNextCopy)
{
    // Large enough that the stop lands while the program is still reading it
    // (an INCR transfer of some tens of ms).
    const QByteArray big(32 * 1024 * 1024, 'q');
    constexpr int watchMs = 8000;

    QuillstashProcess &program = startProgram();
    ASSERT_TRUE(program.waitForTickCount(1, startUpTimeoutMs));

    QProcess *hung = m_xclip->copyAndStop(big);
    ASSERT_TRUE(hung) << "xclip did not take the clipboard";
    const int ticksBefore = int(program.ticks().size());
    // Had the read finished before the stop, the entry would come at the next
    // tick; then this test would not be testing a hung owner.
    ASSERT_TRUE(program.waitForMoreTicks(2, 3 * tickMs));
    ASSERT_TRUE(program.captures().isEmpty())
        << "the program read the whole state before xclip was stopped; nothing hung";

    QTest::qWait(watchMs - 2 * tickMs);
    const QList<qint64> watched = program.ticks().mid(ticksBefore - 1);
    const qint64 gap = longestGap(watched);
    std::cout << "longest tick gap: " << gap << " ms (" << watched.size() << " ticks in "
              << watchMs / 1000 << " s with a stopped owner)" << std::endl;
    EXPECT_GE(watched.size(), watchMs / tickMs - 1);
    EXPECT_LT(gap, 1500);

    // A new copy is captured at once, while the stopped owner still hangs.
    const int capturesBefore = int(program.captures().size());
    QProcess *hungAgain = m_xclip->copyAndStop(big);
    ASSERT_TRUE(hungAgain);
    ASSERT_TRUE(program.waitForMoreTicks(1, 2 * tickMs));
    const qint64 copied = QDateTime::currentMSecsSinceEpoch();
    ASSERT_TRUE(m_xclip->copy("after the stopped owner"));
    ASSERT_TRUE(program.waitForCaptureCount(capturesBefore + 1, 2 * tickMs + 200))
        << "the copy after a stopped owner waited for that owner";
    std::cout << "copy after a stopped owner to captured: "
              << program.captures().last().receivedMs - copied << " ms" << std::endl;
    EXPECT_EQ(program.captures().last().types, textTypes);
    ASSERT_TRUE(QTest::qWaitFor(
        [&] {
            const auto added = noticesTitled(QStringLiteral("Add to Table"));
            return !added.isEmpty() && added.last().body == QStringLiteral("after the stopped owner");
        },
        tickMs))
        << "no notice for the copy after the stopped owner";

    Xclip::resume(hung);
    Xclip::resume(hungAgain);
    quitProgram(program);
}

class NoNoticeServerTest : public CaptureTest
{
protected:
    NoNoticeServerTest() { m_withNoticeServer = false; }
};

TEST_F(NoNoticeServerTest, saysSoOnceAndStillCaptures)
{
    const QString missing = QStringLiteral("Could not load Growl.framework");
    ASSERT_FALSE(QDBusConnection::sessionBus().interface()->isServiceRegistered(
                     QStringLiteral("org.freedesktop.Notifications")).value())
        << "a notice server runs on this bus";

    QuillstashProcess &program = startProgram();
    ASSERT_TRUE(program.waitForTickCount(1, startUpTimeoutMs));
    ASSERT_GE(copyAndWaitForCapture(program, "captured without notices", 2 * tickMs + 200), 0);
    EXPECT_EQ(program.captures().first().types, textTypes);
    ASSERT_TRUE(program.waitForMoreTicks(1, 2 * tickMs));

    quitProgram(program, {missing});
    const auto said = std::count_if(program.lines().cbegin(), program.lines().cend(),
                                    [&](const QuillstashProcess::Line &line) { return line.text == missing; });
    EXPECT_EQ(said, 1);
}

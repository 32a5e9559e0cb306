#include "platform/x11/x11pasteboard.h"

#include <QBuffer>
#include <QClipboard>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <QProcess>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTemporaryFile>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

#include <csignal>
#include <memory>

namespace {

const QString utf8Text = QStringLiteral("public.utf8-plain-text");
const QString nsString = QStringLiteral("NSStringPboardType");
const QString marker = QStringLiteral("quillstash.ignore");
constexpr int settleMs = 3000;

// Another program owning the clipboard: xclip in the foreground, so that it
// can be stopped and killed.
std::unique_ptr<QProcess> startOwner(const QString &target, const QByteArray &data)
{
    auto xclip = std::make_unique<QProcess>();
    QStringList arguments = {"-i", "-quiet", "-selection", "clipboard"};
    if (!target.isEmpty())
        arguments << "-t" << target;
    xclip->start("xclip", arguments);
    EXPECT_TRUE(xclip->waitForStarted());
    xclip->write(data);
    xclip->closeWriteChannel();
    return xclip;
}

void stopOwner(const std::unique_ptr<QProcess> &xclip)
{
    if (xclip && xclip->state() != QProcess::NotRunning) {
        xclip->kill();
        xclip->waitForFinished();
    }
}

// xclip -o blocks until the owner answers; when the owner is this program,
// that needs the event loop running meanwhile.
QByteArray readClipboard(const QString &target)
{
    QProcess xclip;
    xclip.start("xclip", {"-o", "-selection", "clipboard", "-t", target});
    EXPECT_TRUE(QTest::qWaitFor([&] { return xclip.state() == QProcess::NotRunning; }, settleMs)) << "xclip -o hung";
    return xclip.readAllStandardOutput();
}

// Measures how long the GUI thread went without running its event loop.
class Heartbeat
{
public:
    Heartbeat()
    {
        m_timer.setInterval(5);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            m_longestGapMs = std::max(m_longestGapMs, m_clock.restart());
        });
        m_clock.start();
        m_timer.start();
    }
    qint64 longestGapMs() const { return m_longestGapMs; }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_longestGapMs = 0;
};

QByteArray pngPicture()
{
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.fillRect(8, 8, 30, 20, Qt::darkGreen);
    painter.end();
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

class X11PasteboardTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(QGuiApplication::platformName(), "xcb") << "run under xvfb-run";
    }

    bool waitForData(X11Pasteboard &pasteboard, const QString &type, const QByteArray &data, int timeoutMs = settleMs)
    {
        return QTest::qWaitFor([&] { return pasteboard.dataForType(type) == data; }, timeoutMs);
    }

    X11Pasteboard pasteboard;
};

TEST_F(X11PasteboardTest, CopiedTextGivesBothTextTypesWithTheSameBytes)
{
    const QByteArray text = QStringLiteral("Grüße, %1\n").arg(QRandomGenerator::global()->generate()).toUtf8();
    const int before = pasteboard.changeCount();
    auto xclip = startOwner({}, text);
    auto guard = qScopeGuard([&] { stopOwner(xclip); });

    ASSERT_TRUE(waitForData(pasteboard, nsString, text));
    EXPECT_EQ(pasteboard.types(), QStringList({utf8Text, nsString}));
    EXPECT_EQ(pasteboard.dataForType(utf8Text), text);
    EXPECT_EQ(pasteboard.stringForType(nsString), QString::fromUtf8(text));
    EXPECT_GT(pasteboard.changeCount(), before);
}

TEST_F(X11PasteboardTest, CopiedPictureListsTiffFirstAndKeepsThePngBytes)
{
    const QByteArray png = pngPicture();
    auto xclip = startOwner("image/png", png);
    auto guard = qScopeGuard([&] { stopOwner(xclip); });

    ASSERT_TRUE(waitForData(pasteboard, "public.png", png));
    EXPECT_EQ(pasteboard.types(), QStringList({"public.tiff", "public.png"}));
    const QImage fromTiff = QImage::fromData(pasteboard.dataForType("public.tiff"), "TIFF");
    EXPECT_EQ(fromTiff.convertToFormat(QImage::Format_RGB32), QImage::fromData(png).convertToFormat(QImage::Format_RGB32));
}

class CopiedFormat : public X11PasteboardTest, public ::testing::WithParamInterface<std::pair<const char *, const char *>>
{
};

TEST_P(CopiedFormat, ArrivesUnderItsType)
{
    const auto [target, type] = GetParam();
    const QByteArray data = "payload of " + QByteArray(target) + QByteArray::number(QRandomGenerator::global()->generate());
    auto xclip = startOwner(target, data);
    auto guard = qScopeGuard([&] { stopOwner(xclip); });

    ASSERT_TRUE(waitForData(pasteboard, type, data));
    EXPECT_EQ(pasteboard.types(), QStringList(type));
}

INSTANTIATE_TEST_SUITE_P(Table, CopiedFormat,
                         ::testing::Values(std::pair{"text/html", "public.html"}, std::pair{"text/rtf", "public.rtf"},
                                           std::pair{"application/x-quillstash-test", "application/x-quillstash-test"},
                                           std::pair{"text/uri-list", "public.url"}));

TEST_F(X11PasteboardTest, OwnStateIsOfferedByteForByteAndNotReadBack)
{
    const QByteArray text = "own text \xe2\x9c\x93";
    const QList<std::pair<QString, QByteArray>> items = {
        {utf8Text, text},
        {nsString, text},
        {"public.html", "<i>own</i>"},
        {"public.url", "https://example.com/own\n"}, // QMimeData alone would rewrite the line end
        {"com.example.binary", QByteArray("\0\1\2\xff", 4)},
    };
    QStringList types;
    for (const auto &item : items)
        types.append(item.first);
    types.append(marker);

    const int before = pasteboard.changeCount();
    const int declared = pasteboard.declareTypes(types);
    EXPECT_EQ(declared, before + 1);
    EXPECT_EQ(pasteboard.changeCount(), declared);
    EXPECT_TRUE(pasteboard.dataForType(utf8Text).isNull());
    EXPECT_FALSE(pasteboard.setData("x", "public.rtf"));
    for (const auto &[type, data] : items)
        EXPECT_TRUE(pasteboard.setData(data, type));
    EXPECT_EQ(pasteboard.types(), types);
    EXPECT_EQ(pasteboard.stringForType(utf8Text), QString::fromUtf8(text));

    const QList<QByteArray> offered = readClipboard("TARGETS").split('\n');
    for (const char *format : {"text/plain", "UTF8_STRING", "text/html", "text/uri-list", "com.example.binary", "quillstash.ignore"})
        EXPECT_TRUE(offered.contains(format)) << format;
    EXPECT_EQ(readClipboard("UTF8_STRING"), text);
    EXPECT_EQ(readClipboard("text/plain"), text);
    EXPECT_EQ(readClipboard("text/html"), "<i>own</i>");
    EXPECT_EQ(readClipboard("text/uri-list"), "https://example.com/own\n");
    EXPECT_EQ(readClipboard("com.example.binary"), QByteArray("\0\1\2\xff", 4));
    EXPECT_EQ(readClipboard(marker), "");

    // Changes are read in order: had the reader taken the own state, it would
    // have counted before the next copy.
    const QByteArray next = "copied after the own state";
    auto xclip = startOwner({}, next);
    auto guard = qScopeGuard([&] { stopOwner(xclip); });
    ASSERT_TRUE(waitForData(pasteboard, utf8Text, next));
    EXPECT_EQ(pasteboard.changeCount(), declared + 1);
    EXPECT_FALSE(pasteboard.setData("late", utf8Text)) << "the declared state is gone";
}

// Reducing the clipboard to plain text writes no marker; it must still count
// once, while a copy made inside the program (a text field) is read as usual.
TEST_F(X11PasteboardTest, UnmarkedOwnStateCountsOnceAndAnInAppCopyIsRead)
{
    const QByteArray text = "plain own text";
    const int declared = pasteboard.declareTypes({utf8Text});
    ASSERT_TRUE(pasteboard.setData(text, utf8Text));
    EXPECT_EQ(readClipboard("UTF8_STRING"), text);
    QTest::qWait(200); // time for the reader to see the own state, were it to read it

    const QString inApp = QStringLiteral("copied in a text field");
    QGuiApplication::clipboard()->setText(inApp);
    ASSERT_TRUE(waitForData(pasteboard, nsString, inApp.toUtf8()));
    EXPECT_EQ(pasteboard.changeCount(), declared + 1);
    EXPECT_EQ(pasteboard.types(), QStringList({utf8Text, nsString}));
}

TEST_F(X11PasteboardTest, LargeDataArrivesWholeThroughIncr)
{
    constexpr qsizetype size = 30 * 1024 * 1024;
    QByteArray data(size, Qt::Uninitialized);
    QRandomGenerator(7).fillRange(reinterpret_cast<quint32 *>(data.data()), size / 4);
    QTemporaryFile file;
    ASSERT_TRUE(file.open());
    file.write(data);
    file.close();

    Heartbeat heartbeat;
    QElapsedTimer clock;
    clock.start();
    auto xclip = std::make_unique<QProcess>();
    xclip->start("xclip", {"-i", "-quiet", "-selection", "clipboard", "-t", "application/x-large", file.fileName()});
    auto guard = qScopeGuard([&] { stopOwner(xclip); });

    ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.types().contains("application/x-large"); }, 20000));
    const qint64 transferMs = clock.elapsed();
    EXPECT_TRUE(pasteboard.dataForType("application/x-large") == data);
    EXPECT_LT(heartbeat.longestGapMs(), 200);
    std::printf("[ info     ] 30 MiB through INCR: %lld ms from xclip start, longest GUI gap %lld ms\n",
                transferMs, heartbeat.longestGapMs());
}

// A stopped owner never answers: the pasteboard made while it owns the
// clipboard waits for it on the worker, not on the GUI thread.
class HungOwner : public X11PasteboardTest
{
protected:
    void SetUp() override
    {
        X11PasteboardTest::SetUp();
        hung = startOwner({}, hungText);
        ASSERT_TRUE(waitForData(pasteboard, utf8Text, hungText));
        ASSERT_EQ(::kill(pid_t(hung->processId()), SIGSTOP), 0);
    }
    void TearDown() override { stopOwner(hung); }

    const QByteArray hungText = "owner about to hang " + QByteArray::number(QRandomGenerator::global()->generate());
    std::unique_ptr<QProcess> hung;
};

TEST_F(HungOwner, DoesNotBlockTheGuiAndANewCopyIsSeenAtOnce)
{
    Heartbeat heartbeat;
    X11Pasteboard reading;
    QTest::qWait(1000);
    EXPECT_EQ(reading.changeCount(), 0);

    const QByteArray next = "copied while the owner hangs";
    QElapsedTimer clock;
    clock.start();
    auto xclip = startOwner({}, next);
    auto guard = qScopeGuard([&] { stopOwner(xclip); });
    ASSERT_TRUE(waitForData(reading, nsString, next));
    const qint64 seenMs = clock.elapsed();
    EXPECT_LT(seenMs, 1500) << "the hung conversion was not abandoned";
    EXPECT_EQ(reading.changeCount(), 1) << "the hung owner's state must not be published";
    EXPECT_LT(heartbeat.longestGapMs(), 200);
    std::printf("[ info     ] hung owner: longest GUI gap %lld ms, next copy seen after %lld ms\n",
                heartbeat.longestGapMs(), seenMs);
}

TEST_F(HungOwner, IsGivenUpAfterFiveSecondsWithAnEmptyState)
{
    QElapsedTimer clock;
    clock.start();
    X11Pasteboard reading;
    ASSERT_TRUE(QTest::qWaitFor([&] { return reading.changeCount() == 1; }, 8000));
    EXPECT_GE(clock.elapsed(), 4900);
    EXPECT_TRUE(reading.types().isEmpty());
}

TEST_F(X11PasteboardTest, OwnerGoneGivesAnEmptyState)
{
    const QByteArray text = "short-lived owner";
    auto xclip = startOwner({}, text);
    auto guard = qScopeGuard([&] { stopOwner(xclip); });
    ASSERT_TRUE(waitForData(pasteboard, utf8Text, text));
    const int before = pasteboard.changeCount();

    stopOwner(xclip);
    ASSERT_TRUE(QTest::qWaitFor([&] { return pasteboard.changeCount() > before; }, settleMs));
    EXPECT_TRUE(pasteboard.types().isEmpty());
    EXPECT_TRUE(pasteboard.dataForType(utf8Text).isNull());
}

} // namespace

#include "desktop/desktoptest.h"

#include <QMimeData>
#include <QTest>

namespace {

const QString added = QStringLiteral("Add to Table");
const QStringList textTypes{QStringLiteral("public.utf8-plain-text"), QStringLiteral("NSStringPboardType")};

} // namespace

using CaptureTest = DesktopTest;

TEST_F(CaptureTest, copiedTextBecomesAnEntryWithinTwoTicksAndIsAnnounced)
{
    ASSERT_TRUE(startProgram());
    const QString text = QStringLiteral("Grüße vom Schreibtisch, copied by xclip");
    ASSERT_TRUE(copy(text.toUtf8()));
    ASSERT_TRUE(waitForCaptures(1)) << "no entry within two ticks";
    EXPECT_EQ(captures().first(), textTypes);
    ASSERT_TRUE(QTest::qWaitFor([&] { return !noticesTitled(added).isEmpty(); }, tickMs)) << "not announced";
    EXPECT_EQ(noticesTitled(added).first().body, text);
    quitProgram();
}

TEST_F(CaptureTest, copiedPngBecomesAnEntryWithTiff)
{
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy(smallPng(), QStringLiteral("image/png")));
    ASSERT_TRUE(waitForCaptures(1)) << "no entry within two ticks";
    const QStringList types = captures().first();
    const std::string listed = types.join(QStringLiteral(", ")).toStdString();
    EXPECT_TRUE(types.contains(QStringLiteral("public.tiff"))) << listed;
    EXPECT_TRUE(types.contains(QStringLiteral("public.png"))) << listed;
    // Protocol targets and Qt's made-up image format are no pasteboard types.
    EXPECT_FALSE(types.contains(QStringLiteral("application/x-qt-image"))) << listed;
    EXPECT_FALSE(types.contains(QStringLiteral("TARGETS"))) << listed;
    quitProgram();
}

// States a password manager marks as secret leave no trace. This process owns
// the clipboard for them, since xclip offers only one target.
TEST_F(CaptureTest, secretStatesAddNothing)
{
    const struct
    {
        const char *what;
        QString marker;
        QByteArray value;
        bool captured;
    } states[]{
        {"secret hint", QStringLiteral("x-kde-passwordManagerHint"), "secret", false},
        {"concealed type", QStringLiteral("org.nspasteboard.ConcealedType"), "", false},
        // Last, so that it shows the program still records after the secrets.
        {"hint that is not secret", QStringLiteral("x-kde-passwordManagerHint"), "public", true},
    };

    ASSERT_TRUE(startProgram());
    for (const auto &state : states) {
        SCOPED_TRACE(state.what);
        auto *mime = new QMimeData;
        mime->setData(QStringLiteral("text/plain"), QByteArray("hunter2 with a ") + state.what);
        mime->setData(state.marker, state.value);
        ASSERT_TRUE(ownClipboard(mime));
        if (state.captured) {
            ASSERT_TRUE(waitForCaptures(1));
            EXPECT_EQ(captures().first().mid(0, 2), textTypes);
        } else {
            ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs));
            EXPECT_TRUE(captures().isEmpty());
            EXPECT_TRUE(noticesTitled(added).isEmpty());
        }
    }
    quitProgram();
}

TEST_F(CaptureTest, withoutNoticeServerSaysSoOnceAndStillCaptures)
{
    const QString missing = QStringLiteral("Could not load Growl.framework");
    m_notices.reset();
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("captured without notices"));
    ASSERT_TRUE(waitForCaptures(1));
    ASSERT_TRUE(waitForMoreTicks(1, twoTicksMs));
    quitProgram({missing});
    EXPECT_EQ(otherLines().count(missing), 1) << otherLines().join(u'\n').toStdString();
}

#include "desktop/desktoptest.h"

#include "support/scriptedowner.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QSettings>
#include <QTest>

using CaptureTest = DesktopTest;
using Answer = ScriptedOwner::Answer;

// This process owns the clipboard for the secret states, as xclip offers only one target. An owner that answers its
// text and hangs on its other formats gets one allowance of silence (5 s) for them all: it is captured with its text
// once that is spent, and the next copy is captured at the next tick. The login item is written. The second start has
// recording off and no notice server: nothing is recorded, the program says once it has no notices, and, having
// nothing unsaved, it quits without asking.
TEST_F(CaptureTest, secretsHungOwnersAndCopiesWhileOffAreHandledAndTheLoginItemIsWritten)
{
    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    settings.setValue("autolaunch", true);
    settings.sync();
    const struct { const char *text; QString marker; QByteArray value; } states[]{
        {"secret hint", QStringLiteral("x-kde-passwordManagerHint"), "secret"},
        {"concealed type", QStringLiteral("org.nspasteboard.ConcealedType"), ""},
        {"hint that is not secret", QStringLiteral("x-kde-passwordManagerHint"), "public"},
    };
    ASSERT_TRUE(startProgram());
    for (const auto &state : states) {
        auto *mime = new QMimeData;
        mime->setData(QStringLiteral("text/plain"), state.text);
        mime->setData(state.marker, state.value);
        ASSERT_TRUE(ownClipboard(mime)) << state.text;
        ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs)) << state.text;
    }
    EXPECT_EQ(captures().size(), 1) << "a secret state was recorded";

    const QStringList textTypes{QStringLiteral("public.utf8-plain-text"), QStringLiteral("NSStringPboardType")};
    {
        ScriptedOwner partlyHung({{"UTF8_STRING", Answer::Data, "answered before the silence"}, {"text/html", Answer::Silent},
                                  {"text/rtf", Answer::Silent}, {"application/x-silent", Answer::Silent}});
        ASSERT_TRUE(partlyHung.isOwner());
        ASSERT_TRUE(QTest::qWaitFor([&] { return captures().size() == 2; }, 5000 + twoTicksMs))
            << "not captured one time-out and a tick after the copy";
        EXPECT_EQ(captures().last(), textTypes);
        EXPECT_EQ(noticeBodies(QStringLiteral("Add to Table"), 2).last(), QStringLiteral("answered before the silence"));
    }
    ScriptedOwner hung({{"UTF8_STRING", Answer::Silent}, {"text/html", Answer::Silent}});
    ASSERT_TRUE(hung.isOwner());
    ASSERT_TRUE(waitForMoreTicks(2, twoTicksMs));
    ASSERT_TRUE(copy("copied after the hung owner"));
    ASSERT_TRUE(waitForCaptures(3)) << "the copy waited for the hung owner";
    EXPECT_EQ(captures().last(), textTypes);
    quitProgram();
    QFile file(m_home.filePath(QStringLiteral(".config/autostart/quillstash.desktop")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "no autostart entry at " << file.fileName().toStdString();
    EXPECT_TRUE(QString::fromUtf8(file.readAll()).contains(QStringLiteral("\nExec=") + QFileInfo(QStringLiteral(QUILLSTASH_BIN)).canonicalFilePath() + u'\n'))
        << "it does not start " << QUILLSTASH_BIN;

    settings.setValue("recatstartup", false);
    settings.sync();
    m_notices.reset();
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("copied while not recording"));
    ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs));
    EXPECT_TRUE(captures().isEmpty());
    EXPECT_FALSE(quitAsks());
    quitProgram({QStringLiteral("Could not load Growl.framework")}, false);
}

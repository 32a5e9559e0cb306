#include "desktop/desktoptest.h"

#include "support/scriptedowner.h"

#include <QDir>
#include <QMimeData>
#include <QSettings>
#include <QTest>

using ApplicationTest = DesktopTest;
using Answer = ScriptedOwner::Answer;

// Secret states are not recorded; an owner that hangs on all but its text is captured with it after one time-out for
// them all, and holds up no later copy. OK in the preferences stores the defaults shown but for a limit lowered to 10,
// which trims at the next tick, and phrase 1, whose key works at once; the tick waits while they are open. The quit
// alert's "Cancel" keeps the program and its keys. A second launch naming a file makes the program save its dirty
// history there and load it, numbered from 0; "Save" then writes into it and quits, and the settings reach their file.
TEST_F(ApplicationTest, secretsHungOwnersPreferencesCancelASecondLaunchHandingAFileOverAndSave)
{
    const struct { const char *text; QString marker; QByteArray value; } states[]{
        {"secret hint", QStringLiteral("x-kde-passwordManagerHint"), "secret"},
        {"concealed type", QStringLiteral("org.nspasteboard.ConcealedType"), ""},
        {"hint that is not secret", QStringLiteral("x-kde-passwordManagerHint"), "public"},
    };
    ASSERT_TRUE(startProgram());
    for (const auto &state : states) { // xclip offers only one target: this process owns the clipboard
        auto *mime = new QMimeData;
        mime->setData(QStringLiteral("text/plain"), state.text);
        mime->setData(state.marker, state.value);
        ASSERT_TRUE(ownClipboard(mime)) << state.text;
        ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs)) << state.text;
    }
    EXPECT_EQ(captures().size(), 1) << "a secret state was recorded";
    {
        ScriptedOwner partlyHung({{"UTF8_STRING", Answer::Data, "answered before the silence"}, {"text/html", Answer::Silent},
                                  {"text/rtf", Answer::Silent}, {"application/x-silent", Answer::Silent}});
        ASSERT_TRUE(partlyHung.isOwner());
        ASSERT_TRUE(QTest::qWaitFor([&] { return captures().size() == 2; }, 5000 + twoTicksMs))
            << "not captured one time-out and a tick after the copy";
        EXPECT_EQ(captures().last(), (QStringList{"public.utf8-plain-text", "NSStringPboardType"}));
        EXPECT_EQ(noticeBodies(QStringLiteral("Add to Table"), 2).last(), QStringLiteral("answered before the silence"));
        ScriptedOwner hung({{"UTF8_STRING", Answer::Silent}, {"text/html", Answer::Silent}});
        ASSERT_TRUE(hung.isOwner());
        ASSERT_TRUE(waitForMoreTicks(2, twoTicksMs));
        ASSERT_TRUE(copy("copied after the hung owner"));
        ASSERT_TRUE(waitForCaptures(3)) << "the copy waited for the hung owner";
    }

    for (int i = 4; i <= 11; ++i) {
        ASSERT_TRUE(copy(QByteArray::number(i)));
        ASSERT_TRUE(waitForCaptures(i));
    }
    ASSERT_FALSE(focusWindow(QStringLiteral("^Untitled")).isEmpty());
    key("ctrl+comma");
    ASSERT_FALSE(focusWindow(QStringLiteral("^Preferences$")).isEmpty());
    key("alt+l Home alt+p"); // the limit to its least, then the phrase's title
    ASSERT_TRUE(xdotool({"type", "--delay", "20", "Signature\tKind regards"}));
    ASSERT_TRUE(copy("while the window is open"));
    EXPECT_FALSE(waitForMoreTicks(1, twoTicksMs)) << "the tick ran under the window";
    EXPECT_EQ(captures().size(), 11);
    key("alt+l Return"); // OK, the default button
    ASSERT_TRUE(waitForCaptures(12));
    EXPECT_TRUE(QTest::qWaitFor([&] { return paintedRows().size() == 10; }, twoTicksMs)) << paintedRows().size() << " rows";
    key("ctrl+alt+shift+1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return clipboardText() == "Kind regards"; }, 3000));

    ASSERT_TRUE(quitAsks());
    key("Escape");
    ASSERT_TRUE(waitForMoreTicks(1, twoTicksMs)) << "Cancel ended the program";
    key("ctrl+alt+1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return clipboardText() == "11"; }, 3000));

    // Launched as a file manager would, with a relative name the running program must make absolute, a second
    // instance ends silently within 2 s.
    const auto launchAgain = [this](const QStringList &arguments) {
        QProcess again;
        again.setProcessEnvironment(programEnvironment());
        again.setWorkingDirectory(m_home.path());
        again.setProcessChannelMode(QProcess::MergedChannels);
        again.start(QStringLiteral(QUILLSTASH_BIN), arguments);
        EXPECT_TRUE(again.waitForFinished(2000) && again.exitStatus() == QProcess::NormalExit && again.exitCode() == 0);
        EXPECT_EQ(again.readAll().toStdString(), "");
    };
    QFile file(m_home.filePath(QStringLiteral("my history.qs_backup")));
    launchAgain({QStringLiteral("my history.qs_backup")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return file.exists(); }, 5000)) << "the history was not saved";
    launchAgain({});
    ASSERT_TRUE(copy("after the load"));
    ASSERT_TRUE(waitForCaptures(13));
    EXPECT_EQ(captureIndexes().last(), QStringLiteral("10")) << "the handed file was not loaded";
    ASSERT_TRUE(waitForMoreTicks(1, twoTicksMs));
    ASSERT_TRUE(quitAsks(QStringLiteral("^my history")));
    key("Return");
    quitProgram({}, false);
    EXPECT_EQ(QDir(m_home.path()).entryList({"*.qs_backup"}, QDir::Files), QStringList{file.fileName().section(u'/', -1)});
    EXPECT_TRUE(file.open(QIODevice::ReadOnly) && file.readAll().contains("after the load"));

    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    QStringList stored;
    for (const char *key : {"autosave", "autoremove", "limitnumber", "soundenable", "autolaunch", "iconbounce",
                            "autorec", "recatstartup", "phrase_title1", "phrase_content1"})
        stored << QString::fromLatin1(key) + u'=' + settings.value(QLatin1String(key)).toString();
    EXPECT_EQ(stored.join(u' '), QStringLiteral("autosave=false autoremove=true limitnumber=10 soundenable=true "
                                                "autolaunch=false iconbounce=true autorec=true recatstartup=true "
                                                "phrase_title1=Signature phrase_content1=Kind regards"));
}

#include "desktop/desktoptest.h"

#include <QDir>
#include <QSettings>
#include <QTest>

using ApplicationTest = DesktopTest;

// OK in the preferences of a fresh user stores what the window showed: the defaults, but for a limit lowered to 10,
// which trims the history at the next tick, and phrase 1, whose key works at once. The tick waits while the window is
// open. At quit the alert's "Cancel" (Escape) leaves the program running with its keys; "Save" (the default button)
// saves through its panel, there being no file yet, and quits; the settings reach the settings file.
TEST_F(ApplicationTest, preferencesStoreTrimAndRebuildThePhraseKeysAndTheQuitAlertCancelsAndSaves)
{
    ASSERT_TRUE(startProgram());
    for (int i = 1; i <= 11; ++i) {
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
    ASSERT_TRUE(quitAsks());
    key("Return");
    ASSERT_FALSE(focusWindow(QStringLiteral("^Save")).isEmpty()) << "no save panel";
    ASSERT_TRUE(xdotool({"type", "--delay", "20", m_home.filePath(QStringLiteral("kept.qs_backup"))}));
    key("Return");
    quitProgram({}, false);
    ASSERT_EQ(QDir(m_home.path()).entryList({"*.qs_backup"}, QDir::Files), QStringList{"kept.qs_backup"});
    QFile file(m_home.filePath(QStringLiteral("kept.qs_backup")));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly) && file.readAll().contains("while the window is open"));

    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    QStringList stored;
    for (const char *key : {"autosave", "autoremove", "limitnumber", "soundenable", "autolaunch", "iconbounce",
                            "autorec", "recatstartup", "phrase_title1", "phrase_content1"})
        stored << QString::fromLatin1(key) + u'=' + settings.value(QLatin1String(key)).toString();
    EXPECT_EQ(stored.join(u' '), QStringLiteral("autosave=false autoremove=true limitnumber=10 soundenable=true "
                                                "autolaunch=false iconbounce=true autorec=true recatstartup=true "
                                                "phrase_title1=Signature phrase_content1=Kind regards"));
}

#include "desktop/desktoptest.h"

#include <QDir>
#include <QSettings>
#include <QTest>

class ApplicationTest : public DesktopTest
{
protected:
    void key(const QString &keys) { ASSERT_TRUE(xdotool(QStringList{"key", "--delay", "50"} + keys.split(u' '))) << keys.toStdString(); }
    // A window of that title once it shows, focused; empty when none comes within 3 s.
    static QString focusWindow(const QString &title)
    {
        QString id;
        QTest::qWaitFor([&] { return !(id = xdotool({"search", "--onlyvisible", "--name", title}).value_or(QString())).isEmpty(); }, 3000);
        id = id.section(u'\n', 0, 0);
        if (!id.isEmpty())
            xdotool({"windowfocus", "--sync", id});
        return id;
    }
    // Ctrl+Q in the main window; true when the "Warning" alert came and has the keyboard.
    bool quitAsks()
    {
        if (focusWindow(QStringLiteral("^Untitled")).isEmpty() || !xdotool({"key", "ctrl+q"}))
            return false;
        return !focusWindow(QStringLiteral("^Warning$")).isEmpty();
    }
    bool running() { return waitForMoreTicks(1, twoTicksMs); }
    QStringList backupFiles() const { return QDir(m_home.path()).entryList({"*.qs_backup"}, QDir::Files); }
    // Two captures, and the tick that marks the history changed.
    void captureTwo()
    {
        for (const char *text : {"first", "second"}) {
            ASSERT_TRUE(copy(text));
            ASSERT_TRUE(waitForCaptures(int(captures().size()) + 1));
        }
        ASSERT_TRUE(running());
    }
};

// A clean program quits at once; after captures the alert asks, "Cancel" (Escape) leaves the program running with its
// keys, and "Quit" ends it without a file.
TEST_F(ApplicationTest, cleanQuitsAtOnceCancelKeepsTheKeysAndQuitDiscards)
{
    ASSERT_TRUE(startProgram());
    EXPECT_FALSE(quitAsks());
    quitProgram({}, false);

    ASSERT_TRUE(startProgram());
    captureTwo();
    ASSERT_TRUE(quitAsks());
    key("Escape");
    ASSERT_TRUE(running()) << "Cancel ended the program";
    key("ctrl+alt+1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return read(QStringLiteral("UTF8_STRING")) == "first"; }, 3000));
    ASSERT_TRUE(quitAsks());
    key("Tab space"); // "Quit", after "Save" in the focus order
    quitProgram({}, false);
    EXPECT_EQ(backupFiles(), QStringList());
}

// "Save" (the default button) saves through its panel, there being no file yet, and then quits.
TEST_F(ApplicationTest, saveWritesTheHistoryThroughThePanelAndQuits)
{
    ASSERT_TRUE(startProgram());
    captureTwo();
    ASSERT_TRUE(quitAsks());
    key("Return");
    ASSERT_FALSE(focusWindow(QStringLiteral("^Save")).isEmpty()) << "no save panel";
    ASSERT_TRUE(xdotool({"type", "--delay", "20", m_home.filePath(QStringLiteral("kept.qs_backup"))}));
    key("Return");
    quitProgram({}, false);
    ASSERT_EQ(backupFiles(), QStringList{"kept.qs_backup"});
    QFile file(m_home.filePath(QStringLiteral("kept.qs_backup")));
    EXPECT_TRUE(file.open(QIODevice::ReadOnly) && file.readAll().contains("second"));
}

// OK in the preferences of a fresh user stores what the window showed: the defaults, but for a limit lowered to 10,
// which trims the history at the next tick, and phrase 1, whose key works at once. The tick waits while the window is
// open. The settings reach the settings file at quit.
TEST_F(ApplicationTest, preferencesOkStoresTheDefaultsShownTrimsTheHistoryAndRebuildsThePhraseKeys)
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
    EXPECT_FALSE(running()) << "the tick ran under the window";
    EXPECT_EQ(captures().size(), 11);
    key("alt+l Return"); // OK, the default button
    ASSERT_TRUE(waitForCaptures(12));
    EXPECT_TRUE(QTest::qWaitFor([&] { return tableRows() == 10; }, twoTicksMs)) << tableRows() << " rows";
    key("ctrl+alt+shift+1");
    EXPECT_TRUE(QTest::qWaitFor([&] { return read(QStringLiteral("UTF8_STRING")) == "Kind regards"; }, 3000));
    quitProgram();

    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    QStringList stored;
    for (const char *key : {"autosave", "autoremove", "limitnumber", "soundenable", "autolaunch", "iconbounce",
                            "autorec", "recatstartup", "phrase_title1", "phrase_content1"})
        stored << QString::fromLatin1(key) + u'=' + settings.value(QLatin1String(key)).toString();
    EXPECT_EQ(stored.join(u' '), QStringLiteral("autosave=false autoremove=true limitnumber=10 soundenable=true "
                                                "autolaunch=false iconbounce=true autorec=true recatstartup=true "
                                                "phrase_title1=Signature phrase_content1=Kind regards"));
}

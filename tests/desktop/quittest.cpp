#include "desktop/desktoptest.h"

#include <QDir>
#include <QTest>

class QuitTest : public DesktopTest
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
TEST_F(QuitTest, cleanQuitsAtOnceCancelKeepsTheKeysAndQuitDiscards)
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
TEST_F(QuitTest, saveWritesTheHistoryThroughThePanelAndQuits)
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

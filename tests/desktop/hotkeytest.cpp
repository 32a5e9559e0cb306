#include "desktop/desktoptest.h"
#include "platform/x11/xcbhotkeys.h"

#include <QDate>
#include <QMimeData>
#include <QProcess>
#include <QScopeGuard>
#include <QSettings>
#include <QTest>

class HotKeyTest : public DesktopTest
{
protected:
    void key(const QString &keys) { ASSERT_TRUE(xdotool({"key", "--delay", "50", keys})) << keys.toStdString(); }
    // The bodies of the notices of that title once there are count of them.
    QStringList notices(const QString &title, int count)
    {
        (void)QTest::qWaitFor([&] { return noticeBodies(title).size() >= count; }, twoTicksMs);
        return noticeBodies(title);
    }
    static QString clipboardText() { return QString::fromUtf8(read(QStringLiteral("UTF8_STRING"))); }
};

// Ctrl+Alt+digit puts back the digit-th newest row shown, within a search; out of range, or with one row
// shown, nothing changes. Ctrl+Alt+G hides the window, Ctrl+Alt+F shows it, Ctrl+Alt+C tells the clipboard's text.
TEST_F(HotKeyTest, digitsRestoreTheRowsShownCountedFromTheNewestAndFAndGShowAndHide)
{
    ASSERT_TRUE(startProgram());
    const auto window = [] { return xdotool({"search", "--onlyvisible", "--name", "^Untitled"}).value_or(QString()); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window().isEmpty(); }, 5000));
    for (const char *text : {"one", "two", "three", "four", "five"}) {
        ASSERT_TRUE(copy(text));
        ASSERT_TRUE(waitForCaptures(int(captures().size()) + 1)) << text;
    }
    key("ctrl+alt+g");
    EXPECT_TRUE(QTest::qWaitFor([&] { return window().isEmpty(); }, 5000)) << "Ctrl+Alt+G left the window shown";
    key("ctrl+alt+f");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !window().isEmpty(); }, 5000)) << "Ctrl+Alt+F did not show the window";

    // Each digit and the text it leaves on the clipboard (the one before: nothing changed); then within a search.
    const auto press = [&](const QList<std::pair<int, QString>> &presses) {
        for (const auto &[digit, text] : presses) {
            key(QStringLiteral("ctrl+alt+%1").arg(digit));
            QTest::qWait(500);
            EXPECT_TRUE(QTest::qWaitFor([&] { return clipboardText() == text; }, 5000))
                << "Ctrl+Alt+" << digit << " left " << clipboardText().toStdString();
        }
    };
    press({{4, "one"}, {0, "five"}, {2, "three"}, {5, "three"}});
    // The search field sits at the toolbar's right end; the search runs on Return.
    const QString id = window().section(u'\n', 0, 0);
    ASSERT_TRUE(xdotool({"mousemove", "--window", id, QString::number(windowGeometry(id).width() - 100), "38", "click", "1"}));
    ASSERT_TRUE(xdotool({"type", "--delay", "50", "o"}));
    key("Return");
    ASSERT_TRUE(QTest::qWaitFor([&] { return paintedRows().size() == 3; }, twoTicksMs)) << "one, two, four";
    press({{2, "one"}, {1, "two"}, {3, "two"}});
    // The text shown follows the clipboard at the next tick.
    ASSERT_TRUE(waitForMoreTicks(1, twoTicksMs));
    key("ctrl+alt+c");
    EXPECT_EQ(notices(QStringLiteral("Current Pasteboard"), 1), QStringList{"two"});
    EXPECT_EQ(captures().size(), 5) << "a restore was recorded";
    quitProgram();
}

// With Ctrl+Alt+F taken by another program, the other keys work: S stops recording and A starts it again, the
// date and a phrase go on the clipboard as the program's own writes that the tick skips and E captures, and P
// leaves only the plain text of a styled copy.
TEST_F(HotKeyTest, keysWorkBesideOneTakenRecordingDatePhraseManualCaptureAndPlainText)
{
    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    settings.setValue("phrase_title3", "Regards");
    settings.setValue("phrase_content3", "Kind regards, Ann");
    settings.sync();
    XcbHotKeys other; // this test's own X connection
    ASSERT_TRUE(other.grab(3, 0x0900, 0)) << "this test could not take Ctrl+Alt+F";
    ASSERT_TRUE(startProgram());
    const QString rec = QStringLiteral("Quillstash");
    ASSERT_EQ(notices(rec, 1), QStringList{"Rec Start"});
    // In French A and Q swap places: Ctrl+Alt+A is the key that types A. A notice title seen again within a
    // second is dropped.
    ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("fr")}), 0);
    const auto usAgain = qScopeGuard([] { QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("us")}); });
    for (const auto &[letter, expected] : {std::pair{"s", QStringList{"Rec Start", "Rec Stop"}}, {"a", {"Rec Start", "Rec Stop", "Rec Start"}}}) {
        QTest::qWait(1100);
        key(QStringLiteral("ctrl+alt+") + letter);
        EXPECT_EQ(notices(rec, int(expected.size())), expected) << "Ctrl+Alt+" << letter;
    }
    ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("us")}), 0);
    QTest::qWait(300); // the program's keys follow the layout back

    key("ctrl+alt+shift+0");
    const QStringList dates = notices(QStringLiteral("Change to Date"), 1);
    const QString date = clipboardText();
    EXPECT_TRUE(date.contains(QString::number(QDate::currentDate().year())) && date.size() > 20) << date.toStdString();
    EXPECT_EQ(dates, QStringList{date});
    EXPECT_TRUE(read(QStringLiteral("TARGETS")).contains("quillstash.ignore"));
    ASSERT_TRUE(waitForMoreTicks(2, 2 * twoTicksMs));
    EXPECT_TRUE(captures().isEmpty()) << "the tick recorded the date";
    key("ctrl+alt+e");
    ASSERT_TRUE(waitForCaptures(1)) << "Ctrl+Alt+E did not record the date";
    EXPECT_TRUE(paintedRows().value(0).endsWith(QStringLiteral(" text ") + date)) << paintedRows().value(0).toStdString();

    key("ctrl+alt+shift+3");
    EXPECT_EQ(notices(QStringLiteral("Change to Fixed Text Phrase #3"), 1), QStringList{"Kind regards, Ann"});
    EXPECT_EQ(clipboardText(), QStringLiteral("Kind regards, Ann"));

    auto *styled = new QMimeData;
    styled->setHtml(QStringLiteral("<b>Bold</b> move"));
    styled->setText(QStringLiteral("Bold move"));
    ASSERT_TRUE(ownClipboard(styled));
    ASSERT_TRUE(waitForCaptures(2));
    key("ctrl+alt+p");
    EXPECT_EQ(notices(QStringLiteral("Converted to PlainText"), 1), QStringList{"Current Pasteboard has been converted to UTF8 PlainText."});
    const QByteArray targets = read(QStringLiteral("TARGETS"));
    EXPECT_TRUE(!targets.contains("text/html") && targets.contains("UTF8_STRING")) << targets.toStdString();
    EXPECT_EQ(clipboardText(), QStringLiteral("Bold move"));
    quitProgram();
}

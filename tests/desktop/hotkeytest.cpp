#include "desktop/desktoptest.h"

#include <QDate>
#include <QMimeData>
#include <QSettings>
#include <QTest>

#include <xcb/xcb.h>

namespace {

// Another program holding Ctrl+Alt+key under every modifier, on a connection of its own; closing it lets go.
std::shared_ptr<xcb_connection_t> grabKey(xcb_keysym_t keysym)
{
    std::shared_ptr<xcb_connection_t> c(xcb_connect(nullptr, nullptr), xcb_disconnect);
    const xcb_setup_t *setup = xcb_get_setup(c.get());
    const int count = setup->max_keycode - setup->min_keycode + 1;
    xcb_get_keyboard_mapping_reply_t *map = xcb_get_keyboard_mapping_reply(
        c.get(), xcb_get_keyboard_mapping(c.get(), setup->min_keycode, count), nullptr);
    const xcb_keysym_t *syms = xcb_get_keyboard_mapping_keysyms(map);
    int i = 0;
    while (i < count * map->keysyms_per_keycode && syms[i] != keysym)
        ++i;
    const xcb_keycode_t code = setup->min_keycode + i / map->keysyms_per_keycode;
    free(map);
    xcb_generic_error_t *error = xcb_request_check(c.get(), xcb_grab_key_checked(c.get(), 1, xcb_setup_roots_iterator(setup).data->root,
                                                       XCB_MOD_MASK_ANY, code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
    free(error);
    return error ? nullptr : c;
}

} // namespace

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

    // Per search, the rows it shows, then digits and the text each leaves (the one before: nothing changed).
    const struct { QString search; int rows; QList<std::pair<int, QString>> presses; } rounds[]{
        {{}, 5, {{4, "one"}, {0, "five"}, {2, "three"}, {5, "three"}}},
        {"o", 3, {{2, "one"}, {1, "two"}, {3, "two"}}},
        {"fi", 1, {{0, "two"}}},
    };
    const QString id = window().section(u'\n', 0, 0);
    for (const auto &[search, rows, presses] : rounds) {
        if (!search.isEmpty()) {
            // The search field sits at the toolbar's right end; the search runs on Return.
            ASSERT_TRUE(xdotool({"mousemove", "--window", id, QString::number(windowGeometry(id).width() - 100), "38", "click", "1"}));
            key("ctrl+a");
            ASSERT_TRUE(xdotool({"type", "--delay", "50", search}));
            key("Return");
            ASSERT_TRUE(QTest::qWaitFor([&] { return paintedRows().size() == rows; }, twoTicksMs)) << search.toStdString();
        }
        for (const auto &[digit, text] : presses) {
            key(QStringLiteral("ctrl+alt+%1").arg(digit));
            QTest::qWait(500);
            EXPECT_TRUE(QTest::qWaitFor([&] { return clipboardText() == text; }, 5000))
                << "Ctrl+Alt+" << digit << " within \"" << search.toStdString() << "\" left " << clipboardText().toStdString();
        }
    }
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
    const std::shared_ptr<xcb_connection_t> other = grabKey('f');
    ASSERT_TRUE(other) << "this test could not take Ctrl+Alt+F";
    ASSERT_TRUE(startProgram());
    const QString rec = QStringLiteral("Quillstash");
    ASSERT_EQ(notices(rec, 1), QStringList{"Rec Start"});
    // A notice title seen again within a second is dropped.
    for (const auto &[letter, expected] : {std::pair{"s", QStringList{"Rec Start", "Rec Stop"}}, {"a", {"Rec Start", "Rec Stop", "Rec Start"}}}) {
        QTest::qWait(1100);
        key(QStringLiteral("ctrl+alt+") + letter);
        EXPECT_EQ(notices(rec, int(expected.size())), expected) << "Ctrl+Alt+" << letter;
    }

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

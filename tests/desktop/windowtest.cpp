#include "desktop/desktoptest.h"
#include "platform/x11/xcbhotkeys.h"

#include <QBuffer>
#include <QDate>
#include <QDir>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QPainter>
#include <QProcess>
#include <QScopeGuard>
#include <QScreen>
#include <QSettings>
#include <QTest>

namespace {

// Where the window's parts lie, from its top-left corner, under the default style and fonts: the toolbar
// below the menu bar, and the table below the toolbar and the 112 px preview box.
constexpr int toolbarMiddle = 38;
constexpr int tableTop = 170;
constexpr int rowHeight = 84;

const QString meeting = QStringLiteral("Meeting notes for Tuesday");
const QString linkText = QStringLiteral("http://example.org/quillstash");
const QString shopping = QStringLiteral("Shopping list: milk, bread, apples");
// A picture's row shows the kinds of data it holds.
const QString pictureText = QStringLiteral("[ public.tiff ]");

// A row as the table paints it: its kind of data (0 picture, 1 link, 2 text), its hot key digit and its text.
QString row(int icon, int digit, const QString &text)
{
    return QStringLiteral("icon %1 stamp Ctrl+Alt+%2 text %3").arg(icon).arg(digit).arg(text);
}

// Pictures for the documentation are made only when a folder is named for them.
QString shotFile(const char *name)
{
    const QString folder = qEnvironmentVariable("QUILLSTASH_SCREENSHOT_DIR");
    return folder.isEmpty() ? QString() : QDir(folder).filePath(QLatin1String(name));
}

// A landscape, for a row that shows what a picture looks like.
QByteArray landscapePng()
{
    QImage image(240, 160, QImage::Format_RGB32);
    image.fill(QColor(90, 150, 230));
    QPainter painter(&image);
    painter.setBrush(QColor(60, 120, 70));
    painter.drawPolygon(QPolygon({{0, 160}, {70, 80}, {130, 130}, {190, 90}, {240, 160}}));
    painter.end();
    QBuffer png;
    return png.open(QIODevice::WriteOnly) && image.save(&png, "PNG") ? png.data() : QByteArray();
}

} // namespace

class WindowTest : public DesktopTest
{
protected:
    // Waits until the table shows exactly these rows.
    void expectRows(const QStringList &expected)
    {
        EXPECT_TRUE(QTest::qWaitFor([&] { return paintedRows() == expected; }, twoTicksMs))
            << "shown:\n" << paintedRows().join(u'\n').toStdString();
    }
    void click(int x, int y, int button = 1)
    {
        xdo(QStringLiteral("mousemove --sync --window %1 %2 %3 click %4").arg(m_window).arg(x).arg(y).arg(button));
    }
    // That part of the screen as the X server shows it, popups included.
    static void shoot(const char *name, const QRect &area)
    {
        if (const QString file = shotFile(name); !file.isEmpty()) {
            EXPECT_TRUE(QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(), area.height()).save(file)) << name;
        }
    }

    QString m_window;
};

// The tray's tool tip and menu; rows with their kind and hot key; Return restores a row, a picture in every common
// encoding, without a new capture; Delete, search, and the 250 x 160 compact window. The hot keys work beside one that
// another program holds: digits count the rows shown from the newest, G and F hide and show, C tells the clipboard's
// text, S and A switch recording, the date and a phrase are own writes that the tick skips and E captures, and P
// leaves the plain text. "Quit" in the quit alert ends the program without a file.
TEST_F(WindowTest, trayRowsRestoreDeleteSearchCompactHotKeysAndQuitWithoutSaving)
{
    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    settings.setValue("phrase_title3", "Regards");
    settings.setValue("phrase_content3", "Kind regards, Ann");
    settings.sync();
    XcbHotKeys other; // this test's own X connection
    ASSERT_TRUE(other.grab(0x19, 0x0900, 0)) << "this test could not take Ctrl+Alt+9";
    ASSERT_TRUE(startProgram());
    QString item;
    ASSERT_TRUE(QTest::qWaitFor([&] { return !(item = m_tray.firstItem()).isEmpty(); }, 5000));
    EXPECT_EQ(m_tray.toolTip(item), QStringLiteral("Pasteboard stock"));
    EXPECT_EQ(m_tray.menuLabels(item), (QStringList{"Show Quillstash", "Start Recording", "Stop Recording", "Insert Fixed Phrase",
                                                    "Preferences…", "About Quillstash", "Quit"}));
    // Recording starts at the first tick; the tray's menu and Ctrl+Alt+S and A switch it, in a French layout, where
    // Ctrl+Alt+A is the key that types A. Notices of one title come at least a second apart, or the later is dropped.
    const QString rec = QStringLiteral("Quillstash");
    ASSERT_EQ(noticeBodies(rec, 1), QStringList{"Rec Start"});
    const QImage on = m_tray.icon(item);
    QImage off;
    ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("fr")}), 0);
    const auto usAgain = qScopeGuard([] { QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("us")}); });
    const QStringList switches{"Stop Recording", "Start Recording", "ctrl+alt+s", "ctrl+alt+a"};
    for (int i = 0; i < switches.size(); ++i) {
        QTest::qWait(1100);
        const int icons = m_tray.newIcons;
        if (switches[i].startsWith(u"ctrl"))
            key(switches[i]);
        else
            ASSERT_TRUE(m_tray.clickMenuItem(item, switches[i]));
        EXPECT_EQ(noticeBodies(rec, i + 2).value(i + 1), i % 2 ? "Rec Start" : "Rec Stop") << switches[i].toStdString();
        ASSERT_TRUE(QTest::qWaitFor([&] { return m_tray.newIcons > icons; }, twoTicksMs)) << "the tray was not told of the new picture";
        if (off.isNull())
            off = m_tray.icon(item);
        EXPECT_EQ(m_tray.icon(item), i % 2 ? on : off) << switches[i].toStdString();
    }
    EXPECT_TRUE(!off.isNull() && off != on);
    ASSERT_EQ(QProcess::execute(QStringLiteral("setxkbmap"), {QStringLiteral("us")}), 0);
    QTest::qWait(300); // the program's keys follow the layout back
    for (const auto &[name, icon] : {std::pair{"tray-recording.png", on}, std::pair{"tray-stopped.png", off}}) {
        if (const QString file = shotFile(name); !file.isEmpty()) {
            EXPECT_TRUE(icon.scaled(64, 64, Qt::KeepAspectRatio, Qt::SmoothTransformation).save(file, "PNG"));
        }
    }

    ASSERT_FALSE((m_window = focusWindow(QStringLiteral("^Untitled"))).isEmpty());
    const QRect full = windowGeometry(m_window);
    ASSERT_TRUE(full.width() > 250 && full.height() > tableTop + 5 * rowHeight) << "the window is too small for the test";
    const QByteArray picture = landscapePng();
    const QList<std::pair<QByteArray, QString>> copies{
        {meeting.toUtf8(), {}}, {linkText.toUtf8(), {}}, {shopping.toUtf8(), {}}, {picture, QStringLiteral("image/png")}};
    for (const auto &[data, target] : copies) {
        ASSERT_TRUE(copy(data, target));
        ASSERT_TRUE(waitForCaptures(int(captures().size()) + 1));
    }
    expectRows({row(2, 3, meeting), row(1, 2, linkText), row(2, 1, shopping), row(0, 0, pictureText)});
    shoot("main-window.png", full);

    // A click below the rows gives the table the focus; Home selects the top row.
    click(full.width() / 2, full.height() - 40);
    key("Home Down Return");
    ASSERT_EQ(noticeBodies(QStringLiteral("Change Pasteboard"), 1).size(), 1);
    EXPECT_EQ(clipboardText(), linkText);
    ASSERT_TRUE(waitForMoreTicks(2, twoTicksMs));
    EXPECT_EQ(noticeBodies(rec).size(), 5) << "restoring stopped recording";

    // A picture comes back byte for byte, and in every other common encoding.
    key("Down Down Return");
    ASSERT_EQ(noticeBodies(QStringLiteral("Change Pasteboard"), 2).size(), 2);
    EXPECT_EQ(read(QStringLiteral("image/png")), picture);
    const QImage landscape = QImage::fromData(picture).convertToFormat(QImage::Format_RGB32);
    for (const char *encoding : {"tiff", "bmp", "jpeg"}) {
        const QImage served = QImage::fromData(read(QStringLiteral("image/") + QLatin1String(encoding)), encoding);
        // JPEG is lossy: its size is all it must keep.
        EXPECT_EQ(served.convertToFormat(QImage::Format_RGB32).size(), landscape.size()) << encoding;
        EXPECT_TRUE(qstrcmp(encoding, "jpeg") == 0 || served.convertToFormat(QImage::Format_RGB32) == landscape) << encoding;
    }
    key("Up Up Delete");
    expectRows({row(2, 2, meeting), row(2, 1, shopping), row(0, 0, pictureText)});

    if (!shotFile("context-menu.png").isEmpty()) {
        click(300, tableTop + rowHeight / 2, 3);
        QTest::qWait(500);
        shoot("context-menu.png", QRect(full.topLeft(), QSize(full.width(), full.height() / 2 + 50)));
        key("Escape");
    }

    // Each digit and the text it leaves on the clipboard (the one before: nothing changed).
    const auto press = [&](const QList<std::pair<int, QString>> &presses) {
        for (const auto &[digit, text] : presses) {
            key(QStringLiteral("ctrl+alt+%1").arg(digit));
            QTest::qWait(500);
            EXPECT_TRUE(QTest::qWaitFor([&] { return clipboardText() == text; }, 5000))
                << "Ctrl+Alt+" << digit << " left " << clipboardText().toStdString();
        }
    };
    // The search runs on Return, ignores case, and the stamps and the digits count the rows shown.
    click(full.width() - 100, toolbarMiddle);
    xdo("type --delay 50 MILK");
    key("Return");
    expectRows({row(2, 0, shopping)});
    shoot("search.png", full);
    key("ctrl+a");
    xdo("type --delay 50 e");
    key("Return");
    expectRows({row(2, 1, meeting), row(2, 0, shopping)});
    press({{1, meeting}, {0, shopping}, {2, shopping}});
    key("ctrl+a BackSpace Return");
    expectRows({row(2, 2, meeting), row(2, 1, shopping), row(0, 0, pictureText)});
    press({{2, meeting}, {3, meeting}, {5, meeting}, {1, shopping}});

    // The View menu's Compact, by keyboard: the toolbar with its button goes with the compact window.
    key("alt+v Return");
    ASSERT_TRUE(QTest::qWaitFor([&] { return windowGeometry(m_window).size() == QSize(250, 160); }, 5000));
    EXPECT_EQ(windowGeometry(m_window), QRect(full.topLeft(), QSize(250, 160)));
    shoot("compact.png", QRect(full.topLeft(), QSize(250, 160)));
    key("alt+v Return");
    ASSERT_TRUE(QTest::qWaitFor([&] { return windowGeometry(m_window) == full; }, 5000));
    key("ctrl+alt+g");
    EXPECT_TRUE(QTest::qWaitFor([] { return !xdotool({"search", "--onlyvisible", "--name", "^Untitled"}); }, 5000)) << "Ctrl+Alt+G left the window shown";
    key("ctrl+alt+f");
    ASSERT_FALSE(focusWindow(QStringLiteral("^Untitled")).isEmpty()) << "Ctrl+Alt+F did not show the window";
    // The text shown follows the clipboard at the next tick.
    key("ctrl+alt+c");
    EXPECT_EQ(noticeBodies(QStringLiteral("Current Pasteboard"), 1), QStringList{shopping});
    EXPECT_EQ(captures().size(), 4) << "the program captured its own restore";

    key("ctrl+alt+shift+0");
    const QStringList dates = noticeBodies(QStringLiteral("Change to Date"), 1);
    const QString date = clipboardText();
    EXPECT_TRUE(date.contains(QString::number(QDate::currentDate().year())) && date.size() > 20) << date.toStdString();
    EXPECT_EQ(dates, QStringList{date});
    ASSERT_TRUE(waitForMoreTicks(2, 2 * twoTicksMs));
    EXPECT_EQ(captures().size(), 4) << "the tick recorded the date";
    key("ctrl+alt+e");
    ASSERT_TRUE(waitForCaptures(5)) << "Ctrl+Alt+E did not record the date";
    EXPECT_TRUE(QTest::qWaitFor([&] { return paintedRows().value(3) == row(2, 0, date); }, twoTicksMs))
        << paintedRows().value(3).toStdString();

    key("ctrl+alt+shift+3");
    EXPECT_EQ(noticeBodies(QStringLiteral("Change to Fixed Text Phrase #3"), 1), QStringList{"Kind regards, Ann"});
    EXPECT_EQ(clipboardText(), QStringLiteral("Kind regards, Ann"));

    auto *styled = new QMimeData;
    styled->setHtml(QStringLiteral("<b>Bold</b> move"));
    styled->setText(QStringLiteral("Bold move"));
    ASSERT_TRUE(ownClipboard(styled));
    ASSERT_TRUE(waitForCaptures(6));
    key("ctrl+alt+p");
    EXPECT_EQ(noticeBodies(QStringLiteral("Converted to PlainText"), 1), QStringList{"Current Pasteboard has been converted to UTF8 PlainText."});
    const QByteArray targets = read(QStringLiteral("TARGETS"));
    EXPECT_TRUE(!targets.contains("text/html") && targets.contains("UTF8_STRING")) << targets.toStdString();
    EXPECT_EQ(clipboardText(), QStringLiteral("Bold move"));

    ASSERT_TRUE(quitAsks());
    key("Tab space"); // "Quit", after "Save" in the focus order
    quitProgram({}, false);
    EXPECT_EQ(QDir(m_home.path()).entryList({"*.qs_backup"}, QDir::Files), QStringList());
}

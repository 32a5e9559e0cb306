#include "desktop/desktoptest.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QPainter>
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

bool hasRed(const QImage &icon)
{
    bool red = false;
    for (int i = 0; i < icon.width() * icon.height() && !red; ++i) {
        const QColor c = icon.pixelColor(i % icon.width(), i / icon.width());
        red = c.alpha() > 128 && c.red() > 150 && c.green() < 100 && c.blue() < 100;
    }
    return red;
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
    // An xdotool command line, words split at spaces.
    void xdo(const QString &command) { ASSERT_TRUE(xdotool(command.split(u' '))) << command.toStdString(); }
    void key(const QString &keys) { xdo("key --delay 50 " + keys); }
    void click(int x, int y, int button = 1)
    {
        xdo(QStringLiteral("mousemove --sync --window %1 %2 %3 click %4").arg(m_window).arg(x).arg(y).arg(button));
    }
    void shoot(const char *name, const QRect &area)
    {
        if (const QString file = shotFile(name); !file.isEmpty()) {
            EXPECT_TRUE(screenshot(area, file)) << name;
        }
    }

    QString m_window;
};

// Four copies make four rows with their kind and hot key; Return on a row puts it back on the clipboard
// without a new capture, a picture in every common encoding; Delete removes a row, a search narrows the rows and an empty one shows them all,
// and the compact window is 250 x 160 at the top-left of the full one, which comes back after.
TEST_F(WindowTest, rowsShowKindAndHotKeyAndReturnRestoresDeleteRemovesSearchNarrowsCompactShrinks)
{
    ASSERT_TRUE(startProgram());
    // The program's first visible window.
    const auto windows = [] { return xdotool({"search", "--onlyvisible", "--name", "^Untitled"}).value_or(QString()); };
    ASSERT_TRUE(QTest::qWaitFor([&] { return !(m_window = windows().section(u'\n', 0, 0)).isEmpty(); }, 5000));
    const QRect full = windowGeometry(m_window);
    ASSERT_TRUE(full.width() > 250 && full.height() > tableTop + 5 * rowHeight) << "the window is too small for the test";

    // A notice title seen again within a second is dropped: copies go 1.5 s apart.
    const QByteArray picture = landscapePng();
    const QList<std::pair<QByteArray, QString>> copies{
        {meeting.toUtf8(), {}}, {linkText.toUtf8(), {}}, {shopping.toUtf8(), {}}, {picture, QStringLiteral("image/png")}};
    for (const auto &[data, target] : copies) {
        ASSERT_TRUE(copy(data, target));
        QTest::qWait(1500);
    }
    ASSERT_TRUE(waitForCaptures(4));
    EXPECT_EQ(noticeBodies(QStringLiteral("Add to Table")).size(), 4);
    expectRows({row(2, 3, meeting), row(1, 2, linkText), row(2, 1, shopping), row(0, 0, pictureText)});
    shoot("main-window.png", full);

    // A click below the rows gives the table the focus; Home selects the top row.
    xdo("windowfocus --sync " + m_window);
    click(full.width() / 2, full.height() - 40);
    key("Home Down Return");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !noticeBodies(QStringLiteral("Change Pasteboard")).isEmpty(); }, 5000));
    EXPECT_EQ(read(QStringLiteral("UTF8_STRING")), linkText.toUtf8());
    ASSERT_TRUE(waitForMoreTicks(2, twoTicksMs));
    EXPECT_EQ(captures().size(), 4) << "the program captured its own restore";
    // "Rec Start" alone: with automatic recording on, a restore does not stop it.
    EXPECT_EQ(noticeBodies(QStringLiteral("Quillstash")), QStringList{"Rec Start"}) << "restoring stopped recording";

    // A picture comes back byte for byte, and in every other common encoding.
    key("Down Down Return");
    ASSERT_TRUE(QTest::qWaitFor([&] { return noticeBodies(QStringLiteral("Change Pasteboard")).size() == 2; }, 5000));
    EXPECT_EQ(read(QStringLiteral("image/png")), picture);
    const QImage landscape = QImage::fromData(picture).convertToFormat(QImage::Format_RGB32);
    for (const char *encoding : {"tiff", "bmp", "jpeg"}) {
        const QImage served = QImage::fromData(read(QStringLiteral("image/") + QLatin1String(encoding)), encoding);
        // JPEG is lossy: its size is all it must keep.
        EXPECT_EQ(served.convertToFormat(QImage::Format_RGB32).size(), landscape.size()) << encoding;
        EXPECT_TRUE(qstrcmp(encoding, "jpeg") == 0 || served.convertToFormat(QImage::Format_RGB32) == landscape) << encoding;
    }
    key("Up Up Delete");
    ASSERT_TRUE(QTest::qWaitFor([&] { return !noticeBodies(QStringLiteral("Remove from Table")).isEmpty(); }, 5000));
    EXPECT_EQ(noticeBodies(QStringLiteral("Remove from Table")), QStringList{linkText});
    expectRows({row(2, 2, meeting), row(2, 1, shopping), row(0, 0, pictureText)});

    if (const QString file = shotFile("context-menu.png"); !file.isEmpty()) {
        click(300, tableTop + rowHeight / 2, 3);
        QTest::qWait(500);
        EXPECT_TRUE(screenshot(QRect(full.topLeft(), QSize(full.width(), full.height() / 2 + 50)), file));
        key("Escape");
    }

    // The search runs on Return, ignores case, and the stamps count the rows shown.
    click(full.width() - 100, toolbarMiddle);
    xdo("type --delay 50 MILK");
    key("Return");
    expectRows({row(2, 0, shopping)});
    shoot("search.png", full);
    key("ctrl+a BackSpace Return");
    expectRows({row(2, 2, meeting), row(2, 1, shopping), row(0, 0, pictureText)});

    // The View menu's Compact, by keyboard: the toolbar with its button goes with the compact window.
    key("alt+v Return");
    ASSERT_TRUE(QTest::qWaitFor([&] { return windowGeometry(m_window).size() == QSize(250, 160); }, 5000));
    EXPECT_EQ(windowGeometry(m_window), QRect(full.topLeft(), QSize(250, 160)));
    shoot("compact.png", QRect(full.topLeft(), QSize(250, 160)));
    key("alt+v Return");
    ASSERT_TRUE(QTest::qWaitFor([&] { return windowGeometry(m_window) == full; }, 5000));
    EXPECT_EQ(captures().size(), 4) << "the program captured its own restore";
    quitProgram();
}

// The tray item has its tool tip and menu; stopping and starting recording from it is announced, and
// its picture follows: the "on" picture has red in it, the "off" one has none.
TEST_F(WindowTest, trayMenuStopsAndStartsRecordingAndTheTrayPictureFollows)
{
    ASSERT_TRUE(startProgram());
    QString item;
    ASSERT_TRUE(QTest::qWaitFor([&] { return !(item = m_tray.itemOfProcess(programPid())).isEmpty(); }, 5000));
    EXPECT_EQ(m_tray.toolTip(item), QStringLiteral("Pasteboard stock"));
    EXPECT_EQ(m_tray.menuLabels(item), (QStringList{"Show Quillstash", "Start Recording", "Stop Recording", "Insert Fixed Phrase",
                                                    "Preferences…", "About Quillstash", "Quit"}));
    // Recording starts at the first tick.
    ASSERT_TRUE(QTest::qWaitFor([&] { return hasRed(m_tray.icon(item)); }, twoTicksMs)) << "no red in the recording picture";
    const QImage on = m_tray.icon(item);
    // The recording notices, titled "Quillstash", once there are that many.
    const auto recNotices = [this](int count) {
        (void)QTest::qWaitFor([&] { return noticeBodies(QStringLiteral("Quillstash")).size() >= count; }, twoTicksMs);
        return noticeBodies(QStringLiteral("Quillstash"));
    };
    EXPECT_EQ(recNotices(1), QStringList{"Rec Start"});

    // Notices of one title come at least a second apart, or the later one is dropped.
    QTest::qWait(1100);
    const int icons = m_tray.newIcons;
    ASSERT_TRUE(m_tray.clickMenuItem(item, QStringLiteral("Stop Recording")));
    EXPECT_EQ(recNotices(2), (QStringList{"Rec Start", "Rec Stop"}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_tray.newIcons > icons; }, twoTicksMs)) << "the tray was not told of the new picture";
    const QImage off = m_tray.icon(item);
    EXPECT_NE(off, on);
    EXPECT_FALSE(hasRed(off));

    QTest::qWait(1100);
    ASSERT_TRUE(m_tray.clickMenuItem(item, QStringLiteral("Start Recording")));
    EXPECT_EQ(recNotices(3), (QStringList{"Rec Start", "Rec Stop", "Rec Start"}));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_tray.icon(item) == on; }, twoTicksMs));
    for (const auto &[name, icon] : {std::pair{"tray-recording.png", on}, std::pair{"tray-stopped.png", off}}) {
        if (const QString file = shotFile(name); !file.isEmpty()) {
            EXPECT_TRUE(icon.scaled(64, 64, Qt::KeepAspectRatio, Qt::SmoothTransformation).save(file, "PNG"));
        }
    }
    quitProgram();
}

#include "tablefixture.h"
#include "windowfixture.h"

#include <QSet>

namespace {

using QSImageCellTest = TableFixture;

// Colours inside the stamp's place in a row: 150 px from the right edge, 20 px below the top.
QSet<QRgb> stampAreaColours(const QImage &shot, const QRect &cell)
{
    QSet<QRgb> colours;
    for (int y = cell.top() + 20; y < cell.bottom() - 2; ++y) {
        for (int x = cell.right() - 148; x < cell.right() - 2; ++x)
            colours.insert(shot.pixel(x, y));
    }
    return colours;
}

// Of 12 rows, only the ten bottom ones carry their hot key.
TEST_F(QSImageCellTest, StampsTheTenBottomRows)
{
    for (int i = 0; i < 12; ++i)
        nsac.addObject(makeEntry({}, QString())); // no text: nothing but the stamp near the right edge
    view.setAlternatingRowColors(false);
    view.resize(600, 12 * 84 + 2 * view.frameWidth());
    view.show();

    const std::pair<int, const char *> rows[] = {{0, ""}, {1, ""}, {2, "Ctrl+Alt+9"}, {6, "Ctrl+Alt+5"}, {11, "Ctrl+Alt+0"}};
    const QImage shot = view.viewport()->grab().toImage();
    for (const auto &[row, stamp] : rows) {
        SCOPED_TRACE(row);
        QStyleOptionViewItem option;
        option.rect = view.visualRect(nsac.index(row));
        option.widget = &view;
        EXPECT_EQ(QSImageCell::stampFor(option), QString::fromLatin1(stamp));
        const QRect cell = option.rect;
        EXPECT_EQ(stampAreaColours(shot, cell).size() > 1, *stamp != '\0') << "a stamp is drawn only where it belongs";
    }
}

// Three texts and a picture, as the main window shows them.
TEST_F(QSImageCellTest, PaintsNumberIconPictureAndText)
{
    const QStringList lines = {
        QStringLiteral("https://www.debian.org/releases/bookworm/"),
        QStringLiteral("Meeting notes:\n- ship the table\n- review the preview cache"),
        QStringLiteral("git commit -m \"Fix the stamp size\""),
    };
    int number = 7;
    for (const QString &line : lines) {
        const Entry entry = textEntry(line);
        entry->setIndexCount(QString::number(number++));
        nsac.addObject(entry);
    }
    const Entry image = pictureEntry(QStringLiteral("file:///home/ada/Pictures/holiday.png"), QColor(250, 200, 40));
    image->setIndexCount(QString::number(number));
    image->setImageLater();
    nsac.addObject(image);
    nsac.setSelectionIndexes({1});

    view.resize(700, 400);
    view.show();
    const QImage shot = view.grab().toImage();
    if (const QByteArray dir = qgetenv("QUILLSTASH_UI_SHOTS"); !dir.isEmpty())
        shot.save(QString::fromLocal8Bit(dir) + QStringLiteral("/table.png"));

    // The yellow picture lies in the preview place of the last row.
    const QRect last = view.visualRect(nsac.index(3)).translated(view.viewport()->pos());
    bool yellow = false;
    for (int x = last.left(); x < last.left() + 300 && !yellow; ++x)
        yellow = shot.pixelColor(x, last.center().y()) == QColor(250, 200, 40);
    EXPECT_TRUE(yellow);

    // A text's preview takes the row's text colour: white on the selection, not the canvas's black.
    const QRect selected = view.visualRect(nsac.index(1)).translated(view.viewport()->pos());
    const QColor highlightedText = view.palette().color(QPalette::Active, QPalette::HighlightedText);
    int light = 0, black = 0;
    for (int y = selected.top(); y < selected.bottom(); ++y) {
        for (int x = selected.left() + 80; x < selected.left() + 300; ++x) {
            light += shot.pixelColor(x, y) == highlightedText;
            black += shot.pixelColor(x, y) == QColor(Qt::black);
        }
    }
    EXPECT_GT(light, 20);
    EXPECT_EQ(black, 0);
}

} // namespace

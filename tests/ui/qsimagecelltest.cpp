#include "tablefixture.h"

#include <QSet>

using QSImageCellTest = TableFixture;

// Of 12 rows, only the ten bottom ones carry their hot key, counted from the last row however the table is scrolled.
TEST_F(QSImageCellTest, StampsTheTenBottomRowsWhenScrolled)
{
    for (int i = 0; i < 12; ++i)
        nsac.addObject(makeEntry({}, QString())); // no text: nothing but the stamp near the right edge
    view.setAlternatingRowColors(false);
    view.resize(600, 6 * 84 + 2 * view.frameWidth());
    view.show();
    view.scrollTo(nsac.index(1), QAbstractItemView::PositionAtTop); // rows 1 to 6 shown

    const std::pair<int, const char *> rows[] = {{1, ""}, {2, "Ctrl+Alt+9"}, {6, "Ctrl+Alt+5"}};
    const QImage shot = view.viewport()->grab().toImage();
    for (const auto &[row, stamp] : rows) {
        SCOPED_TRACE(row);
        QStyleOptionViewItem option;
        option.rect = view.visualRect(nsac.index(row));
        option.widget = &view;
        EXPECT_EQ(QSImageCell::stampFor(option), QString::fromLatin1(stamp));
        // Colours in the stamp's place: 150 px from the right edge, 20 px below the top.
        QSet<QRgb> colours;
        for (int y = option.rect.top() + 20; y < option.rect.bottom() - 2; ++y) {
            for (int x = option.rect.right() - 148; x < option.rect.right() - 2; ++x)
                colours.insert(shot.pixel(x, y));
        }
        EXPECT_EQ(colours.size() > 1, *stamp != '\0') << "a stamp is drawn only where it belongs";
    }
}

// A text's preview takes the row's text colour: white on the selection, not the canvas's black.
TEST_F(QSImageCellTest, SelectedTextPreviewTakesTheHighlightedTextColour)
{
    for (const char *line : {"https://www.debian.org/releases/bookworm/", "Meeting notes:\n- ship the table"})
        nsac.addObject(textEntry(QString::fromUtf8(line)));
    nsac.setSelectionIndexes({1});
    view.resize(700, 400);
    view.show();
    const QImage shot = view.grab().toImage();

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

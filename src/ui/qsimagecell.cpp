#include "ui/qsimagecell.h"

#include "history/historylist.h"
#include "history/previewcache.h"
#include "platform/pasteboardtype.h"
#include "ui/customtableview.h"

#include <QApplication>
#include <QLoggingCategory>
#include <QPainter>

#include <algorithm>

// One line per painted row, for watching the table from outside the program.
Q_LOGGING_CATEGORY(lcTable, "quillstash.table", QtInfoMsg)

namespace {

constexpr int margin = 2;
constexpr int gap = 8;
constexpr int iconSize = 32;
// Below this the text would show a few letters and an ellipsis: leave it out.
constexpr int minimumTextWidth = 60;

// Where the stamp sits: its left edge this far from the cell's right edge,
// its top this far below the cell's top.
constexpr int stampLeftOfRightEdge = 150;
constexpr int stampBelowTop = 20;
constexpr qreal stampPointSize = 44;

// Made once for the whole process and shared by every row.
const QString &stampPrefix()
{
    static const QString prefix = QStringLiteral("Ctrl+Alt+");
    return prefix;
}

const QFont &stampFont()
{
    static const QFont font = [] {
        QFont f(QStringLiteral("Futura Medium Italic"));
        f.setPointSizeF(stampPointSize);
        f.setItalic(true);
        return f;
    }();
    return font;
}

// A faint dark grey that lies over the picture without hiding it.
const QColor &stampColor()
{
    static const QColor color = QColor::fromRgbF(0.2f, 0.2f, 0.2f, 0.3f);
    return color;
}

// The number column is as wide as six digits, the numbers of a long history.
int numberColumnWidth(const QFontMetrics &metrics)
{
    return metrics.horizontalAdvance(QStringLiteral("000000"));
}

QFont numberFont(const QFont &base)
{
    QFont font = base;
    font.setPointSizeF(std::max<qreal>(base.pointSizeF() * 0.85, 6));
    return font;
}

// A text's preview is the text alone, drawn in black on a transparent
// canvas, unless the text names an address whose picture lies under it.
bool previewIsTextOnly(const contents &entry)
{
    return entry.types().contains(PasteboardType::String) && !entry.types().contains(PasteboardType::Tiff)
        && !contents::addressOf(entry.content());
}

// The text of such a preview in the row's own text colour, so that it stays
// readable on dark themes and on the selection.
QImage tinted(const QImage &preview, const QColor &color)
{
    QImage image(preview.size(), QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.drawImage(0, 0, preview);
    painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
    painter.fillRect(image.rect(), color);
    return image;
}

} // namespace

QSImageCell::QSImageCell(PreviewCache &previews, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_previews(previews)
{
}

QString QSImageCell::stampText(int n)
{
    return stampPrefix() + QString::number(n);
}

QString QSImageCell::stampFor(const QStyleOptionViewItem &option)
{
    const auto *view = qobject_cast<const CustomTableView *>(option.widget);
    if (!view)
        return {};
    const int n = view->GetKeyNumberFromRect(option.rect);
    return n >= 0 && n <= 9 ? stampText(n) : QString();
}

void QSImageCell::paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QStyleOptionViewItem opt = option;
    initStyleOption(&opt, index);
    // The style paints the background, selection, hover and focus; the rest is ours.
    opt.text.clear();
    opt.icon = QIcon();
    opt.features &= ~QStyleOptionViewItem::HasDisplay;
    opt.features &= ~QStyleOptionViewItem::HasDecoration;
    const QWidget *widget = option.widget;
    QStyle *style = widget ? widget->style() : QApplication::style();
    style->drawControl(QStyle::CE_ItemViewItem, &opt, painter, widget);

    const Entry entry = index.data(HistoryList::EntryRole).value<Entry>();
    if (!entry)
        return;

    painter->save();
    painter->setClipRect(option.rect);
    const auto *view = qobject_cast<const CustomTableView *>(widget);
    const bool smooth = !view || view->transformationMode() == Qt::SmoothTransformation;
    painter->setRenderHint(QPainter::SmoothPixmapTransform, smooth);

    const bool selected = option.state & QStyle::State_Selected;
    const QPalette::ColorGroup group = !(option.state & QStyle::State_Enabled) ? QPalette::Disabled
        : (option.state & QStyle::State_Active)                                ? QPalette::Active
                                                                               : QPalette::Inactive;
    const QColor textColor = option.palette.color(group, selected ? QPalette::HighlightedText : QPalette::Text);

    QRect area = option.rect.adjusted(gap / 2, margin, -gap / 2, -margin);

    // The number, small and quieter than the text.
    const QFont smallFont = numberFont(option.font);
    const QFontMetrics smallMetrics(smallFont);
    const QRect numberRect(area.left(), area.top(), numberColumnWidth(smallMetrics), area.height());
    QColor numberColor = textColor;
    if (!selected)
        numberColor.setAlphaF(0.55f);
    painter->setFont(smallFont);
    painter->setPen(numberColor);
    painter->drawText(numberRect, Qt::AlignRight | Qt::AlignVCenter,
                      smallMetrics.elidedText(entry->indexCount(), Qt::ElideLeft, numberRect.width()));
    area.setLeft(numberRect.right() + 1 + gap);

    // The type icon.
    const QRect iconRect(area.left(), area.center().y() - iconSize / 2 + 1, iconSize, iconSize);
    const QImage icon = entry->typeImage();
    if (!icon.isNull()) {
        const QSize iconFit = icon.size().scaled(iconRect.size(), Qt::KeepAspectRatio);
        QRect target(QPoint(), iconFit);
        target.moveCenter(iconRect.center());
        painter->save();
        painter->setRenderHint(QPainter::SmoothPixmapTransform, true);
        painter->drawImage(target, icon);
        painter->restore();
    }
    area.setLeft(iconRect.right() + 1 + gap);

    // The preview, scaled to the row's height and kept in proportion.
    const qreal scale = qreal(area.height()) / contents::previewHeight;
    const QRect previewBox(area.left(), area.top(), qRound(contents::previewWidth * scale), area.height());
    QImage preview = m_previews.preview(entry);
    if (!preview.isNull() && previewIsTextOnly(*entry))
        preview = tinted(preview, textColor);
    if (!preview.isNull()) {
        QRect target(QPoint(), preview.size().scaled(previewBox.size(), Qt::KeepAspectRatio));
        if (preview.height() <= previewBox.height() && preview.width() <= previewBox.width())
            target.setSize(preview.size());
        target.moveTopLeft(previewBox.topLeft() + QPoint(0, (previewBox.height() - target.height()) / 2));
        painter->drawImage(target, preview);
        // A picture narrower than the preview place leaves its rest to the text.
        area.setLeft(target.right() + 1 + gap);
    }

    // The text, where the row has room for it and the preview does not
    // already show it (a text's preview is the text itself).
    if (!entry->types().contains(PasteboardType::String) && area.width() >= minimumTextWidth && !entry->content().isEmpty()) {
        painter->setFont(option.font);
        painter->setPen(textColor);
        painter->drawText(area, Qt::AlignLeft | Qt::AlignVCenter,
                          option.fontMetrics.elidedText(entry->content().simplified(), Qt::ElideRight, area.width()));
    }
    painter->restore();

    const QString label = stampFor(option);
    if (!label.isEmpty())
        paintStamp(painter, option.rect, label);
    qCDebug(lcTable, "row %d of %d icon %d stamp %s text %s", index.row(), index.model()->rowCount(),
            entry->typeImageIndex(), qUtf8Printable(label), qUtf8Printable(entry->content().left(40).simplified()));
}

void QSImageCell::paintStamp(QPainter *painter, const QRect &cell, const QString &label) const
{
    // The label starts 150 px left of the cell's right edge and 20 px below
    // its top; the font shrinks until the label fits in what is left of the cell.
    const QRect box(cell.right() + 1 - stampLeftOfRightEdge, cell.top() + stampBelowTop, stampLeftOfRightEdge - margin,
                    cell.height() - stampBelowTop - margin);
    if (box.width() <= 0 || box.height() <= 0)
        return;

    QFont font = stampFont();
    // The bounding rectangle includes the italic overhang that the advance leaves out.
    const auto fits = [&](const QFont &f) {
        const QFontMetricsF metrics(f);
        const QRectF bounds = metrics.boundingRect(label);
        return std::max(bounds.right(), metrics.horizontalAdvance(label)) <= box.width()
            && metrics.height() <= box.height();
    };
    if (!fits(font)) {
        const QFontMetricsF metrics(font);
        const qreal width = std::max(metrics.boundingRect(label).right(), metrics.horizontalAdvance(label));
        qreal size = stampPointSize * std::min(box.width() / width, box.height() / metrics.height());
        font.setPointSizeF(size);
        // Glyph sizes do not scale exactly with the point size; step down until the label fits.
        while (size > 4 && !fits(font)) {
            size *= 0.95;
            font.setPointSizeF(size);
        }
    }

    painter->save();
    painter->setClipRect(cell);
    painter->setRenderHint(QPainter::TextAntialiasing, true);
    painter->setFont(font);
    painter->setPen(stampColor());
    painter->drawText(box, Qt::AlignLeft | Qt::AlignTop | Qt::TextSingleLine, label);
    painter->restore();
}

QSize QSImageCell::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    Q_UNUSED(index);
    const int width = gap + numberColumnWidth(QFontMetrics(numberFont(option.font))) + gap + iconSize + gap
        + contents::previewWidth + gap;
    return {width, CustomTableView::rowHeight};
}

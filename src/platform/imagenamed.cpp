#include "platform/imagenamed.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <cmath>
#include <iterator>

namespace {

// Every picture is drawn on a square grid of gridUnits and scaled to the asked
// size, so that a stroke of 2 units is one pixel at 16 px and 4 at 64 px.
constexpr qreal gridUnits = 32.0;

// Colours shared by the pictures: white shapes with a dark hairline read on a
// light panel, coloured fills read on a dark one.
const QColor paper(0xF4, 0xF7, 0xFB);
const QColor glyph(Qt::white);
const QColor hairline(0, 0, 0, 115);
const QColor recordRed(0xE5, 0x39, 0x35);
const QColor idleGrey(0x8A, 0x92, 0x9B);
const QColor slate(0x34, 0x49, 0x5E);
const QColor linkBlue(0x2F, 0x80, 0xED);
const QColor quillGold(0xF2, 0xC9, 0x4C);

QPen hairlinePen(const QColor &colour = hairline, qreal width = 1.0)
{
    QPen pen(colour, width);
    pen.setJoinStyle(Qt::RoundJoin);
    pen.setCapStyle(Qt::RoundCap);
    return pen;
}

// The type icons: one coloured tile each, with a white sign on it.
void drawTile(QPainter &p, const QColor &fill)
{
    p.setPen(hairlinePen(fill.darker(135)));
    p.setBrush(fill);
    p.drawRoundedRect(QRectF(2.5, 2.5, 27, 27), 6, 6);
}

void drawTypeImage(QPainter &p)
{
    drawTile(p, QColor(0x27, 0xAE, 0x60));
    p.setPen(Qt::NoPen);
    p.setBrush(QColor(0xFF, 0xE0, 0x82));
    p.drawEllipse(QPointF(11, 10.5), 3, 3);
    QPainterPath hills;
    hills.moveTo(6, 24);
    hills.lineTo(12.5, 15.5);
    hills.lineTo(16.5, 20);
    hills.lineTo(20.5, 13);
    hills.lineTo(26, 24);
    hills.closeSubpath();
    p.setBrush(glyph);
    p.setPen(hairlinePen(glyph, 1.5));
    p.drawPath(hills);
}

void drawTypeUrl(QPainter &p)
{
    drawTile(p, linkBlue);
    p.save();
    p.translate(16, 16);
    p.rotate(-45);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(glyph, 2.6));
    // Two links of a chain, each a stadium, overlapping by a third.
    p.drawRoundedRect(QRectF(-11, -3.75, 12.5, 7.5), 3.75, 3.75);
    p.drawRoundedRect(QRectF(-1.5, -3.75, 12.5, 7.5), 3.75, 3.75);
    p.restore();
}

void drawTypeText(QPainter &p)
{
    drawTile(p, QColor(0xE0, 0x8A, 0x1E));
    p.setPen(Qt::NoPen);
    p.setBrush(glyph);
    // Whole-unit lines on a pitch of 6 stay sharp at 16 and 32 px.
    const qreal lengths[] = {16, 16, 10};
    for (int i = 0; i < 3; ++i)
        p.drawRoundedRect(QRectF(8, 8 + i * 6, lengths[i], 3), 1.5, 1.5);
}

QPainterPath foldedPage(const QRectF &r, qreal fold)
{
    QPainterPath page;
    page.moveTo(r.left(), r.top());
    page.lineTo(r.right() - fold, r.top());
    page.lineTo(r.right(), r.top() + fold);
    page.lineTo(r.right(), r.bottom());
    page.lineTo(r.left(), r.bottom());
    page.closeSubpath();
    return page;
}

void drawTypeUnknown(QPainter &p)
{
    const QColor fill(0x7F, 0x8C, 0x8D);
    drawTile(p, fill);
    p.setPen(hairlinePen(glyph, 1.0));
    p.setBrush(glyph);
    p.drawPath(foldedPage(QRectF(9, 6, 14, 20), 4.5));
    // The question mark: a hook, its stem and the dot, cut out of the page.
    QPainterPath hook;
    hook.arcMoveTo(QRectF(12.8, 9.5, 6.4, 6.4), 160);
    hook.arcTo(QRectF(12.8, 9.5, 6.4, 6.4), 160, -230);
    hook.lineTo(16, 18.5);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(fill.darker(115), 2.3, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.drawPath(hook);
    p.setPen(Qt::NoPen);
    p.setBrush(fill.darker(115));
    p.drawEllipse(QPointF(16, 22.2), 1.4, 1.4);
}

// The recording signs: a white disc with a dark rim, red and filled while it
// means recording, a grey ring while it means stopped. The silhouette stays
// the same, so that the sign does not jump when it changes.
void drawRecordSign(QPainter &p, const QPointF &centre, qreal radius, bool on)
{
    p.setPen(hairlinePen(hairline, radius / 13));
    p.setBrush(glyph);
    p.drawEllipse(centre, radius, radius);
    const qreal inner = radius * 0.68;
    if (on) {
        p.setPen(Qt::NoPen);
        p.setBrush(recordRed);
        p.drawEllipse(centre, inner, inner);
    } else {
        const qreal width = radius * 0.24;
        p.setPen(QPen(idleGrey, width));
        p.setBrush(Qt::NoBrush);
        p.drawEllipse(centre, inner - width / 2, inner - width / 2);
    }
}

void drawRecOn(QPainter &p) { drawRecordSign(p, QPointF(16, 16), 13.5, true); }
void drawRecOff(QPainter &p) { drawRecordSign(p, QPointF(16, 16), 13.5, false); }

// The tray shows the program's clipboard with the recording sign on its
// corner; a stopped program greys its clipboard as well, so that the state
// reads even where the sign is too small to tell.
void drawClipboard(QPainter &p, const QColor &board, const QColor &clip)
{
    p.setPen(hairlinePen(board.darker(130)));
    p.setBrush(board);
    p.drawRoundedRect(QRectF(4.5, 4.5, 21, 25), 3, 3);
    p.setPen(Qt::NoPen);
    p.setBrush(paper);
    p.drawRoundedRect(QRectF(7.5, 8.5, 15, 18), 1.2, 1.2);
    p.setPen(hairlinePen(clip.darker(130)));
    p.setBrush(clip);
    p.drawRoundedRect(QRectF(10.5, 2.5, 9, 5), 1.5, 1.5);
    p.setPen(Qt::NoPen);
    p.setBrush(clip);
    p.drawRoundedRect(QRectF(10, 12, 8, 2.2), 1.1, 1.1);
    p.drawRoundedRect(QRectF(10, 16.5, 6, 2.2), 1.1, 1.1);
}

void drawMenuRecOn(QPainter &p)
{
    drawClipboard(p, slate, linkBlue);
    drawRecordSign(p, QPointF(22.5, 22.5), 9, true);
}

void drawMenuRecOff(QPainter &p)
{
    drawClipboard(p, idleGrey.darker(125), idleGrey.lighter(125));
    drawRecordSign(p, QPointF(22.5, 22.5), 9, false);
}

// The application icon: a clipboard with a quill, on a grid of 64.
void drawApplication(QPainter &p)
{
    p.scale(0.5, 0.5);
    p.setPen(Qt::NoPen);
    p.setBrush(slate);
    p.drawRoundedRect(QRectF(10, 8, 44, 52), 6, 6);
    p.setBrush(paper);
    p.drawRoundedRect(QRectF(15, 14, 34, 41), 2, 2);
    p.setBrush(linkBlue);
    p.drawRoundedRect(QRectF(22, 4, 20, 10), 3, 3);
    p.drawRoundedRect(QRectF(20, 23, 20, 3), 1.5, 1.5);
    p.drawRoundedRect(QRectF(20, 30, 24, 3), 1.5, 1.5);
    p.drawRoundedRect(QRectF(20, 37, 16, 3), 1.5, 1.5);
    QPainterPath feather;
    feather.moveTo(58, 20);
    feather.cubicTo(48, 24, 38, 36, 34, 52);
    feather.cubicTo(44, 46, 54, 34, 58, 20);
    feather.closeSubpath();
    p.setPen(QPen(slate, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    p.setBrush(quillGold);
    p.drawPath(feather);
    p.drawLine(QPointF(56, 24), QPointF(30, 58));
}

using DrawFunction = void (*)(QPainter &);

struct NamedDrawing
{
    const char *name;
    DrawFunction draw;
};

const NamedDrawing drawings[] = {
    {"icontypes_image", drawTypeImage},
    {"icontypes_url", drawTypeUrl},
    {"icontypes_text", drawTypeText},
    {"icontypes_unknown", drawTypeUnknown},
    {"qs_rec_on_003", drawRecOn},
    {"qs_rec_off_003", drawRecOff},
    {"qs_menu_item_rec_on", drawMenuRecOn},
    {"qs_menu_item_rec_off", drawMenuRecOff},
    {"quillstash", drawApplication},
};

DrawFunction drawingNamed(QString name)
{
    if (name.endsWith(QLatin1String(".png")))
        name.chop(4);
    for (const NamedDrawing &d : drawings) {
        if (name == QLatin1String(d.name))
            return d.draw;
    }
    return nullptr;
}

// Draws into the square centred in the painter's target rectangle, so that a
// picture asked for at another shape keeps its proportions.
void paintDrawing(QPainter &p, DrawFunction draw, const QRectF &target)
{
    const qreal side = std::min(target.width(), target.height());
    p.save();
    p.setRenderHint(QPainter::Antialiasing);
    p.translate(target.center().x() - side / 2, target.center().y() - side / 2);
    p.scale(side / gridUnits, side / gridUnits);
    draw(p);
    p.restore();
}

QImage renderDrawing(DrawFunction draw, const QSize &size, qreal devicePixelRatio)
{
    QImage image(size * devicePixelRatio, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(devicePixelRatio);
    image.fill(Qt::transparent);
    QPainter p(&image);
    paintDrawing(p, draw, QRectF(QPointF(0, 0), QSizeF(size)));
    return image;
}

QImage disabledLook(QImage image)
{
    for (int y = 0; y < image.height(); ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            const int grey = qGray(line[x]);
            const int alpha = qAlpha(line[x]) / 2;
            line[x] = qRgba(grey / 2, grey / 2, grey / 2, alpha);
        }
    }
    return image;
}

// Draws the picture at the pixel size each caller asks for rather than
// scaling one bitmap: a tray asks for 22 px, a toolbar for 24 or 32.
class DrawnIconEngine : public QIconEngine
{
public:
    explicit DrawnIconEngine(DrawFunction draw) : m_draw(draw) {}

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State state) override
    {
        const qreal ratio = painter->device() ? painter->device()->devicePixelRatioF() : 1.0;
        painter->drawPixmap(rect, scaledPixmap(rect.size() * ratio, mode, state, ratio));
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1.0);
    }

    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State, qreal scale) override
    {
        if (size.isEmpty())
            return QPixmap();
        // Qt 6.4's QIcon::pixmap() hands over the size in device pixels;
        // the ratio only labels the result.
        QImage image = renderDrawing(m_draw, size, 1.0);
        if (mode == QIcon::Disabled)
            image = disabledLook(std::move(image));
        QPixmap result = QPixmap::fromImage(std::move(image));
        result.setDevicePixelRatio(scale > 0 ? scale : 1.0);
        return result;
    }

    QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override
    {
        return {{16, 16}, {22, 22}, {24, 24}, {32, 32}, {48, 48}, {64, 64}};
    }

    QString key() const override { return QStringLiteral("quillstash.drawn"); }
    QIconEngine *clone() const override { return new DrawnIconEngine(m_draw); }

private:
    DrawFunction m_draw;
};

} // namespace

QImage ImageNamed::imageNamed(const QString &name, const QSize &size, qreal devicePixelRatio)
{
    const DrawFunction draw = drawingNamed(name);
    if (!draw || size.isEmpty() || !(devicePixelRatio > 0))
        return QImage();
    return renderDrawing(draw, size, devicePixelRatio);
}

QIcon ImageNamed::iconNamed(const QString &name)
{
    const DrawFunction draw = drawingNamed(name);
    return draw ? QIcon(new DrawnIconEngine(draw)) : QIcon();
}

QStringList ImageNamed::names()
{
    QStringList result;
    for (const NamedDrawing &d : drawings)
        result << QString::fromLatin1(d.name);
    return result;
}

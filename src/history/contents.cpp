#include "history/contents.h"

#include "platform/imagefetcher.h"
#include "platform/imagenamed.h"
#include "platform/pasteboardtype.h"
#include "platform/sharedbuffers.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QImageReader>
#include <QPainter>
#include <QUrl>

#include <array>
#include <atomic>

namespace {

constexpr QByteArrayView linkPrefix = "http://";

constexpr qreal entryFontPointSize = 9.0;
constexpr qreal contentsFontPointSize = 14.0;
constexpr qreal addressPictureOpacity = 0.7;
// A picture far wider than the preview is cut down further, so that one
// panorama cannot take megabytes in the cache of rendered previews.
constexpr int maxPictureWidth = contents::previewWidth * 4;

std::optional<QFont> contFont;

// Generations are unique across all entries, so that an entry freed and
// another allocated at the same address never look alike to a cache.
std::atomic<quint64> lastGeneration{0};

QFont defaultEntryFont()
{
    static const QFont font = [] {
        QFont f = QFontDatabase::systemFont(QFontDatabase::GeneralFont);
        f.setPointSizeF(entryFontPointSize);
        return f;
    }();
    return font;
}

void ensureContentsFont()
{
    if (contFont)
        return;
    QFont font(QStringLiteral("Lucida Grande"));
    font.setPointSizeF(contentsFontPointSize);
    contFont = font;
}

QImage blankCanvas()
{
    QImage canvas(contents::previewWidth, contents::previewHeight, QImage::Format_ARGB32_Premultiplied);
    canvas.fill(Qt::transparent);
    return canvas;
}

} // namespace

contents::contents()
    : _pstrIndexCount(QStringLiteral("zero"))
    , _pfontFont(defaultEntryFont())
    , _pstrMainType(QStringLiteral("zero"))
    , _imageGeneration(++lastGeneration)
{
}

QString contents::indexCount() const
{
    return _indexIsNumber ? QString::number(_indexNumber) : _pstrIndexCount;
}

void contents::setIndexCount(const QString &indexCount)
{
    bool ok = false;
    const int number = indexCount.toInt(&ok);
    _indexIsNumber = ok && QString::number(number) == indexCount;
    _indexNumber = _indexIsNumber ? number : 0;
    _pstrIndexCount = _indexIsNumber ? QString() : indexCount;
}

void contents::setContent(const QString &text)
{
    QByteArray utf8 = text.toUtf8();
    // The encoder reserves room for the worst case.
    utf8.squeeze();
    setContentUtf8(utf8);
}

void contents::setContentUtf8(const QByteArray &utf8)
{
    _contentOrigUtf8 = utf8;
    changed();
}

QString contents::content() const
{
    return displayString(_contentOrigUtf8);
}

QString contents::displayString(QByteArrayView utf8)
{
    // Every code point takes at most four bytes and at least one UTF-16
    // unit, so this prefix decodes to more than contentLimit units whenever
    // the text is longer than that: a 50 MB text is not decoded whole.
    constexpr qsizetype prefixBytes = (contentLimit + 2) * 4;
    const QString prefix = QString::fromUtf8(utf8.first(std::min(utf8.size(), prefixBytes)));
    if (prefix.size() <= contentLimit)
        return prefix;
    return prefix.left(contentLimit) + QStringLiteral(" ...");
}

void contents::setDatas(const Datas &datas)
{
    _pdicDatas = datas;
    _pdicDatas.squeeze();
    // A backup file holds the text once per text type, and files written
    // before pictures were read once hold their BMP under three names.
    QList<QByteArray *> values;
    for (auto &pair : _pdicDatas)
        values.append(&pair.second);
    values.append(&_contentOrigUtf8);
    shareEqualBuffers(values);

    int icon = -1;
    if (_parraytypes.contains(PasteboardType::String)) {
        icon = IconText;
        if (_contentOrigUtf8.startsWith(linkPrefix))
            icon = IconUrl;
    }
    if (_parraytypes.contains(PasteboardType::Url))
        icon = IconUrl;
    if (_parraytypes.contains(PasteboardType::Tiff))
        icon = IconImage;
    if (icon < 0)
        icon = IconUnknown;
    _typeImageIndex = icon;

    // The first preview is the text canvas; image() draws it when asked.
    ensureContentsFont();
    _showsPicture = false;
    changed();
}

QImage contents::typeImage() const
{
    return _typeImageIndex < 0 ? QImage() : getTypeImage(_typeImageIndex);
}

QImage contents::image() const
{
    return _showsPicture ? renderPicturePreview() : renderCanvasPreview();
}

QImage contents::renderPicturePreview() const
{
    const QByteArray bytes = _pdicDatas.value(PasteboardType::Tiff);
    if (bytes.isEmpty())
        return {};
    QBuffer buffer;
    buffer.setData(bytes);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    if (size.isValid() && size.height() > 0) {
        QSize scaled(qRound(qreal(size.width()) * previewHeight / size.height()), previewHeight);
        if (scaled.width() > maxPictureWidth)
            scaled = size.scaled(maxPictureWidth, previewHeight, Qt::KeepAspectRatio);
        reader.setScaledSize(scaled.expandedTo(QSize(1, 1)));
    }
    return reader.read();
}

QImage contents::renderCanvasPreview() const
{
    QImage canvas = blankCanvas();
    QPainter painter(&canvas);
    if (_addressPicture) {
        const QImage picture = QImage::fromData(*_addressPicture);
        if (!picture.isNull() && picture.height() > 0) {
            const qreal w = picture.width();
            const qreal h = picture.height();
            painter.save();
            painter.setCompositionMode(QPainter::CompositionMode_Source);
            painter.setOpacity(addressPictureOpacity);
            painter.setRenderHint(QPainter::SmoothPixmapTransform);
            painter.drawImage(QRectF(0, 0, w / h * previewHeight, previewHeight), picture, QRectF(0, 0, w, h));
            painter.restore();
        }
    }
    if (_parraytypes.contains(PasteboardType::String)) {
        painter.setFont(contentsFont());
        painter.setPen(Qt::black);
        painter.drawText(QRectF(0, 0, previewWidth, previewHeight),
                         Qt::AlignLeft | Qt::AlignTop | Qt::TextWordWrap, content());
    }
    painter.end();
    return canvas;
}

std::optional<QUrl> contents::addressOf(const QString &text)
{
    const QUrl url(text, QUrl::StrictMode);
    if (!url.isValid() || url.scheme().isEmpty())
        return std::nullopt;
    return url;
}

void contents::setImageLater(ImageFetcher *fetcher)
{
    if (bSetImage)
        return;
    if (iTryingToSetImageNum >= maxImageAttempts) {
        bSetImage = true;
        return;
    }
    ++iTryingToSetImageNum;

    if (_parraytypes.contains(PasteboardType::Tiff)) {
        _showsPicture = true;
        bSetImage = true;
        changed();
        return;
    }

    if (_showsPicture) {
        _showsPicture = false;
        changed();
    }
    // bSetImage is false here; it turns true only when a picture arrives.
    if (_parraytypes.contains(PasteboardType::Url) || _parraytypes.contains(PasteboardType::Utf8PlainText))
        requestAddressPicture(fetcher);
    ensureContentsFont();
}

void contents::requestAddressPicture(ImageFetcher *fetcher)
{
    const std::optional<QUrl> url = addressOf(content());
    if (!url || !fetcher || _fetchPending)
        return;
    const std::weak_ptr<contents> self = weak_from_this();
    if (self.expired())
        return; // not shared: nobody could receive the answer
    _fetchPending = fetcher->fetch(*url, [self](const QByteArray &encodedPicture) {
        if (const std::shared_ptr<contents> entry = self.lock())
            entry->pictureArrived(encodedPicture);
    });
}

void contents::pictureArrived(const QByteArray &encodedPicture)
{
    _fetchPending = false;
    if (bSetImage || encodedPicture.isEmpty())
        return;
    QBuffer buffer;
    buffer.setData(encodedPicture);
    QImageReader reader(&buffer);
    if (!reader.canRead() || !reader.size().isValid() || reader.size().height() <= 0)
        return;
    _addressPicture = std::make_unique<QByteArray>(encodedPicture);
    bSetImage = true;
    changed();
}

void contents::needUpdateImage()
{
    bSetImage = false;
    iTryingToSetImageNum = 0;
    // The font may have changed: whatever was rendered is out of date.
    changed();
}

bool contents::hasSameDataTo(const contents &other) const
{
    return _pdicDatas == other._pdicDatas;
}

void contents::restoreFullText()
{
    const QByteArray text = _pdicDatas.value(PasteboardType::String);
    if (text.size() > _contentOrigUtf8.size() && displayString(text) == displayString(_contentOrigUtf8))
        _contentOrigUtf8 = text;
}

void contents::changed()
{
    _imageGeneration = ++lastGeneration;
}

QFont contents::contentsFont()
{
    return contFont.value_or(QFont());
}

bool contents::hasContentsFont()
{
    return contFont.has_value();
}

void contents::setContentsFont(const QFont &font)
{
    if (contFont)
        contFont = font;
}

void contents::resetContentsFont()
{
    contFont.reset();
}

QImage contents::getTypeImage(int index)
{
    static const std::array<QString, 4> names = {
        QStringLiteral("icontypes_image"),
        QStringLiteral("icontypes_url"),
        QStringLiteral("icontypes_text"),
        QStringLiteral("icontypes_unknown"),
    };
    // The size the table and the preview were laid out for.
    constexpr QSize typeIconSize(32, 32);
    static std::array<QImage, 4> icon_images;
    Q_ASSERT(index >= 0 && index < int(icon_images.size()));
    for (std::size_t i = 0; i < icon_images.size(); ++i) {
        if (icon_images[i].isNull())
            icon_images[i] = ImageNamed::imageNamed(names[i], typeIconSize);
    }
    return icon_images[std::size_t(index)];
}

#pragma once

#include "history/typedatas.h"

#include <QByteArray>
#include <QFont>
#include <QImage>
#include <QString>
#include <QStringList>
#include <QUrl>

#include <memory>
#include <optional>

class ImageFetcher;

// One captured pasteboard state: every type with its raw data, plus what the
// interface needs to show it. Entries are shared (std::shared_ptr) between the
// history list, the views and the file writer.
//
// No bitmap is kept per entry: the entry keeps what its preview is made of
// (its display text, its picture's bytes, or the picture loaded from its
// address) and image() renders the 435 x 80 preview when something shows it.
class contents : public std::enable_shared_from_this<contents>
{
public:
    using Datas = TypeDatas;

    static constexpr int previewWidth = 435;
    static constexpr int previewHeight = 80;
    static constexpr int contentLimit = 140;
    static constexpr int maxImageAttempts = 4;

    enum TypeIcon { IconImage = 0, IconUrl = 1, IconText = 2, IconUnknown = 3 };

    contents();
    contents(const contents &) = delete;
    contents &operator=(const contents &) = delete;

    QString indexCount() const;
    void setIndexCount(const QString &indexCount);
    // The display string: the full text, cut after contentLimit UTF-16
    // units. It is made from the full text when asked, so that no entry
    // keeps a second copy of its first lines.
    QString content() const;
    // Sets the full text, from which the display string is cut.
    void setContent(const QString &text);
    // The same from UTF-8 bytes, as the pasteboard holds a text: the full
    // text shares the bytes.
    void setContentUtf8(const QByteArray &utf8);
    // The full text, decoded when asked. Searches read contentOrigUtf8():
    // the text is kept once, as UTF-8, and shares its buffer with the text
    // types' data when they hold the same bytes.
    QString contentOrig() const { return QString::fromUtf8(_contentOrigUtf8); }
    const QByteArray &contentOrigUtf8() const { return _contentOrigUtf8; }
    void setContentOrig(const QString &text) { _contentOrigUtf8 = text.toUtf8(); }
    const Datas &datas() const { return _pdicDatas; }
    // Stores the data (equal values in one buffer) and chooses the type icon;
    // call after setTypes() and setContent(), whose results it reads.
    void setDatas(const Datas &datas);
    const QStringList &types() const { return _parraytypes; }
    void setTypes(const QStringList &types) { _parraytypes = TypeDatas::sharedNames(types); }
    const QFont &font() const { return _pfontFont; }
    void setFont(const QFont &font) { _pfontFont = font; }
    const QString &mainType() const { return _pstrMainType; }
    void setMainType(const QString &mainType) { _pstrMainType = TypeDatas::sharedName(mainType); }

    int typeImageIndex() const { return _typeImageIndex; }
    QImage typeImage() const;

    // The preview, rendered now from what the entry keeps.
    QImage image() const;
    // Changes whenever what image() would draw changes; lets a cache of
    // rendered previews know when its copy is stale.
    quint64 imageGeneration() const { return _imageGeneration; }

    // One more attempt at a final preview (at most maxImageAttempts). A
    // picture named by the entry's address is loaded through fetcher, off
    // the main thread; a null fetcher loads none.
    void setImageLater(ImageFetcher *fetcher = nullptr);
    void needUpdateImage();
    bool isImageSet() const { return bSetImage; }
    int imageAttempts() const { return iTryingToSetImageNum; }

    bool hasSameDataTo(const contents &other) const;
    // A backup file keeps an entry's display string, not its full text. When
    // that string is what the entry's own text cuts to, the text is the
    // full text again, so that a search finds the entry after a save and an
    // open as it did before.
    void restoreFullText();

    // The address an entry's text names, for loading its picture or opening
    // it as a link: it must parse strictly and name a scheme, so that a bare
    // word is not taken for an address.
    static std::optional<QUrl> addressOf(const QString &text);

    // What content() shows for a full text.
    static QString displayString(QByteArrayView utf8);

    static QFont contentsFont();
    static bool hasContentsFont();
    static void setContentsFont(const QFont &font);
    // Forgets the shared font, as at start-up, so that the next preview
    // build creates it again.
    static void resetContentsFont();
    static QImage getTypeImage(int index);

private:
    void pictureArrived(const QByteArray &encodedPicture);
    void requestAddressPicture(ImageFetcher *fetcher);
    void changed();
    QImage renderPicturePreview() const;
    QImage renderCanvasPreview() const;

    // A history holds tens of thousands of entries: the fields are ordered
    // so that the small ones share words, and what few entries have sits
    // behind a pointer.

    // A sequence number is kept as the number it names when it is written
    // the usual way, else as its text.
    QString _pstrIndexCount;
    QByteArray _contentOrigUtf8;
    Datas _pdicDatas;
    QStringList _parraytypes;
    QFont _pfontFont;
    QString _pstrMainType;
    std::unique_ptr<QByteArray> _addressPicture; // encoded picture loaded from the entry's address
    quint64 _imageGeneration = 0;
    qint32 _indexNumber = 0;
    qint32 iTryingToSetImageNum = 0;
    qint32 _typeImageIndex = -1;
    bool _indexIsNumber = false;
    bool _showsPicture = false; // the preview is the entry's own "public.tiff" picture
    bool _fetchPending = false;
    bool bSetImage = false;
};

using Entry = std::shared_ptr<contents>;

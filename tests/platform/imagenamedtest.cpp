#include "platform/imagenamed.h"

#include <QPixmap>

#include <gtest/gtest.h>

namespace {

// How many opaque pixels of the picture pass the test; without one, all of them.
int opaquePixels(const QImage &image, bool (*test)(QRgb) = [](QRgb) { return true; })
{
    int count = 0;
    const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < argb.height(); ++y)
        for (int x = 0; x < argb.width(); ++x)
            count += qAlpha(argb.pixel(x, y)) == 255 && test(argb.pixel(x, y));
    return count;
}

bool isRed(QRgb p) { return qRed(p) > 180 && qGreen(p) < 100 && qBlue(p) < 100; }

// Each picture fills a good part of its square at every size the desktop asks for, and under the name of the file
// it once was; its icon draws anew at each size instead of scaling one bitmap.
TEST(ImageNamed, EachPictureDrawsAtEverySizeAndUnderItsFileName)
{
    for (const QString name : {"icontypes_image", "icontypes_url", "icontypes_text", "icontypes_unknown", "qs_rec_on_003",
                               "qs_rec_off_003", "qs_menu_item_rec_on", "qs_menu_item_rec_off", "quillstash"}) {
        SCOPED_TRACE(name.toStdString());
        const QIcon icon = ImageNamed::iconNamed(name);
        for (int side : {16, 22, 64}) {
            const QImage image = ImageNamed::imageNamed(name, QSize(side, side));
            EXPECT_EQ(image.size(), QSize(side, side));
            EXPECT_GT(opaquePixels(image), side * side / 5) << side;
            EXPECT_EQ(ImageNamed::imageNamed(name + QStringLiteral(".png"), QSize(side, side)), image) << side;
            EXPECT_EQ(icon.pixmap(QSize(side, side), 1.0).toImage(), image) << side;
        }
        const QImage sharp = ImageNamed::imageNamed(name, QSize(22, 22), 2.0);
        EXPECT_EQ(sharp.size(), QSize(44, 44));
        EXPECT_EQ(sharp.devicePixelRatio(), 2.0);
        EXPECT_EQ(icon.pixmap(QSize(22, 22), 2.0).size(), QSize(44, 44));
    }
}

// The window's recording sign shows red and its stopped sign none (the tray's pair is looked at in the desktop tests).
TEST(ImageNamed, RecordingSignsDiffer)
{
    EXPECT_GE(opaquePixels(ImageNamed::imageNamed(QStringLiteral("qs_rec_on_003"), QSize(22, 22)), isRed), 20);
    EXPECT_EQ(opaquePixels(ImageNamed::imageNamed(QStringLiteral("qs_rec_off_003"), QSize(22, 22)), isRed), 0);
}

} // namespace

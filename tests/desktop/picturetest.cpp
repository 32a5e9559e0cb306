#include "desktop/desktoptest.h"

#include "app/controller.h"
#include "app/desktopplatform.h"
#include "documents/backupfile.h"
#include "history/historylist.h"
#include "platform/pasteboard.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QTest>

namespace {

const QString gtkOwnerScript = QDir::cleanPath(QStringLiteral(QUILLSTASH_TEST_DATA_DIR "/../support/gtkpictureowner.py"));

// Opaque, since BMP and JPEG drop the alpha, with detail in every pixel.
QImage testPicture()
{
    QImage image(320, 200, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 255 / 319, y * 255 / 199, (x ^ y) & 0xff));
    }
    return image;
}

QImage decoded(const QByteArray &bytes, const char *format)
{
    return QImage::fromData(bytes, format).convertToFormat(QImage::Format_RGB32);
}

} // namespace

using PictureTest = DesktopTest;

// GTK offers a copied picture under fourteen names; the entry keeps PNG and
// TIFF, and once restored serves the common encodings again, made from its
// own picture, while what it stored comes back byte for byte.
TEST_F(PictureTest, picturesKeepTheirLosslessEncodingsAndAreServedInEveryCommonOne)
{
    const QString pictureFile = m_home.filePath(QStringLiteral("picture.png"));
    ASSERT_TRUE(testPicture().save(pictureFile));
    QBuffer bmp;
    ASSERT_TRUE(bmp.open(QIODevice::WriteOnly) && testPicture().save(&bmp, "BMP"));

    QProcess gtkOwner;
    const struct { const char *owner; QStringList types; } rows[] = {
        {"gtk", {"public.png", "public.tiff"}}, {"image/bmp only", {"public.tiff", "image/bmp"}}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.owner);
        DesktopPlatform platform;
        const PlatformServices services = platform.services();
        ApplicationRegistries registries(services.defaults, services.loginItems, services.appURL);
        registries.setSoundEnable(false);
        Controller controller(services, registries);
        controller.recording().setAutomaticRec(true);

        ASSERT_TRUE(clearClipboard());
        if (row.types.contains(QStringLiteral("image/bmp"))) {
            ASSERT_TRUE(copy(bmp.data(), QStringLiteral("image/bmp")));
        } else {
            gtkOwner.start(QStringLiteral("/usr/bin/python3"), {gtkOwnerScript, pictureFile});
            ASSERT_TRUE(QTest::qWaitFor([&] { return gtkOwner.readAllStandardOutput().contains("owner"); }, 10000))
                << "the GTK owner did not start (python3-gi, gir1.2-gtk-3.0): " << gtkOwner.readAllStandardError().toStdString();
        }
        ASSERT_TRUE(QTest::qWaitFor([&] { return !services.pasteboard.types().isEmpty(); }, 5000));
        controller.MainTimer();
        ASSERT_EQ(controller.nsac().allObjects().size(), 1) << "the tick did not capture the picture";
        const Entry entry = controller.nsac().allObjects().first();
        EXPECT_EQ(entry->types(), row.types);
        EXPECT_EQ(decoded(entry->datas().value(QStringLiteral("public.tiff")), "TIFF"), testPicture());
        gtkOwner.kill();
        gtkOwner.waitForFinished();

        ASSERT_TRUE(clearClipboard());
        controller.setGeneralPasteboard(entry);
        ASSERT_TRUE(waitForOwner()) << "the restore did not take the clipboard";
        EXPECT_EQ(services.pasteboard.types(), row.types + QStringList{QStringLiteral("quillstash.ignore")});
        const QStringList offered = QString::fromUtf8(read(QStringLiteral("TARGETS")).value_or("")).split(u'\n');
        for (const char *format : {"image/png", "image/jpeg", "image/bmp", "image/tiff", "quillstash.ignore"})
            EXPECT_TRUE(offered.contains(QLatin1String(format))) << "not offered: " << format;
        const struct { const char *type, *format, *reader; } lossless[] = {
            {"public.png", "image/png", "PNG"}, {"public.tiff", "image/tiff", "TIFF"}, {"image/bmp", "image/bmp", "BMP"}};
        for (const auto &[type, format, reader] : lossless) {
            const std::optional<QByteArray> served = read(QLatin1String(format));
            ASSERT_TRUE(served) << format;
            if (entry->types().contains(QLatin1String(type)))
                EXPECT_EQ(*served, entry->datas().value(QLatin1String(type))) << format << " differs from the stored one";
            else
                EXPECT_EQ(decoded(*served, reader), testPicture()) << format << " is not the picture";
        }
        const QImage jpeg = decoded(read(QStringLiteral("image/jpeg")).value_or(""), "JPEG");
        EXPECT_EQ(jpeg.size(), testPicture().size()) << "image/jpeg is not the picture";
    }
}

// A backup file holds the text once per text type; loaded, they share memory.
TEST(PictureMemory, anEntryLoadedFromABackupFileKeepsEqualBytesOnce)
{
    const QString utf8 = QStringLiteral("public.utf8-plain-text"), string = QStringLiteral("NSStringPboardType");
    auto entry = std::make_shared<contents>();
    entry->setTypes({utf8, string});
    entry->setDatas({{utf8, "twice the same text"}, {string, "twice the same text"}});
    qint32 counter = 0;
    const QList<Entry> loaded = BackupFile::decode(BackupFile::encode({entry}), counter);
    ASSERT_EQ(loaded.size(), 1);
    const contents::Datas &datas = loaded.first()->datas();
    EXPECT_EQ(datas.value(utf8), "twice the same text");
    EXPECT_EQ(datas.value(utf8).constData(), datas.value(string).constData()) << "two buffers for the same text";
}

#include "desktop/desktoptest.h"

#include "app/controller.h"
#include "app/desktopplatform.h"
#include "history/historylist.h"
#include "platform/pasteboard.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QBuffer>
#include <QImage>
#include <QMimeData>
#include <QTest>

using RestoreTest = DesktopTest;

// No outside command restores yet: the program's objects run on the real services, the tick driven by hand.
TEST_F(RestoreTest, aPictureComesBackByteForByteAndInEveryCommonEncodingAndIsNotCapturedAgain)
{
    // BMP and JPEG drop the alpha.
    const QImage picture = QImage::fromData(pngPicture()).convertToFormat(QImage::Format_RGB32);
    QBuffer bmp;
    ASSERT_TRUE(bmp.open(QIODevice::WriteOnly) && picture.save(&bmp, "BMP"));
    const struct { QString format; QByteArray data; QStringList types; } rows[] = {
        {"image/png", pngPicture(), {"public.tiff", "public.png"}},
        {"image/bmp", bmp.data(), {"public.tiff", "image/bmp"}},
    };
    DesktopPlatform platform;
    const PlatformServices services = platform.services();
    ApplicationRegistries registries(services.defaults, services.loginItems, services.appURL);
    registries.setSoundEnable(false);
    Controller controller(services, registries);
    controller.recording().setAutomaticRec(true);
    for (const auto &row : rows) {
        SCOPED_TRACE(row.format.toStdString());
        const qsizetype entries = controller.nsac().allObjects().size() + 1;
        auto *mime = new QMimeData;
        mime->setData(row.format, row.data);
        ASSERT_TRUE(ownClipboard(mime));
        ASSERT_TRUE(QTest::qWaitFor([&] { return services.pasteboard.types() == row.types; }, 5000));
        controller.MainTimer();
        ASSERT_EQ(controller.nsac().allObjects().size(), entries) << "the tick did not capture the state";

        ASSERT_TRUE(clearClipboard());
        controller.setGeneralPasteboard(controller.nsac().allObjects().last());
        EXPECT_EQ(read(row.format), row.data) << "differs from what was copied";
        // Not captured, neither at once nor once the reader has seen it.
        controller.MainTimer();
        QTest::qWait(500);
        controller.MainTimer();
        EXPECT_EQ(controller.nsac().allObjects().size(), entries) << "the program captured its own restore";
        for (const char *encoding : {"png", "tiff", "bmp", "jpeg"}) {
            const QByteArray target = QByteArray("image/") + encoding;
            const QImage served = QImage::fromData(read(QLatin1String(target)), encoding).convertToFormat(QImage::Format_RGB32);
            // JPEG is lossy: its size is all it must keep.
            if (target == "image/jpeg")
                EXPECT_EQ(served.size(), picture.size());
            else
                EXPECT_EQ(served, picture) << encoding;
        }
    }
}

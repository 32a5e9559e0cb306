#include "desktop/desktoptest.h"

#include "app/controller.h"
#include "app/desktopplatform.h"
#include "history/historylist.h"
#include "platform/pasteboard.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QMimeData>
#include <QTest>

#include <map>

using RestoreTest = DesktopTest;

// Restoring has no command from outside the program yet, so this test builds
// the program's own objects on the real desktop services, as main() does, and
// drives the tick by hand.
TEST_F(RestoreTest, everyFormatComesBackByteForByteAndIsNotCapturedAgain)
{
    QByteArray everyByte;
    for (int i = 0; i < 4 * 256; ++i)
        everyByte.append(char(i));
    const QString ownFormat = QStringLiteral("application/x-quillstash-probe");
    const std::map<QString, QByteArray> formats{
        {QStringLiteral("text/plain"), QStringLiteral("Restored text, ünïcödé ✓").toUtf8()},
        {QStringLiteral("text/html"), "<p>Restored <b>html</b></p>"},
        {ownFormat, everyByte},
    };

    DesktopPlatform platform;
    const PlatformServices services = platform.services();
    ApplicationRegistries registries(services.defaults, services.loginItems, services.appURL);
    Controller controller(services, registries);
    controller.notices().setUp();
    controller.recording().setAutomaticRec(true);

    auto *mime = new QMimeData;
    for (const auto &[format, data] : formats)
        mime->setData(format, data);
    ASSERT_TRUE(ownClipboard(mime));
    ASSERT_TRUE(QTest::qWaitFor([&] { return services.pasteboard.types().contains(ownFormat); }, 5000));
    controller.MainTimer();
    ASSERT_EQ(controller.nsac().allObjects().size(), 1) << "the tick did not capture the state";
    const Entry entry = controller.nsac().allObjects().first();
    // The text counts twice, as public.utf8-plain-text and NSStringPboardType.
    ASSERT_EQ(entry->types().size(), 4) << entry->types().join(u' ').toStdString();

    // Whoever owns the clipboard (this process), it must change hands.
    ASSERT_TRUE(clearClipboard());
    controller.setGeneralPasteboard(entry);
    ASSERT_TRUE(waitForOwner()) << "the restore did not take the clipboard";
    const std::optional<QByteArray> listed = read(QStringLiteral("TARGETS"));
    ASSERT_TRUE(listed);
    const QStringList offered = QString::fromUtf8(*listed).split(u'\n', Qt::SkipEmptyParts);
    EXPECT_TRUE(offered.contains(QStringLiteral("quillstash.ignore"))) << listed->toStdString();
    for (const QString &type : entry->types()) {
        SCOPED_TRACE(type.toStdString());
        const QString target = readBackTargets.count(type) ? readBackTargets.at(type) : type;
        const QString format = target == QStringLiteral("UTF8_STRING") ? QStringLiteral("text/plain") : target;
        ASSERT_TRUE(formats.count(format)) << "captured, never copied";
        ASSERT_TRUE(offered.contains(target)) << "not offered: " << target.toStdString();
        EXPECT_EQ(read(target), formats.at(format)) << "restored data differ";
    }

    // The program's own write is not captured, neither at once nor once the
    // reader has seen it.
    controller.MainTimer();
    EXPECT_EQ(controller.nsac().allObjects().size(), 1);
    QTest::qWait(500);
    controller.MainTimer();
    EXPECT_EQ(controller.nsac().allObjects().size(), 1) << "the program captured its own restore";
}

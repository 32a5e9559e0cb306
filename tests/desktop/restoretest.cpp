#include "desktop/desktoptest.h"

#include "app/controller.h"
#include "app/desktopplatform.h"
#include "history/historylist.h"
#include "platform/pasteboard.h"
#include "recording/notices.h"
#include "recording/recordingswitch.h"
#include "settings/applicationregistries.h"

#include <QBuffer>
#include <QClipboard>
#include <QGuiApplication>
#include <QImage>
#include <QMimeData>
#include <QTest>

#include <algorithm>
#include <map>

namespace {

const QString ignoreTarget = QStringLiteral("quillstash.ignore");

// The X11 target a pasteboard type is offered under when restored.
QString targetFor(const QString &type)
{
    static const std::map<QString, QString> targets{
        {QStringLiteral("public.utf8-plain-text"), QStringLiteral("UTF8_STRING")},
        {QStringLiteral("NSStringPboardType"), QStringLiteral("UTF8_STRING")},
        {QStringLiteral("public.html"), QStringLiteral("text/html")},
        {QStringLiteral("public.rtf"), QStringLiteral("text/rtf")},
        {QStringLiteral("public.png"), QStringLiteral("image/png")},
        {QStringLiteral("public.tiff"), QStringLiteral("image/tiff")},
        {QStringLiteral("public.url"), QStringLiteral("text/uri-list")},
    };
    const auto found = targets.find(type);
    return found == targets.end() ? type : found->second;
}

QByteArray pngPicture()
{
    QImage image(9, 6, QImage::Format_ARGB32);
    image.fill(qRgba(20, 200, 40, 255));
    image.setPixel(4, 3, qRgba(0, 0, 255, 128));
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

QByteArray everyByte()
{
    QByteArray bytes;
    for (int round = 0; round < 4; ++round) {
        for (int value = 0; value < 256; ++value)
            bytes.append(char(value));
    }
    return bytes;
}

} // namespace

// Restoring has no command from outside the program yet, so this test builds
// the program's own objects on the real desktop services, as main() does, and
// drives the tick by hand.
class RestoreTest : public DesktopTest
{
protected:
    void SetUp() override
    {
        DesktopTest::SetUp();
        if (HasFatalFailure())
            return;
        m_platform = std::make_unique<DesktopPlatform>();
        const PlatformServices services = m_platform->services();
        m_registries = std::make_unique<ApplicationRegistries>(services.defaults, services.loginItems, services.appURL);
        m_controller = std::make_unique<Controller>(services, *m_registries);
        m_controller->notices().setUp();
        m_controller->recording().setAutomaticRec(true);
    }

    void TearDown() override
    {
        m_controller.reset();
        m_registries.reset();
        m_platform.reset();
        DesktopTest::TearDown();
    }

    Pasteboard &pasteboard() const { return m_platform->services().pasteboard; }

    // Waits until the pasteboard's state lists every one of the types.
    bool waitForTypes(const QStringList &types)
    {
        return QTest::qWaitFor(
            [&] {
                const QStringList now = pasteboard().types();
                return std::all_of(types.cbegin(), types.cend(), [&](const QString &t) { return now.contains(t); });
            },
            5000);
    }

    // Captures the current state with one tick, restores it and reads every
    // type back from the clipboard as another program would.
    void captureRestoreAndReadBack(const std::map<QString, QByteArray> &expected)
    {
        HistoryList &nsac = m_controller->nsac();
        m_controller->MainTimer();
        ASSERT_EQ(nsac.allObjects().size(), 1) << "the tick did not capture the state";
        const Entry entry = nsac.allObjects().first();
        for (const auto &[type, data] : expected) {
            SCOPED_TRACE(type.toStdString());
            ASSERT_TRUE(entry->types().contains(type));
            EXPECT_EQ(entry->datas().value(type), data) << "captured data differ";
        }

        // Whoever owned the clipboard (this process, perhaps), it must change hands.
        ASSERT_TRUE(clearClipboard());
        m_controller->setGeneralPasteboard(entry);
        ASSERT_TRUE(m_xclip->waitForOwnerChange(0)) << "the restore did not take the clipboard";

        const QStringList targets = Xclip::targets();
        const std::string listed = targets.join(QStringLiteral(", ")).toStdString();
        EXPECT_TRUE(targets.contains(ignoreTarget)) << listed;
        for (const QString &type : entry->types()) {
            SCOPED_TRACE(type.toStdString());
            const QString target = targetFor(type);
            ASSERT_TRUE(targets.contains(target)) << "not offered: " << target.toStdString() << " in " << listed;
            const std::optional<QByteArray> read = Xclip::read(target);
            ASSERT_TRUE(read) << "xclip could not read " << target.toStdString();
            EXPECT_EQ(*read, entry->datas().value(type)) << "restored data differ";
        }

        const auto changed = waitForNotice(QStringLiteral("Change Pasteboard"), 2000);
        ASSERT_TRUE(changed) << "no notice for the restore";
        EXPECT_EQ(changed->body, entry->content().toHtmlEscaped());
        EXPECT_EQ(category(*changed), QStringLiteral("ChangePasteboardNotification"));

        // The program's own write is never captured, neither at once nor when
        // the reader has seen the owner change.
        m_controller->MainTimer();
        EXPECT_EQ(nsac.allObjects().size(), 1);
        QTest::qWait(500);
        m_controller->MainTimer();
        EXPECT_EQ(nsac.allObjects().size(), 1) << "the program captured its own restore";
        EXPECT_TRUE(pasteboard().types().contains(ignoreTarget));
    }

    std::unique_ptr<DesktopPlatform> m_platform;
    std::unique_ptr<ApplicationRegistries> m_registries;
    std::unique_ptr<Controller> m_controller;
};

TEST_F(RestoreTest, stateWithSeveralFormatsComesBackByteForByte)
{
    const QByteArray text = QStringLiteral("Restored text, ünïcödé ✓").toUtf8();
    const QByteArray html = "<p>Restored <b>html</b></p>";
    const QByteArray png = pngPicture();
    const QByteArray binary = everyByte();
    const QString ownFormat = QStringLiteral("application/x-quillstash-probe");

    // This process owns the clipboard with four formats, as an editor would.
    auto *mime = new QMimeData;
    mime->setData(QStringLiteral("text/plain"), text);
    mime->setData(QStringLiteral("text/html"), html);
    mime->setData(QStringLiteral("image/png"), png);
    mime->setData(ownFormat, binary);
    ASSERT_TRUE(ownClipboard(mime));
    ASSERT_TRUE(waitForTypes({QStringLiteral("public.utf8-plain-text"), QStringLiteral("public.html"),
                              QStringLiteral("public.png"), ownFormat}))
        << "types seen: " << pasteboard().types().join(QStringLiteral(", ")).toStdString();

    captureRestoreAndReadBack({
        {QStringLiteral("public.utf8-plain-text"), text},
        {QStringLiteral("NSStringPboardType"), text},
        {QStringLiteral("public.html"), html},
        {QStringLiteral("public.png"), png},
        {ownFormat, binary},
    });

    // A picture offered without TIFF gains one, holding the same picture.
    const Entry entry = m_controller->nsac().allObjects().first();
    const QImage tiff = QImage::fromData(entry->datas().value(QStringLiteral("public.tiff")), "TIFF");
    ASSERT_FALSE(tiff.isNull()) << "no TIFF picture in the entry";
    EXPECT_EQ(tiff.convertToFormat(QImage::Format_ARGB32),
              QImage::fromData(png, "PNG").convertToFormat(QImage::Format_ARGB32));
}

TEST_F(RestoreTest, pngFromXclipComesBackByteForByte)
{
    const QByteArray png = pngPicture();
    ASSERT_TRUE(m_xclip->copy(png, QStringLiteral("image/png")));
    ASSERT_TRUE(waitForTypes({QStringLiteral("public.png"), QStringLiteral("public.tiff")}))
        << "types seen: " << pasteboard().types().join(QStringLiteral(", ")).toStdString();

    captureRestoreAndReadBack({{QStringLiteral("public.png"), png}});
}

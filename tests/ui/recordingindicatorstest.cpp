#include "windowfixture.h"

#include "platform/imagenamed.h"
#include "ui/recordingindicators.h"
#include "ui/statusitem.h"

#include <QAction>

namespace {

// Whether the icon draws the named picture at 32 x 32.
bool draws(const QIcon &icon, const char *name)
{
    const auto premultiplied = QImage::Format_ARGB32_Premultiplied;
    return icon.pixmap(QSize(32, 32)).toImage().convertToFormat(premultiplied)
        == ImageNamed::imageNamed(QString::fromLatin1(name), QSize(32, 32)).convertToFormat(premultiplied);
}

class RecordingIndicatorsTest : public WindowFixture
{
protected:
    StatusItem statusItem{items.trayMenu()};
    QAction *b_on = items.action(MenuItems::ToggleRecording);
    RecordingIndicators indicators{ctrl, b_on, statusItem};
};

TEST_F(RecordingIndicatorsTest, ButtonShowsTheOppositePictureAndTheTickBlinksOnlyWhileRecording)
{
    indicators.recordingAnnounced(true);
    EXPECT_TRUE(ctrl.recIconStatus());
    EXPECT_TRUE(draws(b_on->icon(), "qs_rec_off_003.png"));
    indicators.updateOnOffSign();
    EXPECT_FALSE(ctrl.viewOnOff());
    indicators.updateOnOffSign();
    EXPECT_TRUE(ctrl.viewOnOff());
    indicators.updateOnOffSign();

    indicators.recordingAnnounced(false);
    EXPECT_FALSE(ctrl.recIconStatus());
    EXPECT_TRUE(draws(b_on->icon(), "qs_rec_on_003.png"));
    // The desktop tests watch the tray's picture change; each tick names it again, and the tray must keep it.
    indicators.updateOnOffSign();
    EXPECT_FALSE(ctrl.viewOnOff());
    const qint64 icon = statusItem.icon().cacheKey();
    indicators.updateOnOffSign();
    EXPECT_EQ(statusItem.icon().cacheKey(), icon);
}

} // namespace

#include "app/desktopplatform.h"

#include "platform/x11/canberrasoundplayer.h"
#include "platform/x11/dbusnoticeservice.h"
#include "platform/x11/desktopworkspace.h"
#include "platform/x11/networkimagefetcher.h"
#include "platform/x11/qtpanels.h"
#include "platform/x11/qsettingsuserdefaults.h"
#include "platform/x11/systemclock.h"
#include "platform/x11/unitydock.h"
#include "platform/x11/xcbhotkeys.h"
#include "platform/x11/x11pasteboard.h"
#include "platform/x11/xdgloginitems.h"

#include <QCoreApplication>

DesktopPlatform::DesktopPlatform()
    : m_pasteboard(std::make_unique<X11Pasteboard>())
    , m_defaults(std::make_unique<QSettingsUserDefaults>())
    , m_loginItems(std::make_unique<XdgLoginItems>())
    , m_noticeService(std::make_unique<DBusNoticeService>())
    , m_soundPlayer(std::make_unique<CanberraSoundPlayer>())
    , m_dock(std::make_unique<UnityDock>())
    , m_clock(std::make_unique<SystemClock>())
    , m_workspace(std::make_unique<DesktopWorkspace>())
    , m_imageFetcher(std::make_unique<NetworkImageFetcher>())
    , m_panels(std::make_unique<QtPanels>())
    , m_hotKeys(std::make_unique<XcbHotKeys>())
{
}

DesktopPlatform::~DesktopPlatform() = default;

PlatformServices DesktopPlatform::services() const
{
    return PlatformServices{*m_pasteboard, *m_defaults, *m_loginItems, *m_noticeService, *m_soundPlayer,
                            *m_dock,       *m_clock,    *m_workspace,  *m_panels,       *m_hotKeys,
                            m_imageFetcher.get(),
                            QUrl::fromLocalFile(QCoreApplication::applicationFilePath())};
}

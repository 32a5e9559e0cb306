#pragma once

#include "app/platformservices.h"

#include <memory>

class CanberraSoundPlayer;
class DBusNoticeService;
class DesktopWorkspace;
class NetworkImageFetcher;
class QtPanels;
class QSettingsUserDefaults;
class SystemClock;
class UnityDock;
class XcbHotKeys;
class X11Pasteboard;
class XdgLoginItems;

// Owns the real desktop services the running program uses.
class DesktopPlatform
{
public:
    DesktopPlatform();
    ~DesktopPlatform();
    DesktopPlatform(const DesktopPlatform &) = delete;
    DesktopPlatform &operator=(const DesktopPlatform &) = delete;

    PlatformServices services() const;

private:
    std::unique_ptr<X11Pasteboard> m_pasteboard;
    std::unique_ptr<QSettingsUserDefaults> m_defaults;
    std::unique_ptr<XdgLoginItems> m_loginItems;
    std::unique_ptr<DBusNoticeService> m_noticeService;
    std::unique_ptr<CanberraSoundPlayer> m_soundPlayer;
    std::unique_ptr<UnityDock> m_dock;
    std::unique_ptr<SystemClock> m_clock;
    std::unique_ptr<DesktopWorkspace> m_workspace;
    std::unique_ptr<NetworkImageFetcher> m_imageFetcher;
    std::unique_ptr<QtPanels> m_panels;
    std::unique_ptr<XcbHotKeys> m_hotKeys;
};

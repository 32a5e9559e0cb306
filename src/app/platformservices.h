#pragma once

#include <QUrl>

class Clock;
class Dock;
class HotKeys;
class ImageFetcher;
class LoginItems;
class NoticeService;
class Panels;
class Pasteboard;
class SoundPlayer;
class UserDefaults;
class Workspace;

// The desktop services the program runs with, handed to the controller: the
// real ones in the running program, fakes in unit tests.
struct PlatformServices
{
    Pasteboard &pasteboard;
    UserDefaults &defaults;
    LoginItems &loginItems;
    NoticeService &noticeService;
    SoundPlayer &soundPlayer;
    Dock &dock;
    Clock &clock;
    Workspace &workspace;
    Panels &panels;
    HotKeys &hotKeys;
    ImageFetcher *imageFetcher = nullptr;
    QUrl appURL;
};

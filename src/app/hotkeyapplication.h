#pragma once

#include <QApplication>

#include <functional>
#include <memory>

class ApplicationRegistries;
class Controller;
class DesktopPlatform;
class HotKeyRegistry;

// The application object: brings up the desktop services and the preferences
// store before anything else, owns the global hot keys, and as it quits
// releases them and writes the preferences back.
class HotKeyApplication : public QApplication
{
    Q_OBJECT

public:
    HotKeyApplication(int &argc, char **argv);
    ~HotKeyApplication() override;

    // The desktop services and the preferences store. Separate from the
    // constructor so that a launch that only hands its file to the running
    // program touches neither.
    void startServices();

    DesktopPlatform &platform() const { return *m_platform; }
    ApplicationRegistries &registries() const { return *m_registries; }

    // Runs as the program quits, before the preferences are written.
    void setWillTerminate(std::function<void()> willTerminate) { m_willTerminate = std::move(willTerminate); }

    // The controller, asked whether the history is saved and told to save it.
    void setDelegate(Controller *delegate) { m_delegate = delegate; }
    Controller *delegate() const { return m_delegate; }

    // Every quit of the user's (the menus, the session ending): when the
    // history has changes not saved, asks whether to save them first and
    // lets the user cancel; then quits as terminateWithoutAsking() does.
    void terminate(QObject *sender = nullptr);
    // Ends the program the orderly way: hot keys released, preferences
    // written, then quit. SIGINT and SIGTERM come here.
    void terminateWithoutAsking();

    // Global hot keys (see HotKeyRegistry). A press calls `selector`, a slot
    // or invokable method of `target` without argument. Returns 0 when the
    // desktop refuses the combination, and before startServices().
    quintptr registerHotKeyCode(quint32 keyCode, quint64 cocoaModifiers, QObject *target, const char *selector);
    void unregisterHotKey(quintptr hotKeyRef);
    void clearAllHotKey();
    // Releases every hot key and writes the preferences; later calls do nothing.
    void removeObjects();

private:
    // False when the user cancels the quit.
    bool mayQuit();
    void watchQuitSignals();

    std::unique_ptr<DesktopPlatform> m_platform;
    std::unique_ptr<ApplicationRegistries> m_registries;
    std::unique_ptr<HotKeyRegistry> m_hotKeyRegistry;
    // The controller keeps using the preferences store until it is destroyed,
    // so removeObjects() writes it once and leaves it in place.
    bool m_registriesWritten = false;
    std::function<void()> m_willTerminate;
    bool m_terminated = false;
    bool m_asking = false;
    Controller *m_delegate = nullptr;
};

#pragma once

#include <QApplication>

#include <functional>
#include <memory>

class ApplicationRegistries;
class DesktopPlatform;

// The application object: brings up the desktop services and the preferences
// store before anything else, and writes the preferences back as it quits.
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

    // Ends the program the orderly way: preferences written, then quit.
    void terminate();

private:
    void watchQuitSignals();

    std::unique_ptr<DesktopPlatform> m_platform;
    std::unique_ptr<ApplicationRegistries> m_registries;
    std::function<void()> m_willTerminate;
    bool m_terminated = false;
};

#pragma once

#include <QApplication>

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

    DesktopPlatform &platform() const { return *m_platform; }
    ApplicationRegistries &registries() const { return *m_registries; }

    // Ends the program the orderly way: preferences written, then quit.
    void terminate();

private:
    void watchQuitSignals();

    std::unique_ptr<DesktopPlatform> m_platform;
    std::unique_ptr<ApplicationRegistries> m_registries;
    bool m_terminated = false;
};

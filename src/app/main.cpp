#include "app/controller.h"
#include "app/desktopplatform.h"
#include "app/hotkeyapplication.h"
#include "app/singleinstance.h"
#include "app/windowwiring.h"

#include <QTimer>

// quillstash [FILE]: FILE is a backup file to open, as a file manager passes
// it. While Quillstash runs, a launch hands FILE to the running program and
// ends at once; a launch without FILE then just ends.
int main(int argc, char **argv)
{
    HotKeyApplication app(argc, argv);
    const QString file = SingleInstance::fileArgument(app.arguments());
    SingleInstance instance;
    switch (instance.claim(file)) {
    case SingleInstance::Running:
        break;
    case SingleInstance::HandedOver:
        return 0;
    case SingleInstance::Failed:
        return 1;
    }

    app.startServices();
    // Closing the window only hides it; the program lives on in the tray.
    app.setQuitOnLastWindowClosed(false);
    Controller controller(app.platform().services(), app.registries());
    app.setDelegate(&controller);
    WindowWiring window(controller, [&app] { app.terminate(); });
    app.setWillTerminate([&controller] { controller.applicationWillTerminate(); });
    controller.applicationDidFinishLaunching();
    QObject::connect(&instance, &SingleInstance::fileHandedOver, &controller,
                     [&controller](const QString &path) { controller.applicationOpenFile(path); });
    if (!file.isEmpty())
        QTimer::singleShot(0, &controller, [&controller, file] { controller.applicationOpenFile(file); });
    const int code = app.exec();
    app.setWillTerminate({});
    app.setDelegate(nullptr);
    return code;
}

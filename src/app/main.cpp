#include "app/controller.h"
#include "app/desktopplatform.h"
#include "app/hotkeyapplication.h"

int main(int argc, char **argv)
{
    HotKeyApplication app(argc, argv);
    Controller controller(app.platform().services(), app.registries());
    controller.applicationDidFinishLaunching();
    return app.exec();
}

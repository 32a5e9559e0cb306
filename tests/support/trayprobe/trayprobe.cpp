// A tray icon and a window, for the test tray's own test: a red square whose menu turns it green and
// quits, each action saying so on stdout, and a window titled "Tray probe" to take a picture of.
#include <QApplication>
#include <QLabel>
#include <QMenu>
#include <QSystemTrayIcon>

#include <cstdio>

namespace {

QIcon square(const QColor &colour)
{
    QPixmap pixmap(32, 32);
    pixmap.fill(colour);
    return QIcon(pixmap);
}

void say(const char *line)
{
    std::puts(line);
    std::fflush(stdout);
}

} // namespace

int main(int argc, char **argv)
{
    QApplication app(argc, argv);
    QSystemTrayIcon tray(square(Qt::red));
    QMenu menu;
    QObject::connect(menu.addAction(QStringLiteral("Turn &Green")), &QAction::triggered, [&] {
        tray.setIcon(square(Qt::green));
        say("turned green");
    });
    menu.addSeparator();
    QObject::connect(menu.addAction(QStringLiteral("&Quit")), &QAction::triggered, [&] {
        say("quit");
        app.quit();
    });
    tray.setContextMenu(&menu);
    tray.setToolTip(QStringLiteral("Probe tip"));
    say(QSystemTrayIcon::isSystemTrayAvailable() ? "tray available" : "no tray");
    tray.show();
    QLabel window(QStringLiteral("Tray probe"));
    window.setWindowTitle(QStringLiteral("Tray probe"));
    window.resize(200, 60);
    window.show();
    return app.exec();
}

#pragma once

#include <QString>
#include <QSystemTrayIcon>

class QMenu;

// The program's item in the desktop's tray: its picture, tool tip and menu.
// A click on it asks for the main window.
class StatusItem : public QSystemTrayIcon
{
    Q_OBJECT

public:
    // The menu is the caller's and must outlive the item.
    explicit StatusItem(QMenu *menu, QObject *parent = nullptr);

    // The tick sets the picture every second; only a new name reaches the
    // tray, so an unchanged sign costs no repaint and no message to the tray.
    void setImageNamed(const QString &name);
    const QString &imageName() const { return m_imageName; }

Q_SIGNALS:
    void showWindowRequested();

private:
    QString m_imageName;
};

#pragma once

#include <QObject>

class QAction;
class StatusItem;
class WindowCtrl;

// What the user sees of the recording switch: the window's indicator flags,
// the toolbar's recording button and the tray picture. The button pictures
// what a press would do: the "off" picture while recording, the "on"
// picture while stopped.
class RecordingIndicators : public QObject
{
    Q_OBJECT

public:
    RecordingIndicators(WindowCtrl &windowCtrl, QAction *b_on, StatusItem &statusItem, QObject *parent = nullptr);

public Q_SLOTS:
    // A switch of recording has just been announced.
    void recordingAnnounced(bool on);
    // Once a tick: the blink phase while recording, and the tray picture.
    void updateOnOffSign();

private:
    WindowCtrl &m_windowCtrl;
    QAction *b_on;
    StatusItem &m_statusItem;
};

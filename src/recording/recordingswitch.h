#pragma once

#include <QObject>

class ApplicationRegistries;
class EventTimer;
class Notices;

// The recording flag: while it is on, the tick captures new pasteboard states.
// A switch is announced (sound and notice) once, by the next check.
class RecordingSwitch : public QObject
{
    Q_OBJECT

public:
    RecordingSwitch(ApplicationRegistries &registries, Notices &notices, EventTimer &eventTimer,
                    QObject *parent = nullptr);

    bool automaticRec() const { return m_automaticRec; }
    void setAutomaticRec(bool on) { m_automaticRec = on; }
    void doAutoRec();
    void toggleAutoRec();
    // Stops recording unless the automatic-recording preference is on.
    void cancelAutoRec();
    // Stops recording whatever the preference says.
    void stopAutoRec();
    void checkAutoRecStatus();
    void updateOnOffSign();

Q_SIGNALS:
    // At the end of each announcement: the window, toolbar and tray show it.
    void recordingAnnounced(bool on);
    // Once a tick, for the tray picture and the indicator's blink.
    void onOffSignDue();

private:
    ApplicationRegistries &m_registries;
    Notices &m_notices;
    EventTimer &m_eventTimer;
    bool m_automaticRec = false;
    bool lastAutoRecStatus = false;
};

#include "recording/recordingswitch.h"

#include "recording/eventtimer.h"
#include "recording/notices.h"
#include "settings/applicationregistries.h"

RecordingSwitch::RecordingSwitch(ApplicationRegistries &registries, Notices &notices, EventTimer &eventTimer,
                                 QObject *parent)
    : QObject(parent)
    , m_registries(registries)
    , m_notices(notices)
    , m_eventTimer(eventTimer)
{
}

void RecordingSwitch::doAutoRec()
{
    m_automaticRec = true;
}

void RecordingSwitch::toggleAutoRec()
{
    m_automaticRec = !m_automaticRec;
}

void RecordingSwitch::cancelAutoRec()
{
    if (m_registries.isAutoRec())
        return;
    stopAutoRec();
}

void RecordingSwitch::stopAutoRec()
{
    m_automaticRec = false;
    checkAutoRecStatus();
}

void RecordingSwitch::checkAutoRecStatus()
{
    if (m_automaticRec == lastAutoRecStatus)
        return;
    lastAutoRecStatus = m_automaticRec;
    if (m_automaticRec) {
        m_eventTimer.setSoundName(QStringLiteral("Hero"));
        m_notices.messageGrowl(QStringLiteral("Quillstash"), QStringLiteral("Rec Start"),
                               Notices::RecStartPasteboardNotification);
    } else {
        m_eventTimer.setSoundName(QStringLiteral("Purr"));
        m_notices.messageGrowl(QStringLiteral("Quillstash"), QStringLiteral("Rec Stop"),
                               Notices::RecStopPasteboardNotification);
    }
    Q_EMIT recordingAnnounced(m_automaticRec);
}

void RecordingSwitch::updateOnOffSign()
{
    // The sign follows the window's indicator, which the interface owns.
    Q_EMIT onOffSignDue();
}

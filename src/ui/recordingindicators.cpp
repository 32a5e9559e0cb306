#include "ui/recordingindicators.h"

#include "platform/imagenamed.h"
#include "ui/statusitem.h"
#include "ui/windowctrl.h"

#include <QAction>

RecordingIndicators::RecordingIndicators(WindowCtrl &windowCtrl, QAction *b_on, StatusItem &statusItem,
                                         QObject *parent)
    : QObject(parent)
    , m_windowCtrl(windowCtrl)
    , b_on(b_on)
    , m_statusItem(statusItem)
{
}

void RecordingIndicators::recordingAnnounced(bool on)
{
    if (on) {
        m_windowCtrl.setOn();
        b_on->setIcon(ImageNamed::iconNamed(QStringLiteral("qs_rec_off_003.png")));
    } else {
        m_windowCtrl.setOff();
        b_on->setIcon(ImageNamed::iconNamed(QStringLiteral("qs_rec_on_003.png")));
    }
}

void RecordingIndicators::updateOnOffSign()
{
    if (m_windowCtrl.recIconStatus()) {
        m_windowCtrl.setViewOnOff(!m_windowCtrl.viewOnOff());
        m_statusItem.setImageNamed(QStringLiteral("qs_menu_item_rec_on"));
    } else {
        m_statusItem.setImageNamed(QStringLiteral("qs_menu_item_rec_off"));
    }
}

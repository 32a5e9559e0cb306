#pragma once

#include "platform/dock.h"

#include <QDBusConnection>

// The badge as the Unity launcher entry count, which KDE Plasma, Dash to Dock
// and Plank show; attention through the window manager's urgency hint.
class UnityDock : public Dock
{
public:
    explicit UnityDock(const QDBusConnection &bus = QDBusConnection::sessionBus());

    void setBadgeLabel(const QString &label) override;
    QString badgeLabel() const override { return m_label; }
    void requestUserAttention() override;
    bool isActive() const override;

private:
    QDBusConnection m_bus;
    QString m_label;
};

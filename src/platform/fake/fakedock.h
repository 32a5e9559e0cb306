#pragma once

#include "platform/dock.h"

class FakeDock : public Dock
{
public:
    void setBadgeLabel(const QString &label) override { m_badge = label; }
    QString badgeLabel() const override { return m_badge; }
    void requestUserAttention() override { ++m_attentionRequests; }
    bool isActive() const override { return m_active; }

    void setActive(bool active) { m_active = active; }
    int attentionRequests() const { return m_attentionRequests; }

private:
    QString m_badge;
    int m_attentionRequests = 0;
    bool m_active = false;
};

#include "recording/notices.h"

#include "platform/clock.h"
#include "platform/dock.h"
#include "platform/noticeservice.h"
#include "settings/applicationregistries.h"

#include <cstdio>

Notices::Notices(NoticeService &service, Clock &clock, Dock &dock, ApplicationRegistries &registries)
    : m_service(service)
    , m_clock(clock)
    , m_dock(dock)
    , m_registries(registries)
{
}

void Notices::setUp()
{
    m_loaded = m_service.load();
    if (!m_loaded) {
        // The one line the program prints when it has to run without notices.
        std::fputs("Could not load Growl.framework\n", stderr);
    }
}

void Notices::messageGrowl(const QString &title, const QString &desc, const QString &notify)
{
    // The bounce comes before the repeat filter: a dropped repeat still bounces.
    if (m_registries.isIconBounce())
        m_dock.requestUserAttention();

    if (quint32(m_clock.GetTickCount() - now) <= repeatWindowMs && title == str)
        return;
    now = m_clock.GetTickCount();
    str = title;
    m_anySent = true;

    if (m_loaded)
        m_service.notify(title, desc, notify, priority, false);
}

#include "platform/fake/fakeloginitems.h"

std::optional<QList<LoginItems::Item>> FakeLoginItems::snapshot() const
{
    if (!m_available)
        return std::nullopt;
    return m_items;
}

void FakeLoginItems::insertAtTop(const QUrl &url)
{
    m_items.prepend({QString::number(m_nextId++), url});
}

void FakeLoginItems::remove(const Item &item)
{
    m_items.removeIf([&](const Item &it) { return it.id == item.id; });
}

void FakeLoginItems::append(const QUrl &resolved)
{
    m_items.append({QString::number(m_nextId++), resolved});
}

QList<QUrl> FakeLoginItems::urls() const
{
    QList<QUrl> urls;
    for (const Item &item : m_items)
        urls.append(item.resolved);
    return urls;
}

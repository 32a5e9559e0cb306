#pragma once

#include "platform/loginitems.h"

class FakeLoginItems : public LoginItems
{
public:
    std::optional<QList<Item>> snapshot() const override;
    void insertAtTop(const QUrl &url) override;
    void remove(const Item &item) override;

    // Items are kept in list order; ids are handed out in insertion order.
    void append(const QUrl &resolved);
    QList<QUrl> urls() const;
    void setAvailable(bool available) { m_available = available; }

private:
    QList<Item> m_items;
    int m_nextId = 0;
    bool m_available = true;
};

#pragma once

#include <QList>
#include <QString>
#include <QUrl>

#include <optional>

// The programs the user's session starts at login, in list order.
class LoginItems
{
public:
    struct Item
    {
        QString id;    // identifies the item for remove()
        QUrl resolved; // the program the item starts; empty when it cannot be resolved
    };

    virtual ~LoginItems() = default;

    // The items in list order, or nothing when the list cannot be read at all.
    virtual std::optional<QList<Item>> snapshot() const = 0;
    // Adds an item that starts the program at url, at the top of the list.
    virtual void insertAtTop(const QUrl &url) = 0;
    virtual void remove(const Item &item) = 0;
};

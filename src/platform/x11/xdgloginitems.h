#pragma once

#include "platform/loginitems.h"

// Login items as the XDG autostart folder ($XDG_CONFIG_HOME/autostart): each
// *.desktop file is an item, in name order, and resolves to the program its
// Exec line starts.
class XdgLoginItems : public LoginItems
{
public:
    XdgLoginItems();
    explicit XdgLoginItems(const QString &folder);

    std::optional<QList<Item>> snapshot() const override;
    void insertAtTop(const QUrl &url) override;
    void remove(const Item &item) override;

    QString folder() const { return m_folder; }

    // The program a desktop entry starts, or an empty URL when it names none
    // that exists or the entry is hidden.
    static QUrl resolveDesktopEntry(const QByteArray &contents);

private:
    QString m_folder;
};

#pragma once

#include <QDBusConnection>
#include <QDBusContext>
#include <QHash>
#include <QImage>
#include <QVariantMap>

#include <optional>

class QDBusMessage;
class QDBusServiceWatcher;

// Plays the desktop's tray on a session bus, as the panel of a StatusNotifier desktop does: owns
// org.kde.StatusNotifierWatcher, records the items that register, reads their properties and icon, and
// opens and clicks their menus through com.canonical.dbusmenu. Qt looks for the watcher once, when a
// program makes its first tray icon: start this before the program.
class StatusNotifierHost : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    // Qt reads these through the introspected interface, so they must be exported as properties.
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ registeredItems)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)

public:
    struct Item
    {
        QString service, path;
        bool operator==(const Item &) const = default;
    };
    struct MenuEntry
    {
        int id = 0;
        QVariantMap properties;
        QList<MenuEntry> children;
        // The label as shown, without its mnemonic mark.
        QString label() const { return withoutMnemonic(properties.value(QStringLiteral("label")).toString()); }
        bool isSeparator() const { return properties.value(QStringLiteral("type")) == QStringLiteral("separator"); }
    };

    explicit StatusNotifierHost(const QDBusConnection &bus = QDBusConnection::sessionBus());
    ~StatusNotifierHost() override;

    bool start();

    // The item whose bus connection belongs to the process pid.
    std::optional<Item> itemOfProcess(qint64 pid) const;

    // org.kde.StatusNotifierItem properties; an invalid QVariant when the item does not answer.
    QVariant property(const Item &item, const QString &name) const;
    QString toolTip(const Item &item) const;
    // The largest image of IconPixmap; null when the item sends only an IconName.
    QImage icon(const Item &item) const;
    // NewIcon, NewToolTip, NewStatus, NewTitle, NewMenu, NewAttentionIcon seen since the item registered.
    int signalCount(const Item &item, const QString &member) const;
    bool waitForSignal(const Item &item, const QString &member, int countBefore, int timeoutMs);

    // The menu as a host lays it out when it opens it: AboutToShow, then GetLayout of the whole tree.
    std::optional<MenuEntry> menu(const Item &item);
    // Visible entries of the top level, separators left out.
    QStringList menuLabels(const Item &item);
    // Opens the menu, clicks the visible and enabled entry of that label (at any depth), closes it.
    bool clickMenuItem(const Item &item, const QString &label);

    static QString withoutMnemonic(const QString &label);

public Q_SLOTS:
    // Qt passes its connection's unique name; libraries of other toolkits pass an object path.
    void RegisterStatusNotifierItem(const QString &serviceOrPath);
    void RegisterStatusNotifierHost(const QString &service);

Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString &item);
    void StatusNotifierItemUnregistered(const QString &item);
    void StatusNotifierHostRegistered();
    void StatusNotifierHostUnregistered();

private Q_SLOTS:
    void onItemSignal(const QDBusMessage &message);

private:
    QStringList registeredItems() const;
    bool isHostRegistered() const { return true; }
    int protocolVersion() const { return 0; }
    void removeService(const QString &service);
    // Runs the call with the event loop going, so that a program calling back into this process is answered.
    QDBusMessage call(const QDBusMessage &message) const;
    QString menuPath(const Item &item) const;

    QDBusConnection m_bus;
    QDBusServiceWatcher *m_owners;
    QList<Item> m_items;
    QHash<QString, int> m_signalCounts; // service + '/' + member
};

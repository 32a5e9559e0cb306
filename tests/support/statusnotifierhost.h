#pragma once

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusVariant>
#include <QDateTime>
#include <QImage>
#include <QRegularExpression>
#include <QTest>
#include <QtEndian>

// The desktop's tray on the session bus (org.kde.StatusNotifierWatcher): reads items' tool tips, icons and dbusmenus
// and clicks them. Qt looks for the watcher once, at a program's first tray icon: start this before the program.
class StatusNotifierHost : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    // Qt reads it through the introspected interface, so it must be an exported property.
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)

public:
    ~StatusNotifierHost() override { m_bus.unregisterService(QStringLiteral("org.kde.StatusNotifierWatcher")); }

    bool start()
    {
        return m_bus.registerObject(QStringLiteral("/StatusNotifierWatcher"), this,
                                    QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties)
            && m_bus.registerService(QStringLiteral("org.kde.StatusNotifierWatcher"));
    }
    bool isHostRegistered() const { return true; }

    // The service of the first item that registered; empty when none has.
    QString firstItem() const { return m_items.value(0); }
    // (sa(iiay)ss): icon name, icon, title, text. Qt puts the tool tip in the title.
    QString toolTip(const QString &item) const
    {
        const QDBusArgument argument = qvariant_cast<QDBusArgument>(property(item, QStringLiteral("ToolTip")));
        QString iconName, title;
        argument.beginStructure();
        argument >> iconName;
        largestImage(argument);
        argument >> title;
        argument.endStructure();
        return title;
    }
    // The largest picture of IconPixmap; null when the item sends only an IconName.
    QImage icon(const QString &item) const
    {
        return largestImage(qvariant_cast<QDBusArgument>(property(item, QStringLiteral("IconPixmap"))));
    }
    // Visible entries of the top level, separators left out, labels as shown.
    QStringList menuLabels(const QString &item) const
    {
        QStringList labels;
        for (const auto &[id, entry] : menu(item)) {
            if (entry.value(QStringLiteral("type")) != QStringLiteral("separator") && isSet(entry, "visible"))
                labels.append(label(entry));
        }
        return labels;
    }
    // Opens the menu, clicks the visible and enabled top-level entry of that label, closes the menu.
    bool clickMenuItem(const QString &item, const QString &shown) const
    {
        for (const auto &[id, entry] : menu(item)) {
            if (label(entry) == shown && isSet(entry, "visible") && isSet(entry, "enabled"))
                return event(item, id, QStringLiteral("clicked")) && event(item, 0, QStringLiteral("closed"));
        }
        return false;
    }

    // NewIcon signals of the items since they registered.
    int newIcons = 0;

public Q_SLOTS:
    void RegisterStatusNotifierItem(const QString &service)
    {
        m_items.append(service);
        m_bus.connect(service, QStringLiteral("/StatusNotifierItem"), QStringLiteral("org.kde.StatusNotifierItem"),
                      QStringLiteral("NewIcon"), this, SLOT(countNewIcon()));
    }

private Q_SLOTS:
    void countNewIcon() { ++newIcons; }

private:
    // With the event loop going, so that a program calling back into this process is answered.
    QDBusMessage call(const QString &item, const QString &path, const QString &interface, const QString &method,
                      const QVariantList &arguments) const
    {
        QDBusMessage message = QDBusMessage::createMethodCall(item, path, interface, method);
        message.setArguments(arguments);
        QDBusPendingCall pending = m_bus.asyncCall(message, 5000);
        return QTest::qWaitFor([&] { return pending.isFinished(); }, 6000) ? pending.reply() : QDBusMessage();
    }
    QVariant property(const QString &item, const QString &name) const
    {
        const QDBusMessage reply = call(item, QStringLiteral("/StatusNotifierItem"), QStringLiteral("org.freedesktop.DBus.Properties"),
                                        QStringLiteral("Get"), {QStringLiteral("org.kde.StatusNotifierItem"), name});
        return reply.type() == QDBusMessage::ReplyMessage ? qvariant_cast<QDBusVariant>(reply.arguments().value(0)).variant()
                                                          : QVariant();
    }
    QDBusMessage menuCall(const QString &item, const QString &method, const QVariantList &arguments) const
    {
        const QString path = qvariant_cast<QDBusObjectPath>(property(item, QStringLiteral("Menu"))).path();
        return call(item, path, QStringLiteral("com.canonical.dbusmenu"), method, arguments);
    }
    // The top level's ids and properties, laid out as a host opens it (AboutToShow, GetLayout); entries are (ia{sv}av).
    QList<std::pair<int, QVariantMap>> menu(const QString &item) const
    {
        menuCall(item, QStringLiteral("AboutToShow"), {0});
        const QDBusMessage reply = menuCall(item, QStringLiteral("GetLayout"), {0, -1, QStringList()});
        const QDBusArgument root = qvariant_cast<QDBusArgument>(reply.arguments().value(1));
        QList<std::pair<int, QVariantMap>> entries;
        int id = 0;
        QVariantMap properties;
        root.beginStructure();
        root >> id >> properties;
        root.beginArray();
        while (!root.atEnd()) {
            QDBusVariant child;
            root >> child;
            const QDBusArgument entry = qvariant_cast<QDBusArgument>(child.variant());
            entry.beginStructure();
            entry >> id >> properties;
            entry.endStructure();
            entries.append({id, properties});
        }
        root.endArray();
        root.endStructure();
        return entries;
    }
    bool event(const QString &item, int id, const QString &name) const
    {
        const QVariantList arguments{id, name, QVariant::fromValue(QDBusVariant(0)), uint(QDateTime::currentSecsSinceEpoch())};
        return menuCall(item, QStringLiteral("Event"), arguments).type() == QDBusMessage::ReplyMessage;
    }
    static bool isSet(const QVariantMap &entry, const char *flag)
    {
        return entry.value(QString::fromLatin1(flag), true).toBool();
    }
    // dbusmenu marks the mnemonic with '_' and doubles a literal one.
    static QString label(const QVariantMap &entry)
    {
        return entry.value(QStringLiteral("label")).toString().replace(QRegularExpression(QStringLiteral("_(.)")), QStringLiteral("\\1"));
    }
    // a(iiay): width, height and ARGB32 pixels in network byte order, one entry per size.
    static QImage largestImage(const QDBusArgument &argument)
    {
        QImage largest;
        argument.beginArray();
        while (!argument.atEnd()) {
            int width = 0, height = 0;
            QByteArray pixels;
            argument.beginStructure();
            argument >> width >> height >> pixels;
            argument.endStructure();
            if (width * height <= largest.width() * largest.height() || pixels.size() != qsizetype(width) * height * 4)
                continue;
            largest = QImage(width, height, QImage::Format_ARGB32);
            qFromBigEndian<quint32>(pixels.constData(), qsizetype(width) * height, largest.bits());
        }
        argument.endArray();
        return largest;
    }

    QDBusConnection m_bus = QDBusConnection::sessionBus();
    QStringList m_items;
};

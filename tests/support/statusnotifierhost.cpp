#include "support/statusnotifierhost.h"

#include <QDBusArgument>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCall>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QDateTime>
#include <QTest>
#include <QtEndian>

namespace {

const QString watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const QString watcherPath = QStringLiteral("/StatusNotifierWatcher");
const QString itemInterface = QStringLiteral("org.kde.StatusNotifierItem");
const QString menuInterface = QStringLiteral("com.canonical.dbusmenu");
const QString defaultItemPath = QStringLiteral("/StatusNotifierItem");
constexpr int callTimeoutMs = 5000;

// a(iiay): width, height and ARGB32 pixels in network byte order, one entry per size.
QList<QImage> readImages(const QDBusArgument &argument)
{
    QList<QImage> images;
    argument.beginArray();
    while (!argument.atEnd()) {
        int width = 0, height = 0;
        QByteArray pixels;
        argument.beginStructure();
        argument >> width >> height >> pixels;
        argument.endStructure();
        if (width <= 0 || height <= 0 || pixels.size() != qsizetype(width) * height * 4)
            continue;
        QImage image(width, height, QImage::Format_ARGB32);
        for (int y = 0; y < height; ++y)
            qFromBigEndian<quint32>(pixels.constData() + qsizetype(y) * width * 4, width, image.scanLine(y));
        images.append(image);
    }
    argument.endArray();
    return images;
}

// (ia{sv}av): id, properties and children, each child a variant holding the same structure.
StatusNotifierHost::MenuEntry readMenuEntry(const QDBusArgument &argument)
{
    StatusNotifierHost::MenuEntry entry;
    argument.beginStructure();
    argument >> entry.id >> entry.properties;
    argument.beginArray();
    while (!argument.atEnd()) {
        QDBusVariant child;
        argument >> child;
        entry.children.append(readMenuEntry(qvariant_cast<QDBusArgument>(child.variant())));
    }
    argument.endArray();
    argument.endStructure();
    return entry;
}

const StatusNotifierHost::MenuEntry *findEntry(const StatusNotifierHost::MenuEntry &parent, const QString &label)
{
    for (const StatusNotifierHost::MenuEntry &child : parent.children) {
        if (!child.isSeparator() && child.label() == label)
            return &child;
        if (const StatusNotifierHost::MenuEntry *found = findEntry(child, label))
            return found;
    }
    return nullptr;
}

} // namespace

StatusNotifierHost::StatusNotifierHost(const QDBusConnection &bus)
    : m_bus(bus)
    , m_owners(new QDBusServiceWatcher({}, bus, QDBusServiceWatcher::WatchForUnregistration, this))
{
    connect(m_owners, &QDBusServiceWatcher::serviceUnregistered, this, &StatusNotifierHost::removeService);
}

StatusNotifierHost::~StatusNotifierHost()
{
    m_bus.unregisterService(watcherService);
    m_bus.unregisterObject(watcherPath);
}

bool StatusNotifierHost::start()
{
    return m_bus.registerObject(watcherPath, this,
                                QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals
                                    | QDBusConnection::ExportAllProperties)
        && m_bus.registerService(watcherService);
}

void StatusNotifierHost::RegisterStatusNotifierItem(const QString &serviceOrPath)
{
    const bool isPath = serviceOrPath.startsWith(u'/');
    const Item item{isPath ? message().service() : serviceOrPath, isPath ? serviceOrPath : defaultItemPath};
    if (m_items.contains(item))
        return;
    m_items.append(item);
    m_owners->addWatchedService(item.service);
    for (const char *member : {"NewIcon", "NewToolTip", "NewStatus", "NewTitle", "NewMenu", "NewAttentionIcon"})
        m_bus.connect(item.service, item.path, itemInterface, QString::fromLatin1(member), this,
                      SLOT(onItemSignal(QDBusMessage)));
    Q_EMIT StatusNotifierItemRegistered(item.service + item.path);
}

void StatusNotifierHost::RegisterStatusNotifierHost(const QString &) {}

QStringList StatusNotifierHost::registeredItems() const
{
    QStringList names;
    for (const Item &item : m_items)
        names.append(item.service + item.path);
    return names;
}

void StatusNotifierHost::removeService(const QString &service)
{
    for (const Item &item : std::as_const(m_items)) {
        if (item.service == service)
            Q_EMIT StatusNotifierItemUnregistered(item.service + item.path);
    }
    m_items.removeIf([&](const Item &item) { return item.service == service; });
    m_owners->removeWatchedService(service);
}

void StatusNotifierHost::onItemSignal(const QDBusMessage &message)
{
    ++m_signalCounts[message.service() + u'/' + message.member()];
}

std::optional<StatusNotifierHost::Item> StatusNotifierHost::itemOfProcess(qint64 pid) const
{
    for (const Item &item : m_items) {
        if (m_bus.interface()->servicePid(item.service).value() == pid)
            return item;
    }
    return std::nullopt;
}

QDBusMessage StatusNotifierHost::call(const QDBusMessage &message) const
{
    QDBusPendingCall pending = m_bus.asyncCall(message, callTimeoutMs);
    // QtDBus ends the call with an error reply at its timeout, so the wait ends too.
    if (!QTest::qWaitFor([&] { return pending.isFinished(); }, callTimeoutMs + 1000))
        return QDBusMessage::createError(QDBusError::Timeout, QStringLiteral("no reply"));
    return pending.reply();
}

QVariant StatusNotifierHost::property(const Item &item, const QString &name) const
{
    QDBusMessage get = QDBusMessage::createMethodCall(item.service, item.path,
                                                      QStringLiteral("org.freedesktop.DBus.Properties"),
                                                      QStringLiteral("Get"));
    get << itemInterface << name;
    const QDBusMessage reply = call(get);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty())
        return {};
    return qvariant_cast<QDBusVariant>(reply.arguments().constFirst()).variant();
}

QString StatusNotifierHost::toolTip(const Item &item) const
{
    // (sa(iiay)ss): icon name, icon, title, text. Qt puts the tool tip in the title.
    const QVariant value = property(item, QStringLiteral("ToolTip"));
    if (!value.canConvert<QDBusArgument>())
        return {};
    const QDBusArgument argument = qvariant_cast<QDBusArgument>(value);
    QString iconName, title, text;
    argument.beginStructure();
    argument >> iconName;
    readImages(argument);
    argument >> title >> text;
    argument.endStructure();
    return title;
}

QImage StatusNotifierHost::icon(const Item &item) const
{
    const QVariant value = property(item, QStringLiteral("IconPixmap"));
    if (!value.canConvert<QDBusArgument>())
        return {};
    QImage largest;
    for (const QImage &image : readImages(qvariant_cast<QDBusArgument>(value))) {
        if (image.width() * image.height() > largest.width() * largest.height())
            largest = image;
    }
    return largest;
}

int StatusNotifierHost::signalCount(const Item &item, const QString &member) const
{
    return m_signalCounts.value(item.service + u'/' + member);
}

bool StatusNotifierHost::waitForSignal(const Item &item, const QString &member, int countBefore, int timeoutMs)
{
    return QTest::qWaitFor([&] { return signalCount(item, member) > countBefore; }, timeoutMs);
}

QString StatusNotifierHost::menuPath(const Item &item) const
{
    return qvariant_cast<QDBusObjectPath>(property(item, QStringLiteral("Menu"))).path();
}

std::optional<StatusNotifierHost::MenuEntry> StatusNotifierHost::menu(const Item &item)
{
    const QString path = menuPath(item);
    if (path.isEmpty())
        return std::nullopt;
    QDBusMessage aboutToShow = QDBusMessage::createMethodCall(item.service, path, menuInterface, QStringLiteral("AboutToShow"));
    aboutToShow << 0;
    call(aboutToShow);
    QDBusMessage getLayout = QDBusMessage::createMethodCall(item.service, path, menuInterface, QStringLiteral("GetLayout"));
    getLayout << 0 << -1 << QStringList();
    const QDBusMessage reply = call(getLayout);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().size() != 2)
        return std::nullopt;
    return readMenuEntry(qvariant_cast<QDBusArgument>(reply.arguments().at(1)));
}

QStringList StatusNotifierHost::menuLabels(const Item &item)
{
    QStringList labels;
    const std::optional<MenuEntry> root = menu(item);
    for (const MenuEntry &entry : root ? root->children : QList<MenuEntry>()) {
        if (!entry.isSeparator() && entry.properties.value(QStringLiteral("visible"), true).toBool())
            labels.append(entry.label());
    }
    return labels;
}

bool StatusNotifierHost::clickMenuItem(const Item &item, const QString &label)
{
    const std::optional<MenuEntry> root = menu(item);
    const MenuEntry *entry = root ? findEntry(*root, label) : nullptr;
    if (!entry || !entry->properties.value(QStringLiteral("visible"), true).toBool()
        || !entry->properties.value(QStringLiteral("enabled"), true).toBool())
        return false;
    const auto event = [&](int id, const QString &name) {
        QDBusMessage message = QDBusMessage::createMethodCall(item.service, menuPath(item), menuInterface, QStringLiteral("Event"));
        message << id << name << QVariant::fromValue(QDBusVariant(0)) << uint(QDateTime::currentSecsSinceEpoch());
        return call(message).type() == QDBusMessage::ReplyMessage;
    };
    const bool delivered = event(entry->id, QStringLiteral("clicked"));
    event(0, QStringLiteral("closed"));
    return delivered;
}

QString StatusNotifierHost::withoutMnemonic(const QString &label)
{
    // dbusmenu marks the mnemonic with '_' and doubles a literal one; Qt labels may still carry '&'.
    QString shown;
    for (qsizetype i = 0; i < label.size(); ++i) {
        const QChar c = label.at(i);
        if (c == u'_' || c == u'&') {
            if (i + 1 < label.size() && label.at(i + 1) == c)
                shown.append(label.at(++i));
            continue;
        }
        shown.append(c);
    }
    return shown;
}

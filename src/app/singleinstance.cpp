#include "app/singleinstance.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDir>
#include <QLoggingCategory>
#include <QTimer>
#include <QUrl>

Q_LOGGING_CATEGORY(lcInstance, "quillstash.instance", QtWarningMsg)

namespace {

// The running process answers only once its start-up is done, which on a
// loaded machine can take seconds.
constexpr int handOverTimeoutMs = 20000;
// The holder of the name may quit between our failed claim and our call.
constexpr int claimAttempts = 2;

} // namespace

SingleInstance::SingleInstance(QObject *parent)
    : QObject(parent)
{
}

SingleInstance::Outcome SingleInstance::claim(const QString &file)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.isConnected()) {
        qCDebug(lcInstance) << "no session bus; running without the single-instance guarantee";
        return Running;
    }
    // The object is there before the name, so that whoever sees the name can call it.
    if (!bus.objectRegisteredAt(objectPath) && !bus.registerObject(objectPath, this, QDBusConnection::ExportScriptableSlots)) {
        qCWarning(lcInstance) << "could not export" << objectPath << "on the session bus";
        return Running;
    }
    for (int attempt = 0; attempt < claimAttempts; ++attempt) {
        const QDBusReply<QDBusConnectionInterface::RegisterServiceReply> claimed = bus.interface()->registerService(
            serviceName, QDBusConnectionInterface::DontQueueService, QDBusConnectionInterface::DontAllowReplacement);
        if (claimed.isValid() && claimed.value() == QDBusConnectionInterface::ServiceRegistered)
            return Running;
        if (!claimed.isValid()) {
            qCWarning(lcInstance) << "could not claim" << serviceName << claimed.error().message();
            return Running;
        }
        // Another Quillstash runs. A launch without a file has nothing to
        // tell it; the running one goes on as it was.
        if (file.isEmpty())
            return HandedOver;
        QDBusMessage call = QDBusMessage::createMethodCall(serviceName, objectPath, serviceName, QStringLiteral("OpenFile"));
        call << file;
        const QDBusMessage reply = bus.call(call, QDBus::Block, handOverTimeoutMs);
        if (reply.type() == QDBusMessage::ReplyMessage)
            return HandedOver;
        const QString error = reply.errorName();
        if (error != QStringLiteral("org.freedesktop.DBus.Error.ServiceUnknown")
            && error != QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner")) {
            qCWarning(lcInstance) << "the running Quillstash did not take" << file << reply.errorMessage();
            return Failed;
        }
    }
    qCWarning(lcInstance) << "could neither claim" << serviceName << "nor reach its owner";
    return Failed;
}

QString SingleInstance::fileArgument(const QStringList &arguments)
{
    if (arguments.size() < 2 || arguments.at(1).isEmpty())
        return {};
    const QString &argument = arguments.at(1);
    // Desktop files pass paths (%f), but a launcher may hand a file: URL.
    if (argument.startsWith(QStringLiteral("file:"))) {
        if (const QUrl url(argument); url.isLocalFile())
            return QDir::cleanPath(url.toLocalFile());
    }
    return QDir::cleanPath(QDir::current().absoluteFilePath(argument));
}

void SingleInstance::OpenFile(const QString &path)
{
    // A file of no name would only clear the history.
    if (path.isEmpty())
        return;
    // The reply goes out when this returns; the file is opened afterwards.
    QTimer::singleShot(0, this, [this, path] { Q_EMIT fileHandedOver(path); });
}

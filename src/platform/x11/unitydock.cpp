#include "platform/x11/unitydock.h"

#include <QApplication>
#include <QDBusMessage>
#include <QLoggingCategory>
#include <QMainWindow>
#include <QWidget>

Q_LOGGING_CATEGORY(lcDock, "quillstash.dock", QtWarningMsg)

namespace {

const QString launcherPath = QStringLiteral("/com/canonical/unity/launcherentry/quillstash");
const QString launcherInterface = QStringLiteral("com.canonical.Unity.LauncherEntry");
const QString appUri = QStringLiteral("application://quillstash.desktop");
// Long enough for the task bar to flash once, short enough not to nag.
constexpr int attentionMs = 1500;

QWidget *attentionTarget()
{
    if (QWidget *active = QApplication::activeWindow())
        return active;
    QWidget *firstVisible = nullptr;
    const QWidgetList topLevels = QApplication::topLevelWidgets();
    for (QWidget *widget : topLevels) {
        if (!widget->isVisible())
            continue;
        if (qobject_cast<QMainWindow *>(widget))
            return widget;
        if (!firstVisible)
            firstVisible = widget;
    }
    return firstVisible;
}

} // namespace

UnityDock::UnityDock(const QDBusConnection &bus) : m_bus(bus) {}

void UnityDock::setBadgeLabel(const QString &label)
{
    if (label == m_label)
        return;
    m_label = label;

    bool isNumber = false;
    const qint64 count = label.toLongLong(&isNumber);
    const QVariantMap properties{
        {QStringLiteral("count"), count},
        {QStringLiteral("count-visible"), isNumber},
    };
    QDBusMessage update =
        QDBusMessage::createSignal(launcherPath, launcherInterface, QStringLiteral("Update"));
    update << appUri << properties;
    if (!m_bus.send(update))
        qCDebug(lcDock) << "Badge not sent:" << m_bus.lastError().message();
}

void UnityDock::requestUserAttention()
{
    if (QWidget *window = attentionTarget())
        QApplication::alert(window, attentionMs);
}

bool UnityDock::isActive() const
{
    return QGuiApplication::applicationState() == Qt::ApplicationActive;
}

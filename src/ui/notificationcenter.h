#pragma once

#include <QObject>
#include <QString>

// The application-wide hub through which the history table tells the
// controller what the user did. The application makes one and hands it to
// whoever posts or observes; observers connect to notificationPosted and
// look at the name.
class NotificationCenter : public QObject
{
    Q_OBJECT

public:
    // Return pressed in the history table: restore the selected entry.
    static inline const QString retKeyPressedOnTable = QStringLiteral("RetKeyPressedOnTable");
    // Backspace or Delete pressed in the history table: remove the selected entry.
    static inline const QString delKeyPressedOnTable = QStringLiteral("DelKeyPressedOnTable");
    // A row of the history table double-clicked: open the selected entry as a link.
    static inline const QString onDoubleClickOnTable = QStringLiteral("OnDoubleClickOnTable");

    explicit NotificationCenter(QObject *parent = nullptr);

    void postNotificationName(const QString &name, QObject *object);

Q_SIGNALS:
    void notificationPosted(const QString &name, QObject *object);
};

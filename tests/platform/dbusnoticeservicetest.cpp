#include "platform/x11/dbusnoticeservice.h"

#include "support/notificationserver.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTest>

#include <gtest/gtest.h>

// Every priority goes out as normal urgency, since servers never expire a
// critical notice; only a sticky one asks never to expire. Clipboard text in
// the body is escaped for the markup servers read there. A hung server never
// holds up the caller.
TEST(DBusNoticeService, NoticesCarryTheProgramsFieldsWithoutWaitingForTheServer)
{
    ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run under dbus-run-session";
    const auto disconnect = qScopeGuard([] { QDBusConnection::disconnectFromBus(QStringLiteral("server")); });
    // The server has a connection of its own, so calls really cross the bus.
    NotificationServer server(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("server")));
    ASSERT_TRUE(server.start());
    server.setAnswering(false);
    DBusNoticeService notices;
    ASSERT_TRUE(notices.load());
    const struct { int priority; bool sticky; int expireTimeout; } rows[] = {
        {-2, false, -1}, {0, false, -1}, {2, false, -1}, {2, true, 0}};
    QElapsedTimer timer;
    timer.start();
    for (const auto &row : rows)
        notices.notify("Add to Table", "if (a < b && c > d)", "AddPasteboardNotification", row.priority, row.sticky);
    EXPECT_LT(timer.elapsed(), 500);
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.notices().size() == qsizetype(std::size(rows)); }, 5000));
    for (qsizetype i = 0; i < qsizetype(std::size(rows)); ++i) {
        SCOPED_TRACE(rows[i].priority);
        const NotificationServer::Notice &n = server.notices().at(i);
        EXPECT_EQ((QStringList{n.appName, n.appIcon, n.summary, n.body, n.hints.value("category").toString(),
                               n.hints.value("desktop-entry").toString()}),
                  (QStringList{"Quillstash", "quillstash", "Add to Table", "if (a &lt; b &amp;&amp; c &gt; d)",
                               "AddPasteboardNotification", "quillstash"}));
        EXPECT_EQ(n.replacesId, 0u);
        EXPECT_TRUE(n.actions.isEmpty());
        EXPECT_EQ(n.expireTimeout, rows[i].expireTimeout);
        EXPECT_EQ(n.hints.value("urgency").typeId(), QMetaType::UChar) << "urgency must travel as a D-Bus byte";
        EXPECT_EQ(n.hints.value("urgency").toInt(), 1);
    }
}

#include "platform/x11/dbusnoticeservice.h"

#include "support/notificationserver.h"

#include <QElapsedTimer>
#include <QScopeGuard>
#include <QTest>

#include <gtest/gtest.h>

// Every priority goes out as normal urgency, since servers never expire a critical notice.
TEST(DBusNoticeService, NoticesCarryTheProgramsFieldsWithoutWaitingForTheServer)
{
    const auto disconnect = qScopeGuard([] { QDBusConnection::disconnectFromBus(QStringLiteral("server")); });
    // The server has a connection of its own, so calls really cross the bus.
    NotificationServer server(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("server")));
    ASSERT_TRUE(server.start());
    server.setAnswering(false);
    DBusNoticeService notices;
    ASSERT_TRUE(notices.load());
    const struct { int priority; bool sticky; const char *expire; } rows[] = {{-2, false, "-1"}, {2, false, "-1"}, {2, true, "0"}};
    QElapsedTimer timer;
    timer.start();
    for (const auto &row : rows)
        notices.notify("Add to Table", "if (a < b && c > d)", "AddPasteboardNotification", row.priority, row.sticky);
    EXPECT_LT(timer.elapsed(), 500);
    ASSERT_TRUE(QTest::qWaitFor([&] { return server.notices().size() == qsizetype(std::size(rows)); }, 5000));
    for (qsizetype i = 0; i < qsizetype(std::size(rows)); ++i) {
        const NotificationServer::Notice &n = server.notices().at(i);
        EXPECT_EQ((QStringList{n.appName, n.appIcon, n.summary, n.body, n.hints.value("category").toString(),
                               n.hints.value("desktop-entry").toString(), QString::number(n.replacesId),
                               n.actions.join(u','), QString::number(n.expireTimeout),
                               n.hints.value("urgency").typeName(), QString::number(n.hints.value("urgency").toInt())}),
                  (QStringList{"Quillstash", "quillstash", "Add to Table", "if (a &lt; b &amp;&amp; c &gt; d)",
                               "AddPasteboardNotification", "quillstash", "0", "", rows[i].expire, "uchar", "1"}))
            << rows[i].priority << (rows[i].sticky ? " sticky" : "");
    }
}

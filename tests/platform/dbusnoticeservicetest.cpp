#include "platform/x11/dbusnoticeservice.h"

#include "support/notificationserver.h"

#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

namespace {

class DBusNoticeServiceTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run under dbus-run-session"; }
    void TearDown() override
    {
        server.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("notificationserver"));
    }

    // The server has a connection of its own, so calls really cross the bus.
    std::unique_ptr<NotificationServer> server = std::make_unique<NotificationServer>(
        QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("notificationserver")));
};

// Every priority goes out as normal urgency, since servers never expire a
// critical notice; only a sticky one asks never to expire. Clipboard text in
// the body is escaped for the markup servers read there. A hung server never
// holds up the caller.
TEST_F(DBusNoticeServiceTest, NoticesCarryTheProgramsFieldsWithoutWaitingForTheServer)
{
    ASSERT_TRUE(server->start());
    server->setAnswering(false);
    DBusNoticeService notices;
    ASSERT_TRUE(notices.load());
    const struct { int priority; bool sticky; int expireTimeout; } rows[] = {
        {-2, false, -1}, {0, false, -1}, {2, false, -1}, {2, true, 0}};
    QElapsedTimer timer;
    timer.start();
    for (const auto &row : rows)
        notices.notify("Add to Table", "if (a < b && c > d)", "AddPasteboardNotification", row.priority, row.sticky);
    EXPECT_LT(timer.elapsed(), 500);
    ASSERT_TRUE(QTest::qWaitFor([&] { return server->notices().size() == qsizetype(std::size(rows)); }, 5000));
    for (qsizetype i = 0; i < qsizetype(std::size(rows)); ++i) {
        SCOPED_TRACE(rows[i].priority);
        const NotificationServer::Notice &n = server->notices().at(i);
        EXPECT_EQ(n.appName, "Quillstash");
        EXPECT_EQ(n.replacesId, 0u);
        EXPECT_EQ(n.appIcon, "quillstash");
        EXPECT_EQ(n.summary, "Add to Table");
        EXPECT_EQ(n.body, "if (a &lt; b &amp;&amp; c &gt; d)");
        EXPECT_TRUE(n.actions.isEmpty());
        EXPECT_EQ(n.expireTimeout, rows[i].expireTimeout);
        EXPECT_EQ(n.hints.value("category").toString(), "AddPasteboardNotification");
        EXPECT_EQ(n.hints.value("desktop-entry").toString(), "quillstash");
        EXPECT_EQ(n.hints.value("urgency").typeId(), QMetaType::UChar) << "urgency must travel as a D-Bus byte";
        EXPECT_EQ(n.hints.value("urgency").toInt(), 1);
    }
}

} // namespace

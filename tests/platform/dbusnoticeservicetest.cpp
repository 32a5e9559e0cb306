#include "platform/x11/dbusnoticeservice.h"

#include "support/notificationserver.h"

#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QTest>

#include <gtest/gtest.h>

namespace {

constexpr int waitMs = 5000;

class DBusNoticeServiceTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDBusConnection::sessionBus().isConnected())
            << "run under dbus-run-session";
        // The server has a connection of its own, so calls really cross the bus.
        m_serverBus = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(
            QDBusConnection::SessionBus, QStringLiteral("notificationserver")));
        ASSERT_TRUE(m_serverBus->isConnected());
        m_server = std::make_unique<NotificationServer>(*m_serverBus);
    }

    void TearDown() override
    {
        m_server.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("notificationserver"));
    }

    bool waitForNotices(qsizetype count)
    {
        return QTest::qWaitFor([&] { return m_server->notices().size() >= count; }, waitMs);
    }

    std::unique_ptr<QDBusConnection> m_serverBus;
    std::unique_ptr<NotificationServer> m_server;
};

TEST_F(DBusNoticeServiceTest, WithoutAServerLoadFailsAndNothingIsSent)
{
    const QDBusReply<QStringList> activatable =
        QDBusConnection::sessionBus().interface()->activatableServiceNames();
    if (activatable.value().contains(QStringLiteral("org.freedesktop.Notifications")))
        GTEST_SKIP() << "this bus can start a notification server";

    DBusNoticeService notices;
    EXPECT_FALSE(notices.load());
    notices.notify(QStringLiteral("Add to Table"), QStringLiteral("x"),
                   QStringLiteral("AddPasteboardNotification"), 2, false);

    // A server that appears later hears nothing of the earlier notice.
    ASSERT_TRUE(m_server->start());
    QTest::qWait(200);
    EXPECT_TRUE(m_server->notices().isEmpty());
}

TEST_F(DBusNoticeServiceTest, NoticeCarriesTheProgramsFields)
{
    ASSERT_TRUE(m_server->start());
    DBusNoticeService notices;
    ASSERT_TRUE(notices.load());
    notices.notify(QStringLiteral("Add to Table"), QStringLiteral("copied text"),
                   QStringLiteral("AddPasteboardNotification"), 2, false);

    ASSERT_TRUE(waitForNotices(1));
    const NotificationServer::Notice &n = m_server->notices().first();
    EXPECT_EQ(n.appName, QStringLiteral("Quillstash"));
    EXPECT_EQ(n.replacesId, 0u);
    EXPECT_EQ(n.appIcon, QStringLiteral("quillstash"));
    EXPECT_EQ(n.summary, QStringLiteral("Add to Table"));
    EXPECT_EQ(n.body, QStringLiteral("copied text"));
    EXPECT_TRUE(n.actions.isEmpty());
    EXPECT_EQ(n.expireTimeout, -1);
    EXPECT_EQ(n.hints.value(QStringLiteral("category")).toString(),
              QStringLiteral("AddPasteboardNotification"));
    EXPECT_EQ(n.hints.value(QStringLiteral("desktop-entry")).toString(),
              QStringLiteral("quillstash"));
    const QVariant urgency = n.hints.value(QStringLiteral("urgency"));
    EXPECT_EQ(urgency.typeId(), QMetaType::UChar) << "urgency must travel as a D-Bus byte";
    EXPECT_EQ(urgency.toInt(), 1);
}

struct Delivery
{
    const char *name;
    int priority;
    bool sticky;
    int expireTimeout;
};

class NoticeExpiry : public DBusNoticeServiceTest,
                     public ::testing::WithParamInterface<Delivery>
{
};

TEST_P(NoticeExpiry, PriorityNeverMakesANoticeCritical)
{
    ASSERT_TRUE(m_server->start());
    DBusNoticeService notices;
    ASSERT_TRUE(notices.load());
    notices.notify(QStringLiteral("t"), QStringLiteral("d"), QStringLiteral("n"),
                   GetParam().priority, GetParam().sticky);
    ASSERT_TRUE(waitForNotices(1));
    EXPECT_EQ(m_server->notices().first().expireTimeout, GetParam().expireTimeout);
    EXPECT_EQ(m_server->notices().first().hints.value(QStringLiteral("urgency")).toInt(), 1);
}

INSTANTIATE_TEST_SUITE_P(Priorities, NoticeExpiry,
                         ::testing::Values(Delivery{"low", -2, false, -1},
                                           Delivery{"normal", 0, false, -1},
                                           Delivery{"emergency", 2, false, -1},
                                           Delivery{"sticky", 2, true, 0}),
                         [](const auto &info) { return std::string(info.param.name); });

// Clipboard text goes into the body; a server that reads markup there must
// show it as typed, and one that does not must get it untouched.
TEST_F(DBusNoticeServiceTest, BodyIsEscapedOnlyForServersThatReadMarkup)
{
    const QString text = QStringLiteral("if (a < b && c > d) <b>x</b>");
    for (const bool markup : {true, false}) {
        m_server->clear();
        m_server->setCapabilities(markup ? QStringList{QStringLiteral("body"),
                                                       QStringLiteral("body-markup")}
                                         : QStringList{QStringLiteral("body")});
        ASSERT_TRUE(m_server->start());
        DBusNoticeService notices;
        ASSERT_TRUE(notices.load());
        // Let the capability answer arrive before the notice is built.
        QTest::qWait(100);
        notices.notify(QStringLiteral("t"), text, QStringLiteral("n"), 2, false);
        ASSERT_TRUE(waitForNotices(1));
        EXPECT_EQ(m_server->notices().first().body, markup ? text.toHtmlEscaped() : text)
            << "markup " << markup;
        m_server->stop();
    }
}

TEST_F(DBusNoticeServiceTest, HungServerNeverBlocksTheCaller)
{
    ASSERT_TRUE(m_server->start());
    m_server->setAnswering(false);
    DBusNoticeService notices;
    ASSERT_TRUE(notices.load());

    QElapsedTimer timer;
    timer.start();
    for (int i = 0; i < 20; ++i)
        notices.notify(QStringLiteral("t%1").arg(i), QStringLiteral("d"), QStringLiteral("n"), 2,
                       false);
    EXPECT_LT(timer.elapsed(), 500);
    ASSERT_TRUE(waitForNotices(20));
}

TEST_F(DBusNoticeServiceTest, ServerOnTheBusIsFoundByLoad)
{
    ASSERT_TRUE(m_server->start());
    DBusNoticeService after;
    EXPECT_TRUE(after.load());
    m_server->stop();
    DBusNoticeService gone;
    const QDBusReply<QStringList> activatable =
        QDBusConnection::sessionBus().interface()->activatableServiceNames();
    if (!activatable.value().contains(QStringLiteral("org.freedesktop.Notifications"))) {
        EXPECT_FALSE(gone.load());
    }
}

} // namespace

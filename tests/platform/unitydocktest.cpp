#include "platform/x11/unitydock.h"

#include <QApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QMainWindow>
#include <QTest>
#include <QWidget>

#include <gtest/gtest.h>

namespace {

constexpr int waitMs = 5000;

class UpdateRecorder : public QObject
{
    Q_OBJECT

public:
    QList<QDBusMessage> updates;

public Q_SLOTS:
    void record(const QDBusMessage &message) { updates.append(message); }
};

class UnityDockTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(QDBusConnection::sessionBus().isConnected()) << "run under dbus-run-session";
        // A second connection, so that the signal is seen as another program sees it.
        m_watcher = std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(
            QDBusConnection::SessionBus, QStringLiteral("dockwatcher")));
        ASSERT_TRUE(m_watcher->connect(QString(), QString(),
                                       QStringLiteral("com.canonical.Unity.LauncherEntry"),
                                       QStringLiteral("Update"), &m_recorder,
                                       SLOT(record(QDBusMessage))));
    }

    void TearDown() override
    {
        m_watcher.reset();
        QDBusConnection::disconnectFromBus(QStringLiteral("dockwatcher"));
    }

    bool waitForUpdates(qsizetype count)
    {
        return QTest::qWaitFor([&] { return m_recorder.updates.size() >= count; }, waitMs);
    }

    std::unique_ptr<QDBusConnection> m_watcher;
    UpdateRecorder m_recorder;
};

TEST_F(UnityDockTest, BadgeIsTheLauncherEntryCount)
{
    UnityDock dock;
    dock.setBadgeLabel(QStringLiteral("42"));
    ASSERT_TRUE(waitForUpdates(1));

    const QDBusMessage &update = m_recorder.updates.first();
    EXPECT_EQ(update.path(), QStringLiteral("/com/canonical/unity/launcherentry/quillstash"));
    ASSERT_EQ(update.arguments().size(), 2);
    EXPECT_EQ(update.arguments().at(0).toString(), QStringLiteral("application://quillstash.desktop"));
    const QVariantMap properties =
        qdbus_cast<QVariantMap>(update.arguments().at(1));
    EXPECT_EQ(properties.value(QStringLiteral("count")).typeId(), QMetaType::LongLong)
        << "docks read the count as a D-Bus int64";
    EXPECT_EQ(properties.value(QStringLiteral("count")).toLongLong(), 42);
    EXPECT_EQ(properties.value(QStringLiteral("count-visible")).typeId(), QMetaType::Bool);
    EXPECT_TRUE(properties.value(QStringLiteral("count-visible")).toBool());
    EXPECT_EQ(dock.badgeLabel(), QStringLiteral("42"));
}

// Repeating a label sends nothing: each update seen must be the next change.
// Signals from one sender arrive in order, so the last label closes the check.
TEST_F(UnityDockTest, OnlyChangesAreSent)
{
    UnityDock dock;
    const QStringList labels{QStringLiteral("1"), QStringLiteral("1"), QStringLiteral("2"),
                             QString(),          QString(),          QStringLiteral("abc"),
                             QStringLiteral("3")};
    for (const QString &label : labels)
        dock.setBadgeLabel(label);

    const QList<std::pair<qint64, bool>> expected{{1, true}, {2, true}, {0, false}, {0, false},
                                                  {3, true}};
    ASSERT_TRUE(waitForUpdates(expected.size()));
    ASSERT_EQ(m_recorder.updates.size(), expected.size());
    for (qsizetype i = 0; i < expected.size(); ++i) {
        const QVariantMap properties = qdbus_cast<QVariantMap>(m_recorder.updates.at(i).arguments().at(1));
        EXPECT_EQ(properties.value(QStringLiteral("count")).toLongLong(), expected.at(i).first) << i;
        EXPECT_EQ(properties.value(QStringLiteral("count-visible")).toBool(), expected.at(i).second)
            << i;
    }
}

TEST(UnityDock, AttentionWithoutWindowsIsHarmless)
{
    UnityDock dock;
    dock.requestUserAttention();
    QWidget hidden;
    dock.requestUserAttention();
    SUCCEED();
}

TEST(UnityDock, ActiveWhileAWindowHasTheFocus)
{
    if (QGuiApplication::platformName() != QLatin1String("xcb"))
        GTEST_SKIP() << "needs the X server";
    UnityDock dock;
    QMainWindow window;
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window, waitMs));
    EXPECT_TRUE(QTest::qWaitFor([&] { return dock.isActive(); }, waitMs));
    dock.requestUserAttention();
}

} // namespace

#include "unitydocktest.moc"

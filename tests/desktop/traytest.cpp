#include "desktop/desktoptest.h"

#include <QImage>
#include <QTest>

using TrayTest = DesktopTest;

// The test tray against a plain Qt tray icon: it must see the item, read its tool tip and icon, and click
// its menu so that the program's actions run, as the tray tests of the program will rely on.
TEST_F(TrayTest, testTrayReadsAQtTrayIconAndItsMenuClicksRunTheActions)
{
    QProcess probe;
    probe.setProcessEnvironment(programEnvironment());
    probe.start(QStringLiteral(TRAYPROBE_BIN), {});
    ASSERT_TRUE(probe.waitForStarted());
    const std::optional<StatusNotifierHost::Item> item = trayItemOf(probe.processId());
    ASSERT_TRUE(item);
    EXPECT_EQ(m_tray->toolTip(*item), QStringLiteral("Probe tip"));
    EXPECT_EQ(m_tray->menuLabels(*item), (QStringList{QStringLiteral("Turn Green"), QStringLiteral("Quit")}));
    const QImage red = m_tray->icon(*item);
    EXPECT_EQ(red.size(), QSize(32, 32));
    EXPECT_EQ(red.pixel(16, 16), qRgb(255, 0, 0));
    ASSERT_TRUE(screenshotWindow(QStringLiteral("^Tray probe$"), m_home.filePath(QStringLiteral("probe.png"))));
    EXPECT_EQ(QImage(m_home.filePath(QStringLiteral("probe.png"))).size(), QSize(200, 60));

    const int icons = m_tray->signalCount(*item, QStringLiteral("NewIcon"));
    ASSERT_TRUE(m_tray->clickMenuItem(*item, QStringLiteral("Turn Green")));
    ASSERT_TRUE(m_tray->waitForSignal(*item, QStringLiteral("NewIcon"), icons, 5000));
    EXPECT_EQ(m_tray->icon(*item).pixel(16, 16), qRgb(0, 255, 0));
    EXPECT_FALSE(m_tray->clickMenuItem(*item, QStringLiteral("Turn Blue")));
    ASSERT_TRUE(m_tray->clickMenuItem(*item, QStringLiteral("Quit")));
    EXPECT_TRUE(QTest::qWaitFor([&] { return probe.state() == QProcess::NotRunning; }, 5000));
    EXPECT_EQ(probe.readAllStandardOutput(), QByteArray("tray available\nturned green\nquit\n"));
    EXPECT_TRUE(QTest::qWaitFor([&] { return m_tray->items().isEmpty(); }, 5000)) << "the item outlived its program";
}

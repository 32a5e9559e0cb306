#include "desktop/desktoptest.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <map>

namespace {

using Values = std::map<QString, QString>;

const Values freshUserDefaults{
    {QStringLiteral("autosave"), QStringLiteral("false")},
    {QStringLiteral("autoremove"), QStringLiteral("true")},
    {QStringLiteral("limitnumber"), QStringLiteral("60")},
    {QStringLiteral("soundenable"), QStringLiteral("true")},
    {QStringLiteral("autolaunch"), QStringLiteral("false")},
    {QStringLiteral("iconbounce"), QStringLiteral("true")},
    {QStringLiteral("autorec"), QStringLiteral("true")},
    {QStringLiteral("recatstartup"), QStringLiteral("true")},
};

class SettingsTest : public DesktopTest
{
protected:
    QString settingsPath() const { return m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")); }

    Values readSettings() const
    {
        QSettings settings(settingsPath(), QSettings::IniFormat);
        Values values;
        for (const auto &[key, unused] : freshUserDefaults) {
            if (settings.contains(key))
                values[key] = settings.value(key).toString();
        }
        return values;
    }

    void writeSettings(const Values &values) const
    {
        QSettings settings(settingsPath(), QSettings::IniFormat);
        for (const auto &[key, value] : values)
            settings.setValue(key, value);
        settings.sync();
        ASSERT_EQ(settings.status(), QSettings::NoError);
    }
};

} // namespace

TEST_F(SettingsTest, storedSettingsAreReadBackWithTheDefaults)
{
    ASSERT_TRUE(startProgram());
    quitProgram();
    EXPECT_EQ(readSettings(), freshUserDefaults);

    // Recording off at start-up: a copy made while it runs is neither
    // recorded nor announced.
    const Values edited{{QStringLiteral("limitnumber"), QStringLiteral("5")},
                        {QStringLiteral("recatstartup"), QStringLiteral("false")}};
    writeSettings(edited);
    m_notices->clear();
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("copied while not recording"));
    ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs));
    EXPECT_TRUE(captures().isEmpty());
    EXPECT_TRUE(m_notices->notices().isEmpty()) << m_notices->notices().first().summary.toStdString();
    quitProgram();

    Values expected = edited;
    expected.insert(freshUserDefaults.cbegin(), freshUserDefaults.cend());
    EXPECT_EQ(readSettings(), expected);
}

TEST_F(SettingsTest, loginItemFollowsTheAutolaunchSetting)
{
    const QString entry = m_home.filePath(QStringLiteral(".config/autostart/quillstash.desktop"));
    const QString exec = QStringLiteral("\nExec=") + QFileInfo(QStringLiteral(QUILLSTASH_BIN)).canonicalFilePath() + u'\n';

    writeSettings({{QStringLiteral("autolaunch"), QStringLiteral("true")}});
    ASSERT_TRUE(startProgram());
    quitProgram();
    QFile file(entry);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "no autostart entry at " << entry.toStdString();
    EXPECT_TRUE(QString::fromUtf8(file.readAll()).contains(exec)) << "it does not start " << QUILLSTASH_BIN;

    writeSettings({{QStringLiteral("autolaunch"), QStringLiteral("false")}});
    ASSERT_TRUE(startProgram());
    quitProgram();
    EXPECT_FALSE(QFile::exists(entry)) << "the autostart entry is still there";
}

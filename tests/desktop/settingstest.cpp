#include "desktop/desktoptest.h"

#include <QFile>
#include <QFileInfo>
#include <QSettings>

#include <map>

namespace {

using Values = std::map<QString, QString>;

class SettingsTest : public DesktopTest
{
protected:
    QString settingsPath() const { return m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")); }
    Values readSettings(const Values &keys) const
    {
        QSettings settings(settingsPath(), QSettings::IniFormat);
        Values values;
        for (const auto &[key, unused] : keys)
            values[key] = settings.value(key, QStringLiteral("(absent)")).toString();
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

// Recording off at start-up: a copy made while the program runs is neither
// recorded nor announced. At quit every setting is written back, the stored
// ones as read and the others with their defaults; the login item follows
// the autolaunch setting both ways.
TEST_F(SettingsTest, storedSettingsAreReadAndWrittenBackWithTheDefaultsAndTheLoginItemFollowsThem)
{
    const QString entry = m_home.filePath(QStringLiteral(".config/autostart/quillstash.desktop"));
    const QString exec = QStringLiteral("\nExec=") + QFileInfo(QStringLiteral(QUILLSTASH_BIN)).canonicalFilePath() + u'\n';
    const Values edited{{"limitnumber", "5"}, {"recatstartup", "false"}, {"autolaunch", "true"}};
    writeSettings(edited);
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("copied while not recording"));
    ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs));
    EXPECT_TRUE(captures().isEmpty());
    EXPECT_TRUE(m_notices->notices().isEmpty()) << m_notices->notices().first().summary.toStdString();
    quitProgram();
    const Values expected{{"autosave", "false"},  {"autoremove", "true"}, {"limitnumber", "5"},
                          {"soundenable", "true"}, {"autolaunch", "true"}, {"iconbounce", "true"},
                          {"autorec", "true"},     {"recatstartup", "false"}};
    EXPECT_EQ(readSettings(expected), expected);
    QFile file(entry);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "no autostart entry at " << entry.toStdString();
    EXPECT_TRUE(QString::fromUtf8(file.readAll()).contains(exec)) << "it does not start " << QUILLSTASH_BIN;

    writeSettings({{"autolaunch", "false"}});
    ASSERT_TRUE(startProgram());
    quitProgram();
    EXPECT_FALSE(QFile::exists(entry)) << "the autostart entry is still there";
}

#include "desktop/desktoptest.h"

#include <QDir>
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

// The setting keys as the file holds them, read as text so that the kind of
// each value shows too.
Values readSettings(const QString &path)
{
    QSettings settings(path, QSettings::IniFormat);
    Values values;
    for (const auto &[key, unused] : freshUserDefaults) {
        if (settings.contains(key))
            values[key] = settings.value(key).toString();
    }
    return values;
}

void writeSettings(const QString &path, const Values &values)
{
    QDir().mkpath(QFileInfo(path).path());
    QSettings settings(path, QSettings::IniFormat);
    for (const auto &[key, value] : values)
        settings.setValue(key, value);
    settings.sync();
    ASSERT_EQ(settings.status(), QSettings::NoError);
}

// Key=value lines of the [Desktop Entry] group.
std::map<QString, QString> readDesktopEntry(const QString &path)
{
    std::map<QString, QString> keys;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return keys;
    bool inEntry = false;
    while (!file.atEnd()) {
        const QString line = QString::fromUtf8(file.readLine()).trimmed();
        if (line.startsWith(u'[')) {
            inEntry = line == QStringLiteral("[Desktop Entry]");
            continue;
        }
        const qsizetype equals = line.indexOf(u'=');
        if (inEntry && equals > 0)
            keys[line.left(equals).trimmed()] = line.mid(equals + 1).trimmed();
    }
    return keys;
}

QString firstWord(const QString &exec)
{
    QString word = exec.section(u' ', 0, 0, QString::SectionSkipEmpty);
    if (word.startsWith(u'"') && word.endsWith(u'"'))
        word = word.mid(1, word.size() - 2);
    return word;
}

} // namespace

using SettingsTest = DesktopTest;

TEST_F(SettingsTest, quitWritesTheDefaultsAndKeepsEditedValues)
{
    const QString path = QuillstashProcess::settingsPath(home());
    ASSERT_FALSE(QFile::exists(path));

    QuillstashProcess &first = startProgram();
    ASSERT_TRUE(first.waitForTickCount(1, startUpTimeoutMs));
    quitProgram(first);
    ASSERT_TRUE(QFile::exists(path)) << "no settings file at " << path.toStdString();
    EXPECT_EQ(readSettings(path), freshUserDefaults);

    // Recording off at start-up: a copy made while it runs is not recorded
    // and nothing is announced.
    writeSettings(path, {{QStringLiteral("limitnumber"), QStringLiteral("5")},
                         {QStringLiteral("recatstartup"), QStringLiteral("false")}});
    m_notices->clear();
    QuillstashProcess &second = startProgram();
    ASSERT_TRUE(second.waitForTickCount(1, startUpTimeoutMs));
    ASSERT_TRUE(m_xclip->copy("copied while not recording"));
    ASSERT_TRUE(second.waitForMoreTicks(3, 4 * tickMs));
    EXPECT_TRUE(second.captures().isEmpty());
    EXPECT_TRUE(m_notices->notices().isEmpty()) << "first notice: "
                                                << m_notices->notices().first().summary.toStdString();
    quitProgram(second);

    Values edited = freshUserDefaults;
    edited[QStringLiteral("limitnumber")] = QStringLiteral("5");
    edited[QStringLiteral("recatstartup")] = QStringLiteral("false");
    EXPECT_EQ(readSettings(path), edited);
}

TEST_F(SettingsTest, loginItemFollowsTheAutolaunchSetting)
{
    const QString settings = QuillstashProcess::settingsPath(home());
    const QString entry = QuillstashProcess::autostartPath(home());

    writeSettings(settings, {{QStringLiteral("autolaunch"), QStringLiteral("true")}});
    QuillstashProcess &first = startProgram();
    ASSERT_TRUE(first.waitForTickCount(1, startUpTimeoutMs));
    ASSERT_TRUE(QFile::exists(entry)) << "no autostart entry at " << entry.toStdString();
    const auto keys = readDesktopEntry(entry);
    EXPECT_EQ(keys.count(QStringLiteral("Type")) ? keys.at(QStringLiteral("Type")) : QString(),
              QStringLiteral("Application"));
    EXPECT_TRUE(keys.count(QStringLiteral("Name")) && !keys.at(QStringLiteral("Name")).isEmpty())
        << "a desktop entry needs a Name";
    ASSERT_TRUE(keys.count(QStringLiteral("Exec"))) << "the autostart entry has no Exec";
    const QString program = firstWord(keys.at(QStringLiteral("Exec")));
    EXPECT_EQ(QFileInfo(program).canonicalFilePath(), QFileInfo(QStringLiteral(QUILLSTASH_BIN)).canonicalFilePath())
        << "Exec=" << keys.at(QStringLiteral("Exec")).toStdString();
    quitProgram(first);
    EXPECT_TRUE(QFile::exists(entry)) << "quitting removed the autostart entry";
    EXPECT_EQ(readSettings(settings)[QStringLiteral("autolaunch")], QStringLiteral("true"));

    writeSettings(settings, {{QStringLiteral("autolaunch"), QStringLiteral("false")}});
    QuillstashProcess &second = startProgram();
    ASSERT_TRUE(second.waitForTickCount(1, startUpTimeoutMs));
    EXPECT_FALSE(QFile::exists(entry)) << "the autostart entry is still there";
    quitProgram(second);
    EXPECT_EQ(readSettings(settings)[QStringLiteral("autolaunch")], QStringLiteral("false"));
}

#include "platform/x11/qsettingsuserdefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>

namespace {

// The next run of the program reads the INI file back, where everything is
// text. QSettings caches what it wrote per file within a process, so the next
// run reads a copy of the file under a new name.
QSettingsUserDefaults writtenAndReread(const QTemporaryDir &dir, const std::function<void(UserDefaults &)> &write)
{
    const QString path = dir.filePath(QStringLiteral("Quillstash.conf"));
    {
        QSettingsUserDefaults defaults(path);
        write(defaults);
        defaults.synchronize();
    }
    EXPECT_TRUE(QFile::copy(path, dir.filePath(QStringLiteral("nextrun.conf"))));
    return QSettingsUserDefaults(dir.filePath(QStringLiteral("nextrun.conf")));
}

TEST(QSettingsUserDefaults, TypedReadsAfterRestartReadTextAsTheDefaultsSystemDoes)
{
    const struct { QVariant stored; bool asBool; qint64 asInteger; } rows[] = {
        {"abc", false, 0},  {"12abc", true, 12}, {QString(), false, 0}, {true, true, 0},    {false, false, 0},
        {"true", true, 0},  {"YES", true, 0},    {"no", false, 0},      {"1", true, 1},     {"0", false, 0},
        {"0010", true, 10}, {"  -7", true, -7},  {qint64(60), true, 60}, {-5, true, -5},    {0, false, 0},
    };
    for (const auto &row : rows) {
        QTemporaryDir dir;
        const auto defaults = writtenAndReread(dir, [&](UserDefaults &d) { d.setObject(row.stored, "limitnumber"); });
        const std::string stored = row.stored.toString().toStdString();
        EXPECT_TRUE(defaults.objectForKey("limitnumber").isValid()) << stored;
        EXPECT_EQ(defaults.boolForKey("limitnumber"), row.asBool) << stored;
        EXPECT_EQ(defaults.integerForKey("limitnumber"), row.asInteger) << stored;
        EXPECT_FALSE(defaults.objectForKey("absent").isValid());
        EXPECT_TRUE(!defaults.boolForKey("absent") && defaults.integerForKey("absent") == 0
                    && defaults.stringForKey("absent").isNull());
    }
}

// A phrase is whatever the user typed: separators, quotes, escapes and line
// breaks must come back exactly, never as a list or with quotes stripped; and
// what was removed must stay removed.
TEST(QSettingsUserDefaults, PhraseTextAndRemovalsSurviveRestartUnchanged)
{
    const QStringList phrases{
        "a, b, c", "\"quoted\" and 'single'", "back\\slash\\n not a newline", "line one\nline two\r\n\tindented",
        "  padded  ", "key=value; [section] #hash", "Grüße, 東京, emoji 😀", "@Variant(looks special)",
    };
    QTemporaryDir dir;
    const auto defaults = writtenAndReread(dir, [&](UserDefaults &d) {
        for (int i = 0; i < phrases.size(); ++i)
            d.setValue(phrases.at(i), QStringLiteral("phrase_content%1").arg(i + 1));
        d.setValue("one", "phrase_title1");
        d.setValue("two", "phrase_title2");
        d.synchronize();
        d.removeObjectForKey("phrase_title1");
        d.setObject(QVariant(), "phrase_title2");
    });
    for (int i = 0; i < phrases.size(); ++i)
        EXPECT_EQ(defaults.stringForKey(QStringLiteral("phrase_content%1").arg(i + 1)), phrases.at(i));
    EXPECT_FALSE(defaults.objectForKey("phrase_title1").isValid());
    EXPECT_FALSE(defaults.objectForKey("phrase_title2").isValid());
}

} // namespace

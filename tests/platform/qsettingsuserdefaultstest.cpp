#include "platform/x11/qsettingsuserdefaults.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// After a restart all is text. QSettings caches each file it wrote, so the next run reads a copy.
TEST(QSettingsUserDefaults, ValuesSurviveARestartAsText)
{
    const struct { QVariant stored; bool asBool; qint64 asInteger; } rows[] = {
        {QVariant(), false, 0}, {"abc", false, 0}, {"12abc", true, 12}, {QString(), false, 0}, {true, true, 0},
        {"YES", true, 0}, {"0010", true, 10}, {"  -7", true, -7}, {qint64(60), true, 60}, {0, false, 0},
        {"a, b, c", false, 0}, {"Tab\tand \"quoted\" 'single'", true, 0}, {"back\\slash\\n\n [line] #two", false, 0},
    };
    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("Quillstash.conf"));
    QSettingsUserDefaults defaults(path);
    for (size_t i = 0; i < std::size(rows); ++i)
        defaults.setObject(rows[i].stored, QString::number(i));
    defaults.synchronize();
    ASSERT_TRUE(QFile::copy(path, dir.filePath(QStringLiteral("nextrun.conf"))));
    const QSettingsUserDefaults next(dir.filePath(QStringLiteral("nextrun.conf")));
    for (size_t i = 0; i < std::size(rows); ++i) {
        const QString key = QString::number(i);
        SCOPED_TRACE(rows[i].stored.toString().toStdString());
        EXPECT_EQ(next.objectForKey(key).isValid(), rows[i].stored.isValid());
        EXPECT_EQ(next.stringForKey(key), rows[i].stored.toString());
        EXPECT_EQ(next.boolForKey(key), rows[i].asBool);
        EXPECT_EQ(next.integerForKey(key), rows[i].asInteger);
    }
}

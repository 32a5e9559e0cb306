#include "platform/x11/qsettingsuserdefaults.h"

#include <QDir>
#include <QFile>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

// Writes through one instance and reads the file as the next run of the
// program does: the INI file then gives everything back as text. QSettings
// keeps what it wrote cached per file within a process, so the next run is
// played by reading a copy of the file under a new name.
class RoundTrip
{
public:
    RoundTrip() : m_path(m_dir.filePath(QStringLiteral("Quillstash.conf"))) {}

    void write(const QVariant &value, const QString &key)
    {
        QSettingsUserDefaults defaults(m_path);
        defaults.setObject(value, key);
        defaults.synchronize();
    }
    void writeText(const QByteArray &ini)
    {
        QFile file(m_path);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(ini);
    }
    QSettingsUserDefaults reread()
    {
        const QString copy = m_dir.filePath(QStringLiteral("run%1.conf").arg(++m_runs));
        EXPECT_TRUE(QFile::copy(m_path, copy));
        return QSettingsUserDefaults(copy);
    }
    QString path() const { return m_path; }

private:
    QTemporaryDir m_dir;
    QString m_path;
    int m_runs = 0;
};

struct TypedRead
{
    const char *name;
    QVariant stored;
    bool asBool;
    qint64 asInteger;
};

void PrintTo(const TypedRead &row, std::ostream *os) { *os << row.name; }

class TypedReadAfterRestart : public ::testing::TestWithParam<TypedRead>
{
};

TEST_P(TypedReadAfterRestart, ReadsTextAsTheDefaultsSystemDoes)
{
    const TypedRead &row = GetParam();
    RoundTrip store;
    store.write(row.stored, QStringLiteral("limitnumber"));
    const QSettingsUserDefaults defaults = store.reread();

    EXPECT_TRUE(defaults.objectForKey(QStringLiteral("limitnumber")).isValid());
    EXPECT_EQ(defaults.boolForKey(QStringLiteral("limitnumber")), row.asBool);
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("limitnumber")), row.asInteger);
}

INSTANTIATE_TEST_SUITE_P(
    Values, TypedReadAfterRestart,
    ::testing::Values(TypedRead{"text", QStringLiteral("abc"), false, 0},
                      TypedRead{"digitsThenText", QStringLiteral("12abc"), true, 12},
                      TypedRead{"empty", QString(), false, 0},
                      TypedRead{"boolTrue", true, true, 0},
                      TypedRead{"boolFalse", false, false, 0},
                      TypedRead{"textTRUE", QStringLiteral("true"), true, 0},
                      TypedRead{"textYES", QStringLiteral("YES"), true, 0},
                      TypedRead{"textNo", QStringLiteral("no"), false, 0},
                      TypedRead{"textOne", QStringLiteral("1"), true, 1},
                      TypedRead{"textZero", QStringLiteral("0"), false, 0},
                      TypedRead{"leadingZeros", QStringLiteral("0010"), true, 10},
                      TypedRead{"blanksAndSign", QStringLiteral("  -7"), true, -7},
                      TypedRead{"integer", qint64(60), true, 60},
                      TypedRead{"negativeInteger", -5, true, -5},
                      TypedRead{"zero", 0, false, 0}),
    [](const auto &info) { return std::string(info.param.name); });

TEST(QSettingsUserDefaults, AbsentKeyIsInvalidAndReadsAsNothing)
{
    RoundTrip store;
    store.write(QStringLiteral("x"), QStringLiteral("other"));
    const QSettingsUserDefaults defaults = store.reread();

    EXPECT_FALSE(defaults.objectForKey(QStringLiteral("limitnumber")).isValid());
    EXPECT_FALSE(defaults.boolForKey(QStringLiteral("limitnumber")));
    EXPECT_EQ(defaults.integerForKey(QStringLiteral("limitnumber")), 0);
    EXPECT_TRUE(defaults.stringForKey(QStringLiteral("limitnumber")).isNull());
}

TEST(QSettingsUserDefaults, HandEditedTextIsReadAsText)
{
    RoundTrip store;
    store.writeText("[General]\nlimitnumber=abc\nautosave=YES\nsoundenable=0\n");
    const QSettingsUserDefaults defaults = store.reread();

    EXPECT_EQ(defaults.integerForKey(QStringLiteral("limitnumber")), 0);
    EXPECT_TRUE(defaults.boolForKey(QStringLiteral("autosave")));
    EXPECT_FALSE(defaults.boolForKey(QStringLiteral("soundenable")));
    EXPECT_TRUE(defaults.objectForKey(QStringLiteral("soundenable")).isValid());
}

// A phrase is whatever the user typed: separators, quotes, escapes and line
// breaks must come back exactly, never as a list or with quotes stripped.
TEST(QSettingsUserDefaults, PhraseTextSurvivesRestartUnchanged)
{
    const QStringList phrases{
        QStringLiteral("a, b, c"),
        QStringLiteral("\"quoted\" and 'single'"),
        QStringLiteral("back\\slash\\n not a newline"),
        QStringLiteral("line one\nline two\r\n\tindented"),
        QStringLiteral("  padded  "),
        QStringLiteral("key=value; [section] #hash"),
        QStringLiteral("Grüße, 東京, emoji 😀"),
        QStringLiteral("@Variant(looks special)"),
    };
    RoundTrip store;
    {
        QSettingsUserDefaults defaults(store.path());
        for (int i = 0; i < phrases.size(); ++i)
            defaults.setValue(phrases.at(i), QStringLiteral("phrase_content%1").arg(i + 1));
        defaults.synchronize();
    }
    const QSettingsUserDefaults defaults = store.reread();
    for (int i = 0; i < phrases.size(); ++i)
        EXPECT_EQ(defaults.stringForKey(QStringLiteral("phrase_content%1").arg(i + 1)),
                  phrases.at(i));
}

TEST(QSettingsUserDefaults, RemovedKeysStayRemovedAfterRestart)
{
    RoundTrip store;
    {
        QSettingsUserDefaults defaults(store.path());
        defaults.setValue(QStringLiteral("one"), QStringLiteral("phrase_title1"));
        defaults.setValue(QStringLiteral("two"), QStringLiteral("phrase_title2"));
        defaults.setValue(QStringLiteral("kept"), QStringLiteral("phrase_title3"));
        defaults.synchronize();
    }
    {
        QSettingsUserDefaults defaults(store.path());
        defaults.removeObjectForKey(QStringLiteral("phrase_title1"));
        defaults.setObject(QVariant(), QStringLiteral("phrase_title2"));
        defaults.synchronize();
    }
    const QSettingsUserDefaults defaults = store.reread();
    EXPECT_FALSE(defaults.objectForKey(QStringLiteral("phrase_title1")).isValid());
    EXPECT_FALSE(defaults.objectForKey(QStringLiteral("phrase_title2")).isValid());
    EXPECT_EQ(defaults.stringForKey(QStringLiteral("phrase_title3")), QStringLiteral("kept"));
}

TEST(QSettingsUserDefaults, DefaultDomainLivesInTheUsersConfigFolder)
{
    const QString expected =
        QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation)
        + QStringLiteral("/Quillstash/Quillstash.conf");
    QFile::remove(expected);
    {
        QSettingsUserDefaults defaults;
        defaults.setValue(QStringLiteral("/home/user/backups"), QStringLiteral("lastSavedDirectory"));
        defaults.synchronize();
    }
    ASSERT_TRUE(QFile::exists(expected)) << qPrintable(expected);
    QFile file(expected);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_TRUE(file.readAll().contains("lastSavedDirectory=/home/user/backups"));
    QFile::remove(expected);
}

} // namespace

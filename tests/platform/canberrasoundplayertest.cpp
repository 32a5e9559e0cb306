#include "platform/x11/canberrasoundplayer.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace {

const QStringList soundNames{QStringLiteral("Pop"),    QStringLiteral("Tink"),
                             QStringLiteral("Submarine"), QStringLiteral("Bottle"),
                             QStringLiteral("Hero"),   QStringLiteral("Purr")};

// ALSA's null device plays into nothing, so the tests run without a sound
// card. alsa-lib reads the file at its first use, before any test plays.
class SoundEnvironment : public ::testing::Environment
{
public:
    void SetUp() override
    {
        QFile asoundrc(QDir::homePath() + QStringLiteral("/.asoundrc"));
        if (!asoundrc.exists() && asoundrc.open(QIODevice::WriteOnly))
            asoundrc.write("pcm.!default { type null }\n");
    }
};

const auto *const soundEnvironment =
    ::testing::AddGlobalTestEnvironment(new SoundEnvironment);

class EverySound : public ::testing::TestWithParam<QString>
{
};

TEST_P(EverySound, PlaysFromTheTheme)
{
    const QString themed = QStringLiteral("/usr/share/sounds/freedesktop/stereo/%1.oga")
                               .arg(QString::fromLatin1(CanberraSoundPlayer::eventId(GetParam())));
    if (!QFile::exists(themed))
        GTEST_SKIP() << "no freedesktop sound " << qPrintable(themed);
    CanberraSoundPlayer player;
    player.play(GetParam());
    EXPECT_EQ(player.lastOutcome(), CanberraSoundPlayer::Outcome::Theme);
}

// Without the freedesktop sound the program's own file of the same name plays;
// libcanberra must be able to decode each of them.
TEST_P(EverySound, FallsBackToTheProgramsOwnFile)
{
    ASSERT_FALSE(CanberraSoundPlayer::soundFile(GetParam()).isEmpty());
    CanberraSoundPlayer player(CanberraSoundPlayer::Sources::OwnFilesOnly);
    player.play(GetParam());
    EXPECT_EQ(player.lastOutcome(), CanberraSoundPlayer::Outcome::File);
}

INSTANTIATE_TEST_SUITE_P(Names, EverySound, ::testing::ValuesIn(soundNames),
                         [](const auto &info) { return info.param.toStdString(); });

TEST(CanberraSoundPlayer, UnknownNameIsIgnored)
{
    CanberraSoundPlayer player;
    player.play(QStringLiteral("Glass"));
    EXPECT_EQ(player.lastOutcome(), CanberraSoundPlayer::Outcome::None);
    player.play(QString());
    EXPECT_EQ(player.lastOutcome(), CanberraSoundPlayer::Outcome::None);
    player.play(QStringLiteral("Pop"));
    EXPECT_NE(player.lastOutcome(), CanberraSoundPlayer::Outcome::Failed);
}

TEST(CanberraSoundPlayer, OwnSoundFilesAreSmallWaves)
{
    for (const QString &name : soundNames) {
        QFile file(CanberraSoundPlayer::soundFile(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << qPrintable(name);
        EXPECT_LT(file.size(), 50 * 1024) << qPrintable(name);
        const QByteArray header = file.read(12);
        EXPECT_TRUE(header.startsWith("RIFF") && header.endsWith("WAVE")) << qPrintable(name);
    }
    EXPECT_TRUE(CanberraSoundPlayer::soundFile(QStringLiteral("Glass")).isEmpty());
}

// Sounds start on threads of their own; the one shared context must be made once.
TEST(CanberraSoundPlayer, PlaysFromManyThreadsAtOnce)
{
    CanberraSoundPlayer player;
    std::vector<std::thread> threads;
    for (int i = 0; i < 12; ++i)
        threads.emplace_back([&player, i] { player.play(soundNames.at(i % soundNames.size())); });
    for (std::thread &t : threads)
        t.join();
    EXPECT_NE(player.lastOutcome(), CanberraSoundPlayer::Outcome::Failed);
}

} // namespace

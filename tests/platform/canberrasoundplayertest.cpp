#include "platform/x11/canberrasoundplayer.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace {

using Outcome = CanberraSoundPlayer::Outcome;

// Each of the program's names plays from the theme when it has the sound, and
// otherwise from a file of the program's own that libcanberra can decode.
TEST(CanberraSoundPlayer, EveryNameReachesARealSound)
{
    // ALSA's null device plays into nothing, so the test runs without a sound
    // card. alsa-lib reads the file at its first use, before anything plays.
    QFile asoundrc(QDir::homePath() + QStringLiteral("/.asoundrc"));
    ASSERT_TRUE(asoundrc.exists() || (asoundrc.open(QIODevice::WriteOnly) && asoundrc.write("pcm.!default { type null }\n")));
    asoundrc.close();
    CanberraSoundPlayer player, ownFiles(CanberraSoundPlayer::Sources::OwnFilesOnly);
    for (const QString name : {"Pop", "Tink", "Submarine", "Bottle", "Hero", "Purr"}) {
        const bool themed = QFile::exists(QStringLiteral("/usr/share/sounds/freedesktop/stereo/%1.oga")
                                              .arg(QString::fromLatin1(CanberraSoundPlayer::eventId(name))));
        player.play(name);
        ownFiles.play(name);
        EXPECT_EQ(player.lastOutcome(), themed ? Outcome::Theme : Outcome::File) << qPrintable(name);
        EXPECT_EQ(ownFiles.lastOutcome(), Outcome::File) << qPrintable(name);
    }
    player.play("Glass");
    EXPECT_EQ(player.lastOutcome(), Outcome::None);
}

} // namespace

#include "platform/x11/canberrasoundplayer.h"

#include <QFile>

#include <gtest/gtest.h>

using Outcome = CanberraSoundPlayer::Outcome;

// ALSA's null device, read at its first use, plays into nothing: no sound card is needed.
TEST(CanberraSoundPlayer, EveryNameReachesARealSound)
{
    QFile asoundrc(qEnvironmentVariable("HOME") + QStringLiteral("/.asoundrc"));
    ASSERT_TRUE(asoundrc.exists() || (asoundrc.open(QIODevice::WriteOnly) && asoundrc.write("pcm.!default { type null }\n")));
    asoundrc.close();
    CanberraSoundPlayer player;
    CanberraSoundPlayer ownFiles(CanberraSoundPlayer::Sources::OwnFilesOnly);
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

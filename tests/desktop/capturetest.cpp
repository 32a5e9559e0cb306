#include "desktop/desktoptest.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QSettings>
#include <QTest>

using CaptureTest = DesktopTest;

// A copy becomes an entry within two ticks and is announced, its text escaped for the markup notice
// servers read; states a password manager marks as secret leave no trace (this process owns the clipboard
// for them: xclip offers one target). At quit every setting is written back, stored ones as read, others
// with their defaults; the login item follows autolaunch both ways. With recording off at start-up and
// no notice server, nothing is recorded and the program says once that it has no notices.
TEST_F(CaptureTest, copiesAreRecordedAndAnnouncedSecretsAndCopiesWhileOffAreNotAndSettingsAreWrittenBack)
{
    const QString entry = m_home.filePath(QStringLiteral(".config/autostart/quillstash.desktop"));
    const QString exec = QStringLiteral("\nExec=") + QFileInfo(QStringLiteral(QUILLSTASH_BIN)).canonicalFilePath() + u'\n';
    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
    settings.setValue("limitnumber", 5);
    settings.setValue("autolaunch", true);
    settings.sync();
    const struct { const char *text; QString marker; QByteArray value; } states[]{
        {"secret hint", QStringLiteral("x-kde-passwordManagerHint"), "secret"},
        {"concealed type", QStringLiteral("org.nspasteboard.ConcealedType"), ""},
        {"hint that is not secret", QStringLiteral("x-kde-passwordManagerHint"), "public"},
    };
    ASSERT_TRUE(startProgram());
    for (const auto &state : states) {
        auto *mime = new QMimeData;
        mime->setData(QStringLiteral("text/plain"), state.text);
        mime->setData(state.marker, state.value);
        ASSERT_TRUE(ownClipboard(mime)) << state.text;
        ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs)) << state.text;
    }
    ASSERT_TRUE(copy("Grüße <vom> Schreibtisch & co"));
    ASSERT_TRUE(waitForCaptures(2)) << "no entry within two ticks";
    EXPECT_EQ(captures().size(), 2) << "a secret state was recorded";
    EXPECT_EQ(captures().last(), (QStringList{"public.utf8-plain-text", "NSStringPboardType"}));
    ASSERT_TRUE(QTest::qWaitFor([&] { return m_notices->notices().size() >= 3; }, tickMs)) << "not announced";
    QStringList notices;
    for (const NotificationServer::Notice &notice : m_notices->notices())
        notices.append(notice.summary + u'|' + notice.body);
    EXPECT_EQ(notices, (QStringList{"Quillstash|Rec Start", "Add to Table|hint that is not secret",
                                    "Add to Table|Grüße &lt;vom&gt; Schreibtisch &amp; co"}));
    quitProgram();
    settings.sync();
    const std::pair<const char *, const char *> expected[]{
        {"autosave", "false"},  {"autoremove", "true"}, {"limitnumber", "5"}, {"soundenable", "true"},
        {"autolaunch", "true"}, {"iconbounce", "true"}, {"autorec", "true"},   {"recatstartup", "true"}};
    for (const auto &[key, value] : expected)
        EXPECT_EQ(settings.value(key).toString(), QString::fromLatin1(value)) << key;
    QFile file(entry);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "no autostart entry at " << entry.toStdString();
    EXPECT_TRUE(QString::fromUtf8(file.readAll()).contains(exec)) << "it does not start " << QUILLSTASH_BIN;

    settings.setValue("recatstartup", false);
    settings.setValue("autolaunch", false);
    settings.sync();
    m_notices.reset();
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("copied while not recording"));
    ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs));
    EXPECT_TRUE(captures().isEmpty());
    quitProgram({QStringLiteral("Could not load Growl.framework")});
    settings.sync();
    EXPECT_EQ(settings.value("recatstartup").toString(), QStringLiteral("false"));
    EXPECT_FALSE(QFile::exists(entry)) << "the autostart entry is still there";
}

#include "desktop/desktoptest.h"

#include <QFile>
#include <QFileInfo>
#include <QMimeData>
#include <QSettings>

using CaptureTest = DesktopTest;

// This process owns the clipboard for the secret states, as xclip offers only one target. The second start
// has recording off and no notice server: nothing is recorded, and the program says once it has no notices.
TEST_F(CaptureTest, secretsAndCopiesWhileOffAreNotRecordedAndSettingsAndTheLoginItemAreWrittenBack)
{
    const QString exec = QStringLiteral("\nExec=") + QFileInfo(QStringLiteral(QUILLSTASH_BIN)).canonicalFilePath() + u'\n';
    QSettings settings(m_home.filePath(QStringLiteral(".config/Quillstash/Quillstash.conf")), QSettings::IniFormat);
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
    ASSERT_TRUE(copy("copied"));
    ASSERT_TRUE(waitForCaptures(2));
    EXPECT_EQ(captures().size(), 2) << "a secret state was recorded";
    quitProgram();
    settings.sync();
    EXPECT_EQ(settings.value("autosave").toString(), QStringLiteral("false")) << "not written at quit";
    QFile file(m_home.filePath(QStringLiteral(".config/autostart/quillstash.desktop")));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly)) << "no autostart entry at " << file.fileName().toStdString();
    EXPECT_TRUE(QString::fromUtf8(file.readAll()).contains(exec)) << "it does not start " << QUILLSTASH_BIN;

    settings.setValue("recatstartup", false);
    settings.sync();
    m_notices.reset();
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("copied while not recording"));
    ASSERT_TRUE(waitForMoreTicks(3, 4 * tickMs));
    EXPECT_TRUE(captures().isEmpty());
    quitProgram({QStringLiteral("Could not load Growl.framework")});
}

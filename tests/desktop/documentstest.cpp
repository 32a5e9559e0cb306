#include "desktop/desktoptest.h"

#include <QTest>

using DocumentsTest = DesktopTest;

// The running program, and only it, saves its dirty history into the file a second launch names, and loads it back.
TEST_F(DocumentsTest, secondLaunchHandsTheFileOverWhichSavesTheDirtyHistoryAndLoads)
{
    // Launches the program again, as a file manager would: handing a file over, it ends silently within 2 s.
    const auto launchAgain = [this](const QStringList &arguments) {
        QProcess again;
        again.setProcessEnvironment(programEnvironment());
        again.setWorkingDirectory(m_home.path());
        again.setProcessChannelMode(QProcess::MergedChannels);
        again.start(QStringLiteral(QUILLSTASH_BIN), arguments);
        EXPECT_TRUE(again.waitForFinished(2000) && again.exitStatus() == QProcess::NormalExit && again.exitCode() == 0);
        EXPECT_EQ(again.readAll().toStdString(), "");
    };
    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy("saved and loaded"));
    ASSERT_TRUE(waitForCaptures(1));
    // The history counts as changed from the tick after a capture.
    ASSERT_TRUE(waitForMoreTicks(1, twoTicksMs));

    // A relative name with a space: the running program, started elsewhere, must get the absolute path.
    const QString file = m_home.filePath(QStringLiteral("my history.qs_backup"));
    launchAgain({QStringLiteral("my history.qs_backup")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(file); }, 5000)) << "the history was not saved";
    launchAgain({});

    // Numbering goes on after the entry loaded.
    ASSERT_TRUE(copy("after the load"));
    ASSERT_TRUE(waitForCaptures(2));
    quitProgram();
    EXPECT_EQ(captureIndexes().last(), QStringLiteral("1")) << "the handed file was not loaded";
}

#include "desktop/desktoptest.h"

#include "documents/backupfile.h"

#include <QDBusConnectionInterface>
#include <QTest>

using DocumentsTest = DesktopTest;

// The running program, and only it, saves its dirty history into the file a
// second launch names, every format byte for byte, and loads it back.
TEST_F(DocumentsTest, secondLaunchHandsTheFileOverWhichSavesEveryFormatAndLoads)
{
    // Launches the program again, as a file manager would: the exit code, or -1 when it did not end within
    // 2 s, about as long as Qt takes to start, which is all that a launch handing its file over may take.
    const auto launchAgain = [this](const QStringList &arguments) {
        QProcess again;
        again.setProcessEnvironment(programEnvironment());
        again.setWorkingDirectory(m_home.path());
        again.setProcessChannelMode(QProcess::MergedChannels);
        again.start(QStringLiteral(QUILLSTASH_BIN), arguments);
        const bool ended = again.waitForFinished(2000);
        const QByteArray output = again.readAll();
        EXPECT_TRUE(output.isEmpty()) << output.toStdString();
        return ended && again.exitStatus() == QProcess::NormalExit ? again.exitCode() : -1;
    };
    const std::map<QString, QByteArray> copied{
        {QStringLiteral("public.utf8-plain-text"), QStringLiteral("Grüße, saved and loaded ✓").toUtf8()},
        {QStringLiteral("public.png"), smallPng()},
        {QStringLiteral("public.html"), "<p>Saved <b>html</b></p>"},
    };
    ASSERT_TRUE(startProgram());
    for (const auto &[type, data] : copied) {
        ASSERT_TRUE(copy(data, type == QStringLiteral("public.utf8-plain-text") ? QString() : readBackTargets.at(type)));
        ASSERT_TRUE(waitForCaptures(int(captures().size()) + 1)) << type.toStdString() << " not captured";
    }
    // The history counts as changed from the tick after a capture.
    ASSERT_TRUE(waitForMoreTicks(1, twoTicksMs));

    // A relative name with a space: the running program, started elsewhere, must get the absolute path.
    const QString file = m_home.filePath(QStringLiteral("my history.qs_backup"));
    ASSERT_EQ(launchAgain({QStringLiteral("my history.qs_backup")}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(file); }, 5000)) << "the history was not saved";
    EXPECT_EQ(launchAgain({}), 0);
    const QString service = QStringLiteral("io.github.quillstash.Quillstash");
    EXPECT_EQ(QDBusConnection::sessionBus().interface()->servicePid(service).value(), programPid())
        << "a second launch took over";

    qint32 counter = 0;
    const QList<Entry> saved = BackupFile::openFile(file, counter).value_or(QList<Entry>());
    ASSERT_EQ(saved.size(), qsizetype(copied.size()));
    for (const Entry &entry : saved) {
        EXPECT_TRUE(captures().contains(entry->types())) << entry->types().join(u' ').toStdString();
        EXPECT_EQ(QSet<QString>(entry->types().cbegin(), entry->types().cend()).size(), entry->datas().size());
        for (const auto &[type, data] : copied)
            EXPECT_TRUE(!entry->types().contains(type) || entry->datas().value(type) == data) << type.toStdString();
    }
    // Numbering goes on after the entries loaded.
    ASSERT_TRUE(copy("after the load"));
    ASSERT_TRUE(waitForCaptures(int(copied.size()) + 1));
    quitProgram();
    EXPECT_EQ(captureIndexes().last(), QStringLiteral("3")) << "the handed file was not loaded";
}

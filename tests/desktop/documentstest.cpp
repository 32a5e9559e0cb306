#include "desktop/desktoptest.h"

#include "documents/backupfile.h"

#include <QDBusConnectionInterface>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QTest>

#include <map>

namespace {

// A launch that only hands its file over must end about as fast as Qt starts.
constexpr int quickLaunchMs = 2000;

class DocumentsTest : public DesktopTest
{
protected:
    // Launches the program once more, as a file manager would; the exit code,
    // or -1 when it did not end in time.
    int launchAgain(const QStringList &arguments)
    {
        QProcess again;
        again.setProcessEnvironment(programEnvironment());
        again.setWorkingDirectory(m_home.path());
        again.setProcessChannelMode(QProcess::MergedChannels);
        again.start(QStringLiteral(QUILLSTASH_BIN), arguments);
        const bool ended = again.waitForFinished(quickLaunchMs);
        const QByteArray output = again.readAll();
        EXPECT_TRUE(output.isEmpty()) << output.toStdString();
        return ended && again.exitStatus() == QProcess::NormalExit ? again.exitCode() : -1;
    }
};

} // namespace

// The running program, and only it, saves its dirty history into the file a
// second launch names and loads it back; the file keeps every format byte for
// byte. A clean history is not saved over the next file handed over.
TEST_F(DocumentsTest, secondLaunchHandsTheFileOverWhichSavesEveryFormatAndLoads)
{
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

    // A relative name with a space: the running program, started elsewhere,
    // must get the absolute path.
    const QString file = m_home.filePath(QStringLiteral("my history.qs_backup"));
    ASSERT_EQ(launchAgain({QStringLiteral("my history.qs_backup")}), 0);
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(file); }, 5000)) << "the history was not saved";
    EXPECT_EQ(QFileInfo(file).permissions(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
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
        if (entry->types().contains(QStringLiteral("public.tiff"))) {
            const QImage tiff = QImage::fromData(entry->datas().value(QStringLiteral("public.tiff")), "TIFF");
            EXPECT_EQ(tiff.convertToFormat(QImage::Format_ARGB32), QImage::fromData(smallPng()).convertToFormat(QImage::Format_ARGB32));
        }
    }

    // Loaded, the history is clean: a second file handed over is read, not
    // overwritten, and numbering goes on after its two entries.
    const QString other = m_home.filePath(QStringLiteral("other.qs_backup"));
    ASSERT_TRUE(BackupFile::save(other, saved.mid(0, 2)));
    const QDateTime written = QFileInfo(other).lastModified();
    ASSERT_EQ(launchAgain({other}), 0);
    ASSERT_TRUE(copy("after the second file"));
    ASSERT_TRUE(waitForCaptures(int(copied.size()) + 1));
    EXPECT_EQ(QFileInfo(other).lastModified(), written) << "a clean history was saved over the file";
    quitProgram();
    EXPECT_EQ(captureIndexes().last(), QStringLiteral("2")) << "the handed file was not loaded";
}

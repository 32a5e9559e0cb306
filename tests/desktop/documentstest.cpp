#include "desktop/desktoptest.h"

#include "app/controller.h"
#include "app/desktopplatform.h"
#include "documents/backupfile.h"
#include "settings/applicationregistries.h"

#include <QDBusConnectionInterface>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImage>
#include <QTest>

#include <csignal>
#include <fcntl.h>
#include <map>

namespace {

const QString service = QStringLiteral("io.github.quillstash.Quillstash");
// A launch that only hands its file over must end about as fast as Qt starts.
constexpr int quickLaunchMs = 2000;

Entry textEntry(const QString &text)
{
    auto entry = std::make_shared<contents>();
    entry->setContent(text);
    entry->setTypes({QStringLiteral("public.utf8-plain-text")});
    entry->setDatas({{QStringLiteral("public.utf8-plain-text"), text.toUtf8()}});
    return entry;
}

QStringList texts(const QList<Entry> &entries)
{
    QStringList all;
    for (const Entry &entry : entries)
        all.append(entry->contentOrig());
    return all;
}

// True when the process has a file in folder open for writing.
bool writesInto(qint64 pid, const QString &folder)
{
    const QString fds = QStringLiteral("/proc/%1/fd").arg(pid);
    for (const QString &fd : QDir(fds).entryList(QDir::Files | QDir::System)) {
        if (!QFile::symLinkTarget(fds + u'/' + fd).startsWith(folder + u'/'))
            continue;
        QFile info(QStringLiteral("/proc/%1/fdinfo/%2").arg(pid).arg(fd));
        if (!info.open(QIODevice::ReadOnly))
            continue;
        for (const QByteArray &line : info.readAll().split('\n')) {
            if (line.startsWith("flags:") && (line.mid(6).trimmed().toInt(nullptr, 8) & O_ACCMODE) != O_RDONLY)
                return true;
        }
    }
    return false;
}

} // namespace

class DocumentsTest : public DesktopTest
{
protected:
    // Launches the program once more, as a file manager would; the exit code,
    // or -1 when it did not end within the limit.
    int launchAgain(const QStringList &arguments, qint64 *elapsedMs = nullptr)
    {
        QProcess again;
        again.setProcessEnvironment(programEnvironment());
        again.setWorkingDirectory(m_home.path());
        again.setProcessChannelMode(QProcess::MergedChannels);
        QElapsedTimer clock;
        clock.start();
        again.start(QStringLiteral(QUILLSTASH_BIN), arguments);
        const bool ended = again.waitForFinished(quickLaunchMs);
        if (elapsedMs)
            *elapsedMs = clock.elapsed();
        const QByteArray output = again.readAll();
        EXPECT_TRUE(output.isEmpty()) << output.toStdString();
        return ended && again.exitStatus() == QProcess::NormalExit ? again.exitCode() : -1;
    }

    qint64 nameOwner() const { return QDBusConnection::sessionBus().interface()->servicePid(service).value(); }
};

// The running program saves its dirty history into the file a second launch
// names, loads it back, and the file restores every format byte for byte.
TEST_F(DocumentsTest, secondLaunchHandsTheFileOverWhichSavesAndRestoresEveryFormat)
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
    qint64 elapsed = 0;
    ASSERT_EQ(launchAgain({QStringLiteral("my history.qs_backup")}, &elapsed), 0);
    EXPECT_LT(elapsed, quickLaunchMs);
    ASSERT_TRUE(QTest::qWaitFor([&] { return QFile::exists(file); }, 5000)) << "the history was not saved";
    EXPECT_EQ(QFileInfo(file).permissions(), QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    EXPECT_EQ(launchAgain({}), 0);
    EXPECT_EQ(nameOwner(), programPid()) << "a second launch took over";

    qint32 counter = 0;
    const QList<Entry> saved = BackupFile::openFile(file, counter).value_or(QList<Entry>());
    ASSERT_EQ(saved.size(), qsizetype(copied.size()));
    for (const Entry &entry : saved) {
        EXPECT_TRUE(captures().contains(entry->types())) << entry->types().join(u' ').toStdString();
        EXPECT_EQ(QSet<QString>(entry->types().cbegin(), entry->types().cend()).size(), entry->datas().size());
        for (const auto &[type, data] : copied) {
            if (entry->types().contains(type)) {
                EXPECT_EQ(entry->datas().value(type), data) << type.toStdString();
            }
        }
        if (entry->types().contains(QStringLiteral("public.tiff"))) {
            const QImage tiff = QImage::fromData(entry->datas().value(QStringLiteral("public.tiff")), "TIFF");
            EXPECT_EQ(tiff.convertToFormat(QImage::Format_ARGB32), QImage::fromData(smallPng()).convertToFormat(QImage::Format_ARGB32));
        }
    }

    // Loaded, the history is clean: a second file handed over is read, not
    // overwritten, and numbering goes on after its entries.
    const QString other = m_home.filePath(QStringLiteral("other.qs_backup"));
    ASSERT_TRUE(BackupFile::save(other, {textEntry(QStringLiteral("one")), textEntry(QStringLiteral("two"))}));
    QFile otherFile(other);
    ASSERT_TRUE(otherFile.open(QIODevice::ReadOnly));
    const QByteArray otherBytes = otherFile.readAll();
    ASSERT_EQ(launchAgain({other}), 0);
    ASSERT_TRUE(copy("after the second file"));
    ASSERT_TRUE(waitForCaptures(int(copied.size()) + 1));
    EXPECT_TRUE(otherFile.seek(0) && otherFile.readAll() == otherBytes) << "a clean history was saved over the file";
    quitProgram();
    EXPECT_EQ(captureIndexes().last(), QStringLiteral("2")) << "the handed file was not loaded";

    // Back on the clipboard, each saved entry gives every format as captured.
    DesktopPlatform platform;
    const PlatformServices services = platform.services();
    ApplicationRegistries registries(services.defaults, services.loginItems, services.appURL);
    // This process has no sound output of its own.
    registries.setSoundEnable(false);
    Controller controller(services, registries);
    for (const Entry &entry : saved) {
        SCOPED_TRACE(entry->types().join(u' ').toStdString());
        ASSERT_TRUE(clearClipboard());
        controller.setGeneralPasteboard(entry);
        ASSERT_TRUE(waitForOwner());
        for (const QString &type : entry->types()) {
            const QString target = readBackTargets.count(type) ? readBackTargets.at(type) : type;
            EXPECT_EQ(read(target), entry->datas().value(type)) << type.toStdString();
        }
    }
}

// A save cut short by SIGKILL leaves the file as it was before the save (or,
// past the final rename, as after it): never a partial history.
TEST_F(DocumentsTest, killedDuringASaveTheFileHoldsTheOldOrTheNewHistoryWhole)
{
    // Big enough that writing it takes many polls of the program's files.
    const QByteArray big(32 * 1024 * 1024, 'k');
    const QDir folder(m_home.filePath(QStringLiteral("saves")));
    ASSERT_TRUE(folder.mkpath(QStringLiteral(".")));
    const QString file = folder.filePath(QStringLiteral("history.qs_backup"));
    const QList<Entry> old{textEntry(QStringLiteral("old one")), textEntry(QStringLiteral("old two"))};
    ASSERT_TRUE(BackupFile::save(file, old));

    ASSERT_TRUE(startProgram());
    ASSERT_TRUE(copy(big));
    ASSERT_TRUE(waitForCaptures(1));
    ASSERT_TRUE(waitForMoreTicks(1, twoTicksMs));
    ASSERT_EQ(launchAgain({file}), 0);
    QElapsedTimer waiting;
    waiting.start();
    bool saving = false;
    // The program talks to this process's notice server as it goes.
    while (!(saving = writesInto(programPid(), folder.path())) && waiting.elapsed() < 10000)
        QCoreApplication::processEvents();
    ASSERT_TRUE(saving) << "never saw the program write the file";
    ::kill(pid_t(programPid()), SIGKILL);

    qint32 counter = 0;
    const QStringList left = texts(BackupFile::openFile(file, counter).value_or(QList<Entry>()));
    EXPECT_TRUE(left == texts(old) || left == QStringList{QString::fromLatin1(big)})
        << left.size() << " entries, the first of " << (left.isEmpty() ? 0 : left.first().size()) << " characters";
}

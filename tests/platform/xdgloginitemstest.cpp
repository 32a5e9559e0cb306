#include "platform/x11/xdgloginitems.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QStandardPaths>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class XdgLoginItemsTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(m_root.isValid());
        m_folder = m_root.filePath(QStringLiteral("autostart"));
        m_program = makeProgram(QStringLiteral("bin/quillstash"));
    }

    // An executable file standing in for an installed program.
    QString makeProgram(const QString &relativePath)
    {
        const QString path = m_root.filePath(relativePath);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write("#!/bin/sh\n");
        file.close();
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return QFileInfo(path).canonicalFilePath();
    }

    void writeEntry(const QString &name, const QByteArray &contents)
    {
        QDir().mkpath(m_folder);
        QFile file(m_folder + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(contents);
    }

    QStringList fileNames() const
    {
        return QDir(m_folder).entryList(QDir::Files, QDir::Name);
    }

    QList<QUrl> resolvedUrls(const XdgLoginItems &items) const
    {
        QList<QUrl> urls;
        const auto snapshot = items.snapshot();
        EXPECT_TRUE(snapshot.has_value());
        for (const auto &item : snapshot.value_or(QList<LoginItems::Item>{}))
            urls.append(item.resolved);
        return urls;
    }

    QTemporaryDir m_root;
    QString m_folder;
    QString m_program;
};

TEST_F(XdgLoginItemsTest, MissingFolderIsAnEmptyList)
{
    const XdgLoginItems items(m_folder);
    const auto snapshot = items.snapshot();
    ASSERT_TRUE(snapshot.has_value());
    EXPECT_TRUE(snapshot->isEmpty());
}

TEST_F(XdgLoginItemsTest, FolderThatIsNotAFolderCannotBeRead)
{
    QFile file(m_folder);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    EXPECT_FALSE(XdgLoginItems(m_folder).snapshot().has_value());
}

TEST_F(XdgLoginItemsTest, InsertedItemResolvesToTheProgramAndRemoves)
{
    XdgLoginItems items(m_folder);
    const QUrl url = QUrl::fromLocalFile(m_program);
    items.insertAtTop(url);

    ASSERT_EQ(fileNames(), QStringList{QStringLiteral("quillstash.desktop")});
    const auto snapshot = items.snapshot();
    ASSERT_TRUE(snapshot.has_value());
    ASSERT_EQ(snapshot->size(), 1);
    EXPECT_EQ(snapshot->first().resolved, url);

    items.remove(snapshot->first());
    EXPECT_TRUE(fileNames().isEmpty());
    EXPECT_TRUE(items.snapshot()->isEmpty());
}

TEST_F(XdgLoginItemsTest, WrittenEntryIsAValidAutostartEntry)
{
    XdgLoginItems(m_folder).insertAtTop(QUrl::fromLocalFile(m_program));
    QFile file(m_folder + QStringLiteral("/quillstash.desktop"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QList<QByteArray> lines = file.readAll().split('\n');

    EXPECT_EQ(lines.first(), QByteArray("[Desktop Entry]"));
    for (const QByteArray &line : {QByteArray("Type=Application"), QByteArray("Name=Quillstash"),
                                   QByteArray("Icon=quillstash"),
                                   QByteArray("X-GNOME-Autostart-enabled=true"),
                                   "Exec=" + m_program.toUtf8()})
        EXPECT_TRUE(lines.contains(line)) << line.constData();
    EXPECT_TRUE(std::any_of(lines.begin(), lines.end(),
                            [](const QByteArray &l) { return l.startsWith("Comment="); }));
}

// Paths with blanks, quotes, dollars, backslashes and percent signs must be
// quoted and escaped so that the session starts exactly this program.
TEST_F(XdgLoginItemsTest, AwkwardProgramPathsRoundTrip)
{
    const QStringList paths{
        QStringLiteral("My Apps/quill stash"),
        QStringLiteral("odd/\"quoted\" $HOME `tick`"),
        QStringLiteral("odd/back\\slash"),
        QStringLiteral("odd/100% sure"),
        QStringLiteral("odd/Grüße"),
    };
    for (const QString &relative : paths) {
        QDir(m_folder).removeRecursively();
        const QString program = makeProgram(relative);
        ASSERT_FALSE(program.isEmpty()) << qPrintable(relative);
        XdgLoginItems items(m_folder);
        items.insertAtTop(QUrl::fromLocalFile(program));
        EXPECT_EQ(resolvedUrls(items), QList<QUrl>{QUrl::fromLocalFile(program)})
            << qPrintable(relative);
    }
}

TEST_F(XdgLoginItemsTest, InsertKeepsAForeignEntryOfTheSameName)
{
    const QString other = makeProgram(QStringLiteral("bin/other"));
    writeEntry(QStringLiteral("quillstash.desktop"),
               "[Desktop Entry]\nType=Application\nExec=" + other.toUtf8() + "\n");
    XdgLoginItems items(m_folder);
    items.insertAtTop(QUrl::fromLocalFile(m_program));

    EXPECT_EQ(fileNames(), (QStringList{QStringLiteral("quillstash-2.desktop"),
                                        QStringLiteral("quillstash.desktop")}));
    EXPECT_EQ(resolvedUrls(items),
              (QList<QUrl>{QUrl::fromLocalFile(m_program), QUrl::fromLocalFile(other)}));
}

TEST_F(XdgLoginItemsTest, ItemsComeInNameOrderAndRemoveTakesOnlyTheOneGiven)
{
    const QByteArray ours = "[Desktop Entry]\nType=Application\nExec=" + m_program.toUtf8() + "\n";
    const QString other = makeProgram(QStringLiteral("bin/other"));
    writeEntry(QStringLiteral("zz-copy.desktop"), ours);
    writeEntry(QStringLiteral("b-foreign.desktop"),
               "[Desktop Entry]\nType=Application\nExec=" + other.toUtf8() + " --flag\n");
    writeEntry(QStringLiteral("a-first.desktop"), ours);
    writeEntry(QStringLiteral("notes.txt"), ours);

    XdgLoginItems items(m_folder);
    const auto snapshot = items.snapshot();
    ASSERT_TRUE(snapshot.has_value());
    ASSERT_EQ(snapshot->size(), 3);
    EXPECT_EQ(snapshot->at(0).id, QStringLiteral("a-first.desktop"));
    EXPECT_EQ(snapshot->at(1).resolved, QUrl::fromLocalFile(other));
    EXPECT_EQ(snapshot->at(2).id, QStringLiteral("zz-copy.desktop"));

    items.remove(snapshot->at(0));
    EXPECT_EQ(fileNames(), (QStringList{QStringLiteral("b-foreign.desktop"),
                                        QStringLiteral("notes.txt"),
                                        QStringLiteral("zz-copy.desktop")}));
}

TEST_F(XdgLoginItemsTest, RemoveStaysInsideTheFolder)
{
    const QString outside = m_root.filePath(QStringLiteral("precious.desktop"));
    QFile file(outside);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.close();
    writeEntry(QStringLiteral("x.desktop"), "[Desktop Entry]\n");

    XdgLoginItems(m_folder).remove({QStringLiteral("../precious.desktop"), {}});
    EXPECT_TRUE(QFile::exists(outside));
}

struct ExecCase
{
    const char *name;
    QByteArray entry; // %1 stands for the test program's folder
    bool resolves;
};

void PrintTo(const ExecCase &c, std::ostream *os) { *os << c.name; }

class ExecResolution : public ::testing::TestWithParam<ExecCase>
{
};

TEST_P(ExecResolution, ResolvesTheProgramTheEntryStarts)
{
    QTemporaryDir root;
    const QString dir = root.filePath(QStringLiteral("my bin"));
    QDir().mkpath(dir);
    const QString program = dir + QStringLiteral("/quillstash");
    {
        QFile file(program);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    }
    QFile::link(program, root.filePath(QStringLiteral("link-to-quillstash")));

    const QByteArray oldPath = qgetenv("PATH");
    const auto restorePath = qScopeGuard([&] { qputenv("PATH", oldPath); });
    qputenv("PATH", "/nonexistent:" + dir.toUtf8());

    QByteArray entry = GetParam().entry;
    entry.replace("%ROOT%", root.path().toUtf8());
    const QUrl resolved = XdgLoginItems::resolveDesktopEntry(entry);
    if (GetParam().resolves)
        EXPECT_EQ(resolved, QUrl::fromLocalFile(QFileInfo(program).canonicalFilePath()));
    else
        EXPECT_TRUE(resolved.isEmpty()) << qPrintable(resolved.toString());
}

INSTANTIATE_TEST_SUITE_P(
    Entries, ExecResolution,
    ::testing::Values(
        ExecCase{"quotedWithArguments",
                 "[Desktop Entry]\nExec=\"%ROOT%/my bin/quillstash\" --hidden %f\n", true},
        ExecCase{"escapedBlankInQuotes", "[Desktop Entry]\nExec=\"%ROOT%/my\\sbin/quillstash\"\n",
                 true},
        ExecCase{"escapedBlankUnquotedSplits",
                 "[Desktop Entry]\nExec=%ROOT%/my\\sbin/quillstash\n", false},
        ExecCase{"bareNameOnPath", "[Desktop Entry]\nExec=quillstash -x\n", true},
        ExecCase{"symlink", "[Desktop Entry]\nExec=%ROOT%/link-to-quillstash\n", true},
        ExecCase{"otherGroupsIgnored",
                 "[Desktop Entry]\nExec=quillstash\n[Desktop Action x]\nExec=/bin/sh\n", true},
        ExecCase{"hidden", "[Desktop Entry]\nExec=quillstash\nHidden=true\n", false},
        ExecCase{"unquotedPathWithBlank", "[Desktop Entry]\nExec=%ROOT%/my bin/quillstash\n",
                 false},
        ExecCase{"relativePath", "[Desktop Entry]\nExec=my bin/quillstash\n", false},
        ExecCase{"missingProgram", "[Desktop Entry]\nExec=no-such-program-here\n", false},
        ExecCase{"unterminatedQuote", "[Desktop Entry]\nExec=\"quillstash\n", false},
        ExecCase{"noExec", "[Desktop Entry]\nType=Application\n", false},
        ExecCase{"execOutsideMainGroup", "[Other]\nExec=quillstash\n", false}),
    [](const auto &info) { return std::string(info.param.name); });

} // namespace

#include "platform/x11/xdgloginitems.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

class XdgLoginItemsTest : public ::testing::Test
{
protected:
    // An executable file standing in for an installed program.
    QString makeProgram(const QString &relativePath)
    {
        const QString path = m_root.filePath(relativePath);
        QDir().mkpath(QFileInfo(path).path());
        QFile file(path);
        EXPECT_TRUE(file.open(QIODevice::WriteOnly) && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
        return QFileInfo(path).canonicalFilePath();
    }
    void writeEntry(const QString &name, const QByteArray &contents)
    {
        QDir().mkpath(m_folder);
        QFile file(m_folder + u'/' + name);
        ASSERT_TRUE(file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size());
    }
    QStringList fileNames() const { return QDir(m_folder).entryList(QDir::Files, QDir::Name); }
    static QList<QUrl> resolvedUrls(const XdgLoginItems &items)
    {
        QList<QUrl> urls;
        for (const auto &item : items.snapshot().value_or(QList<LoginItems::Item>{{"unreadable", {}}}))
            urls.append(item.resolved);
        return urls;
    }
    QTemporaryDir m_root;
    QString m_folder = m_root.filePath(QStringLiteral("autostart"));
    QString m_program = makeProgram(QStringLiteral("bin/quillstash"));
    QString m_other = makeProgram(QStringLiteral("bin/other"));
};

// Blanks, quotes, dollars, backslashes and percent signs in the program's path
// must be quoted and escaped so that the session starts exactly this program.
// A missing folder is an empty list; a file in its place cannot be read.
TEST_F(XdgLoginItemsTest, InsertedItemStartsTheProgramUntilRemoved)
{
    XdgLoginItems items(m_folder);
    EXPECT_EQ(resolvedUrls(items), QList<QUrl>{});
    for (const QString relative : {"bin/quillstash", "My Apps/quill stash", "odd/\"quoted\" $HOME `tick`",
                                   "odd/back\\slash", "odd/100% sure", "odd/Grüße"}) {
        const QString program = makeProgram(relative);
        items.insertAtTop(QUrl::fromLocalFile(program));
        EXPECT_EQ(fileNames(), QStringList{"quillstash.desktop"}) << qPrintable(relative);
        EXPECT_EQ(resolvedUrls(items), QList<QUrl>{QUrl::fromLocalFile(program)}) << qPrintable(relative);
        items.remove({"quillstash.desktop", {}});
        EXPECT_TRUE(fileNames().isEmpty());
    }
    ASSERT_TRUE(QDir(m_folder).removeRecursively() && QFile(m_folder).open(QIODevice::WriteOnly));
    EXPECT_FALSE(items.snapshot().has_value());
}

// The first entry of our name that starts another program is kept; one that
// starts ours is written over rather than doubled.
TEST_F(XdgLoginItemsTest, InsertKeepsAForeignEntryOfTheSameNameAndReusesItsOwn)
{
    writeEntry("quillstash.desktop", "[Desktop Entry]\nType=Application\nExec=" + m_other.toUtf8() + "\n");
    XdgLoginItems items(m_folder);
    items.insertAtTop(QUrl::fromLocalFile(m_program));
    items.insertAtTop(QUrl::fromLocalFile(m_program));
    EXPECT_EQ(fileNames(), (QStringList{"quillstash-2.desktop", "quillstash.desktop"}));
    EXPECT_EQ(resolvedUrls(items), (QList<QUrl>{QUrl::fromLocalFile(m_program), QUrl::fromLocalFile(m_other)}));
}

TEST_F(XdgLoginItemsTest, ItemsComeInNameOrderAndRemoveTakesOnlyTheOneGivenInsideTheFolder)
{
    const QByteArray ours = "[Desktop Entry]\nType=Application\nExec=" + m_program.toUtf8() + "\n";
    writeEntry("zz-copy.desktop", ours);
    writeEntry("b-foreign.desktop", "[Desktop Entry]\nExec=" + m_other.toUtf8() + " --flag\n");
    writeEntry("a-first.desktop", ours);
    writeEntry("notes.txt", ours);
    writeEntry("../precious.desktop", ours);
    XdgLoginItems items(m_folder);
    const QUrl program = QUrl::fromLocalFile(m_program);
    ASSERT_EQ(resolvedUrls(items), (QList<QUrl>{program, QUrl::fromLocalFile(m_other), program}));
    items.remove(items.snapshot().value().first());
    items.remove({"../precious.desktop", QUrl::fromLocalFile(m_program)});
    EXPECT_EQ(fileNames(), (QStringList{"b-foreign.desktop", "notes.txt", "zz-copy.desktop"}));
    EXPECT_TRUE(QFile::exists(m_root.filePath("precious.desktop")));
}

TEST_F(XdgLoginItemsTest, ResolvesTheProgramAnEntryStarts)
{
    const QString program = makeProgram("my bin/quillstash");
    QFile::link(program, m_root.filePath("link-to-quillstash"));
    const QByteArray oldPath = qgetenv("PATH");
    const auto restorePath = qScopeGuard([&] { qputenv("PATH", oldPath); });
    qputenv("PATH", "/nonexistent:" + m_root.filePath("my bin").toUtf8());
    const struct { QByteArray entry; bool resolves; } rows[] = { // %ROOT% stands for the test's folder
        {"Exec=\"%ROOT%/my bin/quillstash\" --hidden %f\n", true},
        {"Exec=\"%ROOT%/my\\sbin/quillstash\"\n", true},
        {"Exec=%ROOT%/my bin/quillstash\n", false},
        {"Exec=quillstash -x\n[Desktop Action x]\nExec=/bin/sh\n", true},
        {"Exec=%ROOT%/link-to-quillstash\n", true},
        {"Exec=quillstash\nHidden=true\n", false},
        {"Exec=my bin/quillstash\n", false},
        {"Exec=\"quillstash\n", false},
        {"Type=Application\n[Other]\nExec=quillstash\n", false},
    };
    for (const auto &row : rows) {
        const QByteArray entry = "[Desktop Entry]\n" + QByteArray(row.entry).replace("%ROOT%", m_root.path().toUtf8());
        EXPECT_EQ(XdgLoginItems::resolveDesktopEntry(entry), row.resolves ? QUrl::fromLocalFile(program) : QUrl())
            << entry.constData();
    }
}

} // namespace

#include "platform/x11/xdgloginitems.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QScopeGuard>
#include <QTemporaryDir>

#include <gtest/gtest.h>

// Our entry never replaces another program's, and its path is quoted so that exactly this program starts.
TEST(XdgLoginItems, ItemsStartTheProgramOfTheirEntryAndRemoveTakesOnlyTheOneGivenInsideTheFolder)
{
    QTemporaryDir root;
    const auto makeProgram = [&root](const QString &relativePath) {
        const QString path = root.filePath(relativePath);
        EXPECT_TRUE(QDir().mkpath(QFileInfo(path).path()) && QFile(path).open(QIODevice::WriteOnly)
                    && QFile::setPermissions(path, QFile::ReadOwner | QFile::ExeOwner));
        return QUrl::fromLocalFile(QFileInfo(path).canonicalFilePath());
    };
    const QUrl program = makeProgram(QStringLiteral("my bin/quillstash"));
    const QUrl other = makeProgram(QStringLiteral("bin/other"));
    const QString folder = root.filePath(QStringLiteral("autostart"));
    XdgLoginItems items(folder);
    const auto resolvedUrls = [&items] {
        const QList<LoginItems::Item> snapshot = items.snapshot().value();
        QList<QUrl> urls;
        for (const LoginItems::Item &item : snapshot)
            urls.append(item.resolved);
        return urls;
    };
    items.insertAtTop(other); // another program's entry under our name
    items.insertAtTop(program);
    items.insertAtTop(program);
    QList<QUrl> expected{program, program};
    for (const QString relative : {"odd/\"quoted\" $HOME `tick`", "odd/back\\slash", "odd/100% sure", "odd/Grüße"}) {
        expected.append(makeProgram(relative));
        items.insertAtTop(expected.last());
    }
    expected.append(other);
    for (const QString copy : {"/a-first.desktop", "/notes.txt", "/../precious.desktop"})
        ASSERT_TRUE(QFile::copy(folder + "/quillstash-2.desktop", folder + copy));
    ASSERT_EQ(resolvedUrls(), expected);
    items.remove(items.snapshot().value().first());
    items.remove({"../precious.desktop", program});
    expected.removeFirst();
    EXPECT_EQ(resolvedUrls(), expected);
    EXPECT_TRUE(QFile::exists(root.filePath("precious.desktop")));
    ASSERT_TRUE(QDir(folder).removeRecursively() && QFile(folder).open(QIODevice::WriteOnly));
    EXPECT_FALSE(items.snapshot().has_value());

    QFile::link(program.toLocalFile(), root.filePath("link-to-quillstash"));
    const auto restorePath = qScopeGuard([path = qgetenv("PATH")] { qputenv("PATH", path); });
    qputenv("PATH", "/nonexistent:" + root.filePath("my bin").toUtf8());
    const struct { QByteArray entry; bool resolves; } rows[] = { // %ROOT% stands for the test's folder
        {"Exec=\"%ROOT%/my\\sbin/quillstash\" %f\n", true}, {"Exec=%ROOT%/link-to-quillstash\n", true},
        {"Exec=quillstash -x\n[Desktop Action x]\nExec=/bin/sh\n", true}, {"Exec=quillstash\nHidden=true\n", false},
        {"Exec=my bin/quillstash\n", false}, {"Exec=\"quillstash\n", false},
    };
    for (const auto &row : rows) {
        const QByteArray entry = "[Desktop Entry]\n" + QByteArray(row.entry).replace("%ROOT%", root.path().toUtf8());
        EXPECT_EQ(XdgLoginItems::resolveDesktopEntry(entry), row.resolves ? program : QUrl()) << entry.constData();
    }
}

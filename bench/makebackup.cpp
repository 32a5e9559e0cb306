// Writes a backup file of COUNT text entries of BYTES bytes each, built as
// the capture builds a copied text, for measuring the running program:
//   build/bench/bench_makebackup FILE COUNT BYTES
#include "documents/backupfile.h"

#include <QCoreApplication>
#include <QRandomGenerator>

#include <cstdio>

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() != 4) {
        std::fprintf(stderr, "usage: bench_makebackup FILE COUNT BYTES\n");
        return 2;
    }
    const int count = args.at(2).toInt();
    const qsizetype bytes = args.at(3).toLongLong();
    const QStringList words = QStringLiteral("the quick brown fox jumps over lazy dogs while copying text into "
                                             "another window, then pastes it back again")
                                  .split(u' ');
    QRandomGenerator random(1);
    QList<Entry> entries;
    for (int i = 0; i < count; ++i) {
        QByteArray text = QByteArray::number(i) + ' ';
        while (text.size() < bytes)
            text += words.at(random.bounded(words.size())).toUtf8() + ' ';
        text.truncate(bytes);
        auto entry = std::make_shared<contents>();
        entry->setIndexCount(QString::number(i));
        entry->setContentUtf8(text);
        entry->setTypes({QStringLiteral("NSStringPboardType"), QStringLiteral("public.utf8-plain-text")});
        entry->setMainType(QStringLiteral("NSStringPboardType"));
        entry->setDatas({{QStringLiteral("NSStringPboardType"), text}, {QStringLiteral("public.utf8-plain-text"), text}});
        entries.append(entry);
    }
    return BackupFile::save(args.at(1), entries) ? 0 : 1;
}

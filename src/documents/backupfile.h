#pragma once

#include "history/contents.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <functional>
#include <optional>

// The backup file: a headerless run of records, one per entry, each three
// blocks (the display string as a typedstream archive, the types and the
// datas as XML property lists) behind 4-byte length words in this machine's
// byte order. Archives and property lists are written as Mac OS X writes them,
// so files interchange with Mac OS X in both directions.
class BackupFile
{
public:
    // Called with each record's content length as the reader goes, as the
    // debug line "cont_Data_size:%d" reports it.
    using SizeReport = std::function<void(qint32 contentLength)>;

    // The file's bytes for these entries.
    static QByteArray encode(const QList<Entry> &entries);
    // The entries of the complete records, numbered from counter on (which
    // advances by one per entry). Never trusts a length word.
    static QList<Entry> decode(QByteArrayView bytes, qint32 &counter, const SizeReport &report = {});

    // Writes the entries beside the path and renames the result over it, with
    // mode 0600; nothing at all happens for no entries. False when the file
    // could not be written (the old one is then left whole).
    static bool save(const QString &path, const QList<Entry> &entries);
    // Reads the file, printing the debug line for each record on standard
    // output. Nothing when the file cannot be read at all; an empty or
    // damaged file gives the entries of its complete records, maybe none.
    static std::optional<QList<Entry>> openFile(const QString &path, qint32 &counter);
};

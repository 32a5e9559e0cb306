#pragma once

#include "history/contents.h"

#include <QFile>

#include <functional>

// An entry built in the order the capture builds one.
inline Entry makeEntry(const QStringList &types, const QString &text, const contents::Datas &datas = {})
{
    auto entry = std::make_shared<contents>();
    entry->setContent(text);
    entry->setMainType(types.value(0));
    entry->setTypes(types);
    entry->setDatas(datas);
    return entry;
}

// A text as a program offers it, under both text types.
inline Entry textEntry(const QString &text)
{
    const QString plain = QStringLiteral("public.utf8-plain-text"), string = QStringLiteral("NSStringPboardType");
    return makeEntry({plain, string}, text, {{plain, text.toUtf8()}, {string, text.toUtf8()}});
}

// One field of each entry, by its getter (&contents::indexCount).
using EntryField = std::function<QString(const contents &)>;

inline QStringList texts(const QList<Entry> &entries, const EntryField &field = &contents::content)
{
    QStringList values;
    for (const Entry &entry : entries)
        values.append(field(*entry));
    return values;
}

inline QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

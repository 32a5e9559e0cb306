#pragma once

#include "history/contents.h"

#include <QByteArray>
#include <QStringList>

#include <cstring>

// Bytes written as a literal, NULs included.
template<qsizetype N>
QByteArray raw(const char (&literal)[N])
{
    return QByteArray(literal, N - 1);
}

// A length word as this machine holds a 32-bit integer in memory.
inline QByteArray lengthWord(qint32 length)
{
    QByteArray word(sizeof length, '\0');
    std::memcpy(word.data(), &length, sizeof length);
    return word;
}

inline QByteArray block(const QByteArray &payload)
{
    return lengthWord(qint32(payload.size())) + payload;
}

inline Entry makeEntry(const QString &text, const QStringList &types, const contents::Datas &datas)
{
    auto entry = std::make_shared<contents>();
    entry->setContent(text);
    entry->setTypes(types);
    entry->setMainType(types.value(0));
    entry->setDatas(datas);
    return entry;
}

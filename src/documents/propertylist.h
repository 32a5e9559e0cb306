#pragma once

#include "history/contents.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QStringList>

#include <optional>

// The two property lists of a backup record: an entry's types (an array of
// strings) and its datas (a dictionary of strings to data). They are written
// as the XML property list of Mac OS X, byte for byte as its serialiser writes
// these two shapes, and read back from any encoding libplist knows (XML or
// binary). Any other shape reads as no value.
class PropertyList
{
public:
    static QByteArray fromStringList(const QStringList &strings);
    static QByteArray fromDatas(const contents::Datas &datas);

    static std::optional<QStringList> toStringList(QByteArrayView plist);
    static std::optional<contents::Datas> toDatas(QByteArrayView plist);
};

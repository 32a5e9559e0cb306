#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <utility>

// An entry's data by type name. A state holds a handful of types, so the
// pairs sit in one small array: a hash table would cost more than a 1 KB
// text itself. Type names are shared across all entries.
class TypeDatas
{
public:
    using Pair = std::pair<QString, QByteArray>;

    TypeDatas() = default;
    TypeDatas(std::initializer_list<Pair> pairs);

    // Replaces the data of a type already present.
    void insert(const QString &type, const QByteArray &data);
    QByteArray value(const QString &type) const;
    bool contains(const QString &type) const;
    qsizetype size() const { return m_pairs.size(); }
    bool isEmpty() const { return m_pairs.isEmpty(); }
    QStringList keys() const;
    // Gives back what a growing array reserved beyond its pairs.
    void squeeze() { m_pairs.squeeze(); }

    QList<Pair>::const_iterator begin() const { return m_pairs.cbegin(); }
    QList<Pair>::const_iterator end() const { return m_pairs.cend(); }
    QList<Pair>::iterator begin() { return m_pairs.begin(); }
    QList<Pair>::iterator end() { return m_pairs.end(); }

    // Equal when both hold the same types with the same data, in any order.
    friend bool operator==(const TypeDatas &a, const TypeDatas &b);

    // The one shared copy of a type name, so that ten thousand entries do
    // not each keep "NSStringPboardType" twice.
    static QString sharedName(const QString &type);
    // The same for a whole list of names: most entries list the same types.
    static QStringList sharedNames(const QStringList &types);

private:
    const Pair *find(const QString &type) const;

    QList<Pair> m_pairs;
};

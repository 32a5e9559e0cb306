#include "history/typedatas.h"

#include <QHash>
#include <QSet>

#include <mutex>

namespace {

// Names arrive from other programs and from files: past this many, new
// names are kept per entry instead of in the shared pool.
constexpr qsizetype maxSharedNames = 4096;

std::mutex poolMutex;

QSet<QString> &namePool()
{
    static QSet<QString> pool;
    return pool;
}

QHash<QStringList, QStringList> &listPool()
{
    static QHash<QStringList, QStringList> pool;
    return pool;
}

} // namespace

TypeDatas::TypeDatas(std::initializer_list<Pair> pairs)
{
    for (const Pair &pair : pairs)
        insert(pair.first, pair.second);
}

void TypeDatas::insert(const QString &type, const QByteArray &data)
{
    for (Pair &pair : m_pairs) {
        if (pair.first == type) {
            pair.second = data;
            return;
        }
    }
    m_pairs.append({sharedName(type), data});
}

const TypeDatas::Pair *TypeDatas::find(const QString &type) const
{
    for (const Pair &pair : m_pairs) {
        if (pair.first == type)
            return &pair;
    }
    return nullptr;
}

QByteArray TypeDatas::value(const QString &type) const
{
    const Pair *pair = find(type);
    return pair ? pair->second : QByteArray();
}

bool TypeDatas::contains(const QString &type) const
{
    return find(type) != nullptr;
}

QStringList TypeDatas::keys() const
{
    QStringList keys;
    keys.reserve(m_pairs.size());
    for (const Pair &pair : m_pairs)
        keys.append(pair.first);
    return keys;
}

bool operator==(const TypeDatas &a, const TypeDatas &b)
{
    if (a.size() != b.size())
        return false;
    for (const TypeDatas::Pair &pair : a.m_pairs) {
        const TypeDatas::Pair *other = b.find(pair.first);
        if (!other || other->second != pair.second)
            return false;
    }
    return true;
}

QString TypeDatas::sharedName(const QString &type)
{
    const std::lock_guard lock(poolMutex);
    QSet<QString> &pool = namePool();
    if (const auto found = pool.constFind(type); found != pool.cend())
        return *found;
    if (pool.size() >= maxSharedNames)
        return type;
    return *pool.insert(type);
}

QStringList TypeDatas::sharedNames(const QStringList &types)
{
    {
        const std::lock_guard lock(poolMutex);
        QHash<QStringList, QStringList> &pool = listPool();
        if (const auto found = pool.constFind(types); found != pool.cend())
            return *found;
    }
    QStringList shared;
    shared.reserve(types.size());
    for (const QString &type : types)
        shared.append(sharedName(type));
    const std::lock_guard lock(poolMutex);
    QHash<QStringList, QStringList> &pool = listPool();
    if (pool.size() < maxSharedNames)
        pool.insert(shared, shared);
    return shared;
}

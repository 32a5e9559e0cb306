#pragma once

#include <QString>
#include <QVariant>

// The user's preference domain: a flat map from key to value that outlives
// the program. Typed reads follow the usual defaults rules: a value that is
// present but of another kind reads as false, 0 or a null string, never as a
// caller's default.
class UserDefaults
{
public:
    virtual ~UserDefaults() = default;

    // An invalid QVariant when nothing is stored under the key.
    virtual QVariant objectForKey(const QString &key) const = 0;
    virtual void setObject(const QVariant &value, const QString &key) = 0;
    // Pushes pending writes to storage now.
    virtual void synchronize() = 0;

    bool boolForKey(const QString &key) const;
    qint64 integerForKey(const QString &key) const;
    QString stringForKey(const QString &key) const;

    void setBool(bool value, const QString &key) { setObject(value, key); }
    void setInteger(qint64 value, const QString &key) { setObject(value, key); }
    void setValue(const QVariant &value, const QString &key) { setObject(value, key); }
};

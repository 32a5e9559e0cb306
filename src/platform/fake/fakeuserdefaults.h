#pragma once

#include "platform/userdefaults.h"

#include <QVariantMap>

class FakeUserDefaults : public UserDefaults
{
public:
    QVariant objectForKey(const QString &key) const override { return m_values.value(key); }
    void setObject(const QVariant &value, const QString &key) override { m_values.insert(key, value); }
    void synchronize() override {}

    const QVariantMap &values() const { return m_values; }

private:
    QVariantMap m_values;
};

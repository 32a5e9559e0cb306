#pragma once

#include "platform/pasteboard.h"

#include <QHash>

// An in-memory pasteboard. setState() plays another program copying.
class FakePasteboard : public Pasteboard
{
public:
    struct Item
    {
        QString type;
        QByteArray data; // null: declared without data
    };

    void setState(const QList<Item> &items);
    void setText(const QString &text);

    int changeCount() const override { return m_changeCount; }
    QStringList types() const override { return m_types; }
    QByteArray dataForType(const QString &type) const override { return m_data.value(type); }
    int declareTypes(const QStringList &types) override;
    bool setData(const QByteArray &data, const QString &type) override;

    int declareCount() const { return m_declareCount; }

private:
    int m_changeCount = 0;
    int m_declareCount = 0;
    QStringList m_types;
    QHash<QString, QByteArray> m_data;
};

#include "platform/fake/fakepasteboard.h"

void FakePasteboard::setState(const QList<Item> &items)
{
    m_types.clear();
    m_data.clear();
    for (const Item &item : items) {
        m_types.append(item.type);
        if (!item.data.isNull())
            m_data.insert(item.type, item.data);
    }
    ++m_changeCount;
}

void FakePasteboard::setText(const QString &text)
{
    const QByteArray utf8 = text.toUtf8();
    setState({{QStringLiteral("public.utf8-plain-text"), utf8}, {QStringLiteral("NSStringPboardType"), utf8}});
}

int FakePasteboard::declareTypes(const QStringList &types)
{
    m_types = types;
    m_data.clear();
    ++m_declareCount;
    return ++m_changeCount;
}

bool FakePasteboard::setData(const QByteArray &data, const QString &type)
{
    if (!m_types.contains(type))
        return false;
    m_data.insert(type, data);
    return true;
}

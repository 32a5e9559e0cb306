#include "platform/userdefaults.h"

#include "platform/leadinginteger.h"

namespace {

// Text counts as true when it starts with Y, y, T, t or a non-zero digit
// (after blanks, a sign and leading zeros).
bool textIsTrue(const QString &text)
{
    qsizetype i = 0;
    while (i < text.size() && text.at(i).isSpace())
        ++i;
    if (i < text.size() && (text.at(i) == u'-' || text.at(i) == u'+'))
        ++i;
    while (i < text.size() && text.at(i) == u'0')
        ++i;
    if (i >= text.size())
        return false;
    const QChar c = text.at(i);
    return c == u'Y' || c == u'y' || c == u'T' || c == u't' || (c >= u'1' && c <= u'9');
}

bool isNumber(const QVariant &value)
{
    switch (value.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
    case QMetaType::Float:
        return true;
    default:
        return false;
    }
}

} // namespace

bool UserDefaults::boolForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (isNumber(value))
        return value.toDouble() != 0.0;
    if (value.typeId() == QMetaType::QString)
        return textIsTrue(value.toString());
    return false;
}

qint64 UserDefaults::integerForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::Bool)
        return value.toBool() ? 1 : 0;
    if (isNumber(value))
        return value.toLongLong();
    if (value.typeId() == QMetaType::QString)
        return leadingInteger(value.toString());
    return 0;
}

QString UserDefaults::stringForKey(const QString &key) const
{
    const QVariant value = objectForKey(key);
    if (value.typeId() == QMetaType::QString)
        return value.toString();
    if (isNumber(value) && value.typeId() != QMetaType::Bool)
        return value.toString();
    return {};
}

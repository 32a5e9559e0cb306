#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

// Finds a text in UTF-8 bytes, ignoring case, as QString::contains with
// Qt::CaseInsensitive does, without decoding the bytes. A search runs over
// every entry of the history, whose texts are kept as UTF-8.
class TextMatcher
{
public:
    explicit TextMatcher(const QString &needle = {});

    bool isEmpty() const { return m_needle.isEmpty(); }
    bool matches(QByteArrayView utf8) const;

private:
    bool matchesAscii(QByteArrayView utf8) const;
    qsizetype scan(const unsigned char *hay, qsizetype n) const;
    bool matchesAt(const unsigned char *hay, qsizetype at) const;

    QString m_needle;
    // The needle in lower case, when it is ASCII; such a needle is searched
    // byte by byte.
    QByteArray m_folded;
    bool m_ascii = true;
    // Case folding takes U+017F to "s" and U+212A to "k"; they are the only
    // characters outside ASCII that match an ASCII letter.
    bool m_hasFoldedTwin = false;
};

#include "history/textmatcher.h"

#include <QRandomGenerator>
#include <QStringList>

#include <gtest/gtest.h>

// Cases the random texts below cannot make: empty, recurring prefixes, non-ASCII and non-UTF-8.
TEST(TextMatcher, FindsTheNeedleIgnoringCase)
{
    const struct { const char *needle, *text; bool found; } cases[] = {
        {"", "", true}, {"", "anything", true}, {"APPLE", "an apple pie", true}, {"abcab", "abcaabcab", true},
        {"\xC3\x84pfel", "gr\xC3\xBCne \xC3\xA4PFEL", true}, {"\xC3\xA4", "a", false},
        {"a", "\xE1\x80", false}}; // not UTF-8: never an ASCII letter
    for (const auto &c : cases)
        EXPECT_EQ(TextMatcher(QString::fromUtf8(c.needle)).matches(QByteArray(c.text)), c.found) << c.needle << " in " << c.text;
}

// Over mixed cases, the folding twins of k and s (U+212A, U+017F), other non-ASCII letters and the
// ASCII neighbours that differ from letters in the case bit alone.
TEST(TextMatcher, AgreesWithQStringOnRandomTexts)
{
    const QString alphabet = QStringLiteral("aBkS\u212A\u017F\u00E4 [{@`");
    QRandomGenerator random(7);
    const auto word = [&](int length) {
        QString text;
        for (int i = 0; i < length; ++i)
            text += alphabet.at(random.bounded(alphabet.size()));
        return text;
    };
    int found = 0;
    for (int round = 0; round < 3000; ++round) {
        const QString needle = word(1 + random.bounded(3));
        const QString text = word(random.bounded(12));
        const bool expected = text.contains(needle, Qt::CaseInsensitive);
        ASSERT_EQ(TextMatcher(needle).matches(text.toUtf8()), expected) << needle.toStdString() << " in "
                                                                         << text.toStdString();
        found += expected;
    }
    EXPECT_GT(found, 500); // both outcomes were tried
    EXPECT_LT(found, 2500);
}

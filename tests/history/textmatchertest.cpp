#include "history/textmatcher.h"

#include <QRandomGenerator>
#include <QStringList>

#include <gtest/gtest.h>

namespace {

struct Case
{
    const char *needle;
    const char *text;
    bool found;
};

class TextMatcherTest : public ::testing::TestWithParam<Case>
{
};

TEST_P(TextMatcherTest, FindsTheNeedleIgnoringCase)
{
    const Case &c = GetParam();
    const TextMatcher matcher(QString::fromUtf8(c.needle));
    EXPECT_EQ(matcher.matches(QByteArray(c.text)), c.found) << c.needle << " in " << c.text;
}

INSTANTIATE_TEST_SUITE_P(
    Cases, TextMatcherTest,
    ::testing::Values(Case{"", "", true}, Case{"", "anything", true}, Case{"APPLE", "an apple pie", true},
                      Case{"apple", "AN APPLE PIE", true}, Case{"pie", "pi", false}, Case{"e", "E", true},
                      Case{"E", "abc", false}, Case{"1", "x1", true}, Case{"[", "{", false},
                      Case{"abcab", "abcaabcab", true}, Case{"@", "`", false},
                      // U+212A KELVIN SIGN and U+017F LATIN SMALL LETTER LONG S fold to k and s.
                      Case{"ok", "O\xE2\x84\xAA", true}, Case{"KISS", "ki\xC5\xBF\xC5\xBF", true},
                      Case{"x", "\xE2\x84\xAA", false},
                      // Needles outside ASCII fold as Qt folds them.
                      Case{"\xC3\x84pfel", "gr\xC3\xBCne \xC3\xA4PFEL", true},
                      Case{"\xC3\xA4", "a", false},
                      // Bytes that are not UTF-8 never match an ASCII letter.
                      Case{"a", "\xE1\x80", false}));

// The byte search must agree with QString's own over texts that mix cases,
// the two folding twins and other letters outside ASCII.
TEST(TextMatcher, AgreesWithQStringOnRandomTexts)
{
    const QStringList alphabet = {QStringLiteral("a"), QStringLiteral("B"), QStringLiteral("k"), QStringLiteral("S"),
                                  QStringLiteral("\u212A"), QStringLiteral("\u017F"), QStringLiteral("\u00E4"),
                                  QStringLiteral(" ")};
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

} // namespace

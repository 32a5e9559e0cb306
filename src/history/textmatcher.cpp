#include "history/textmatcher.h"

#include <bit>
#include <array>
#include <cstring>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr unsigned char lower(unsigned char c)
{
    return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

constexpr std::array<unsigned char, 256> makeFoldTable()
{
    std::array<unsigned char, 256> table{};
    for (int c = 0; c < 256; ++c)
        table[std::size_t(c)] = lower(static_cast<unsigned char>(c));
    return table;
}

constexpr std::array<unsigned char, 256> fold = makeFoldTable();

// The bit that tells a letter's two cases apart, for a needle character.
constexpr char caseBit(unsigned char c)
{
    return char(c >= 'a' && c <= 'z' ? 0x20 : 0);
}

const QByteArray longS = QByteArrayLiteral("\xC5\xBF"); // U+017F
const QByteArray kelvin = QByteArrayLiteral("\xE2\x84\xAA"); // U+212A

} // namespace

TextMatcher::TextMatcher(const QString &needle)
    : m_needle(needle)
{
    for (QChar c : needle) {
        if (c.unicode() >= 0x80) {
            m_ascii = false;
            return;
        }
        m_folded.append(char(lower(static_cast<unsigned char>(c.unicode()))));
    }
    m_hasFoldedTwin = m_folded.contains('s') || m_folded.contains('k');
}

bool TextMatcher::matches(QByteArrayView utf8) const
{
    if (m_needle.isEmpty())
        return true;
    if (!m_ascii)
        return QString::fromUtf8(utf8).contains(m_needle, Qt::CaseInsensitive);
    if (matchesAscii(utf8))
        return true;
    // Only a text holding one of the two twins can still match, and only
    // through them: decode just such a text.
    if (m_hasFoldedTwin && (utf8.contains(longS) || utf8.contains(kelvin)))
        return QString::fromUtf8(utf8).contains(m_needle, Qt::CaseInsensitive);
    return false;
}

// Sixteen places at a time: a place is a candidate when the bytes under the
// needle's first and last characters match them (a letter in either case,
// by setting the bit that tells the cases apart); candidates are then
// compared whole. Returns where the rest of the text starts, or -1 when the
// needle was found.
qsizetype TextMatcher::scan(const unsigned char *hay, qsizetype n) const
{
    qsizetype at = 0;
#ifdef __SSE2__
    const qsizetype m = m_folded.size();
    const auto *needle = reinterpret_cast<const unsigned char *>(m_folded.constData());
    const __m128i first = _mm_set1_epi8(char(needle[0]));
    const __m128i last = _mm_set1_epi8(char(needle[m - 1]));
    const __m128i firstBit = _mm_set1_epi8(caseBit(needle[0]));
    const __m128i lastBit = _mm_set1_epi8(caseBit(needle[m - 1]));
    for (; at + m - 1 + 16 <= n; at += 16) {
        const __m128i a = _mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(hay + at)), firstBit);
        const __m128i b =
            _mm_or_si128(_mm_loadu_si128(reinterpret_cast<const __m128i *>(hay + at + m - 1)), lastBit);
        auto bits = unsigned(_mm_movemask_epi8(_mm_and_si128(_mm_cmpeq_epi8(a, first), _mm_cmpeq_epi8(b, last))));
        while (bits) {
            if (matchesAt(hay, at + std::countr_zero(bits)))
                return -1;
            bits &= bits - 1;
        }
    }
#endif
    return at;
}

bool TextMatcher::matchesAt(const unsigned char *hay, qsizetype at) const
{
    const auto *needle = reinterpret_cast<const unsigned char *>(m_folded.constData());
    for (qsizetype j = 0; j < m_folded.size(); ++j) {
        if (fold[hay[at + j]] != needle[j])
            return false;
    }
    return true;
}

bool TextMatcher::matchesAscii(QByteArrayView utf8) const
{
    const auto *hay = reinterpret_cast<const unsigned char *>(utf8.data());
    const qsizetype n = utf8.size();
    const qsizetype m = m_folded.size();
    if (n < m)
        return false;
    if (m == 1) {
        // memchr outruns any byte loop; a letter is looked for in both cases.
        const auto c = static_cast<unsigned char>(m_folded.at(0));
        if (std::memchr(hay, c, size_t(n)))
            return true;
        return c >= 'a' && c <= 'z' && std::memchr(hay, c - ('a' - 'A'), size_t(n));
    }
    qsizetype at = scan(hay, n);
    if (at < 0)
        return true;
    for (; at + m <= n; ++at) {
        if (matchesAt(hay, at))
            return true;
    }
    return false;
}

#include "documents/propertylist.h"

#include <plist/plist.h>

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <memory>

namespace {

constexpr QByteArrayView xmlHeader =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<!DOCTYPE plist PUBLIC \"-//Apple//DTD PLIST 1.0//EN\" "
    "\"http://www.apple.com/DTDs/PropertyList-1.0.dtd\">\n"
    "<plist version=\"1.0\">\n";
constexpr QByteArrayView xmlFooter = "</plist>\n";

// The serialiser wraps base64 at 76 columns less eight per level of
// indentation; data sits one level deep inside the dictionary, and the base64
// of whole 3-byte groups always breaks at a multiple of 4, so every full line
// holds exactly this many characters.
constexpr qsizetype dataLineLength = 76 - 8 * 1;

// Only these three are escaped; everything else, control characters
// included, goes out as UTF-8 as the serialiser writes it.
void appendEscaped(QByteArray &out, const QString &text)
{
    for (const char c : text.toUtf8()) {
        switch (c) {
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '&':
            out += "&amp;";
            break;
        default:
            out += c;
        }
    }
}

void appendBase64Lines(QByteArray &out, const QByteArray &data)
{
    const QByteArray base64 = data.toBase64();
    for (qsizetype at = 0; at < base64.size(); at += dataLineLength) {
        out += '\t';
        out += QByteArrayView(base64).sliced(at, std::min(dataLineLength, base64.size() - at));
        out += '\n';
    }
}

struct PlistFree
{
    void operator()(void *node) const { plist_free(static_cast<plist_t>(node)); }
};
using PlistPtr = std::unique_ptr<void, PlistFree>;

PlistPtr parse(QByteArrayView bytes)
{
    if (bytes.isEmpty() || bytes.size() > std::numeric_limits<uint32_t>::max())
        return {};
    plist_t root = nullptr;
    plist_from_memory(bytes.data(), uint32_t(bytes.size()), &root);
    return PlistPtr(root);
}

// libplist's binary reader keeps a dictionary key as it finds it, NUL bytes
// included, and then asserts when such a key's text is asked for: a damaged
// file would end the program. Its XML reader makes no such keys, so a binary
// dictionary is read through its XML form.
PlistPtr parseDictionary(QByteArrayView bytes)
{
    PlistPtr root = parse(bytes);
    if (!root || !bytes.startsWith("bplist"))
        return root;
    char *xml = nullptr;
    uint32_t length = 0;
    plist_to_xml(root.get(), &xml, &length);
    const std::unique_ptr<char, decltype(&plist_to_xml_free)> xmlGuard(xml, &plist_to_xml_free);
    return xml ? parse(QByteArrayView(xml, length)) : PlistPtr();
}

} // namespace

QByteArray PropertyList::fromStringList(const QStringList &strings)
{
    QByteArray out(xmlHeader.toByteArray());
    if (strings.isEmpty()) {
        out += "<array/>\n";
    } else {
        out += "<array>\n";
        for (const QString &s : strings) {
            out += "\t<string>";
            appendEscaped(out, s);
            out += "</string>\n";
        }
        out += "</array>\n";
    }
    out += xmlFooter;
    return out;
}

QByteArray PropertyList::fromDatas(const contents::Datas &datas)
{
    QByteArray out(xmlHeader.toByteArray());
    if (datas.isEmpty()) {
        out += "<dict/>\n";
    } else {
        // Keys in UTF-16 code unit order, as the serialiser sorts them.
        QStringList keys = datas.keys();
        std::sort(keys.begin(), keys.end());
        out += "<dict>\n";
        for (const QString &key : std::as_const(keys)) {
            out += "\t<key>";
            appendEscaped(out, key);
            out += "</key>\n\t<data>\n";
            appendBase64Lines(out, datas.value(key));
            out += "\t</data>\n";
        }
        out += "</dict>\n";
    }
    out += xmlFooter;
    return out;
}

std::optional<QStringList> PropertyList::toStringList(QByteArrayView plist)
{
    const PlistPtr root = parse(plist);
    if (!root || plist_get_node_type(root.get()) != PLIST_ARRAY)
        return std::nullopt;
    QStringList strings;
    const uint32_t count = plist_array_get_size(root.get());
    for (uint32_t i = 0; i < count; ++i) {
        const plist_t item = plist_array_get_item(root.get(), i);
        if (plist_get_node_type(item) != PLIST_STRING)
            return std::nullopt;
        uint64_t length = 0;
        const char *text = plist_get_string_ptr(item, &length);
        strings.append(QString::fromUtf8(text, qsizetype(length)));
    }
    return strings;
}

std::optional<contents::Datas> PropertyList::toDatas(QByteArrayView plist)
{
    const PlistPtr root = parseDictionary(plist);
    if (!root || plist_get_node_type(root.get()) != PLIST_DICT)
        return std::nullopt;
    plist_dict_iter iter = nullptr;
    plist_dict_new_iter(root.get(), &iter);
    const std::unique_ptr<void, decltype(&std::free)> iterGuard(iter, &std::free);
    contents::Datas datas;
    for (;;) {
        char *rawKey = nullptr;
        plist_t value = nullptr;
        plist_dict_next_item(root.get(), iter, &rawKey, &value);
        const std::unique_ptr<char, decltype(&std::free)> key(rawKey, &std::free);
        if (!value)
            return datas;
        if (!key || plist_get_node_type(value) != PLIST_DATA)
            return std::nullopt;
        uint64_t length = 0;
        const char *bytes = plist_get_data_ptr(value, &length);
        datas.insert(QString::fromUtf8(key.get()), QByteArray(bytes, qsizetype(length)));
    }
}

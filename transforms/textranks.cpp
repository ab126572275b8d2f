#include "textranks.h"

#include "sortinruns.h"
#include "utf8.h"

#include <QCollator>
#include <QLocale>
#include <deque>
#include <string>

namespace {

/// A text that compares with others first by eight of its bytes.
struct TextItem
{
    quint64 head;
    quint32 number;
};

struct CollatedItem
{
    quint32 number;
};

bool isAbovePlane0(char byte)
{
    return uchar(byte) >= 0xF0;
}

void appendUnit(uint unit, std::string *bytes)
{
    bytes->push_back(char(0xE0 | (unit >> 12)));
    bytes->push_back(char(0x80 | ((unit >> 6) & 0x3F)));
    bytes->push_back(char(0x80 | (unit & 0x3F)));
}

/// Pairs of surrogates as two sequences of three bytes: the bytes then order like UTF-16.
std::string inCodeUnitOrder(std::string_view utf8)
{
    std::string bytes;
    bytes.reserve(utf8.size() * 3 / 2);
    for (size_t i = 0; i < utf8.size(); ++i) {
        if (!isAbovePlane0(utf8[i]) || i + 3 >= utf8.size()) {
            bytes.push_back(utf8[i]);
            continue;
        }
        const uint character =
            (uint(uchar(utf8[i])) & 0x07) << 18 | (uint(uchar(utf8[i + 1])) & 0x3F) << 12 |
            (uint(uchar(utf8[i + 2])) & 0x3F) << 6 | (uint(uchar(utf8[i + 3])) & 0x3F);
        appendUnit(QChar::highSurrogate(character), &bytes);
        appendUnit(QChar::lowSurrogate(character), &bytes);
        i += 3;
    }
    return bytes;
}

/// Folds each character by itself, as comparisons of QString do.
std::string folded(std::string_view utf8)
{
    std::string bytes(utf8);
    if (Utf8::isAscii(utf8)) {
        std::transform(bytes.begin(), bytes.end(), bytes.begin(),
                       [](char c) { return c >= 'A' && c <= 'Z' ? char(c - 'A' + 'a') : c; });
        return bytes;
    }
    QString text = Utf8::decoded(utf8);
    QChar *const end = text.data() + text.size();
    for (QChar *at = text.data(); at < end; ++at) {
        if (!at->isHighSurrogate() || at + 1 == end || !at[1].isLowSurrogate()) {
            *at = at->toCaseFolded();
            continue;
        }
        const uint fold = QChar::toCaseFolded(QChar::surrogateToUcs4(at[0], at[1]));
        if (QChar::requiresSurrogates(fold)) {
            at[0] = QChar(QChar::highSurrogate(fold));
            at[1] = QChar(QChar::lowSurrogate(fold));
        }
        ++at;
    }
    return Utf8::encoded(text);
}

/// Bytes of the texts whose order is that of the texts.
class ByteKeys
{
public:
    ByteKeys(const std::vector<std::string_view> &texts, bool caseSensitive)
    {
        m_keys.reserve(texts.size());
        for (const std::string_view text : texts) {
            m_keys.push_back(text);
            if (!caseSensitive) {
                own(folded(text));
            }
            if (std::any_of(m_keys.back().begin(), m_keys.back().end(), isAbovePlane0)) {
                own(inCodeUnitOrder(m_keys.back()));
            }
        }
        findCommonStart();
    }

    std::vector<TextItem> items() const
    {
        std::vector<TextItem> list(m_keys.size());
        for (size_t i = 0; i < list.size(); ++i) {
            list[i] = {head(m_keys[i]), quint32(i)};
        }
        return list;
    }

    bool less(const TextItem &a, const TextItem &b) const
    {
        return a.head != b.head ? a.head < b.head : m_keys[a.number] < m_keys[b.number];
    }

private:
    void own(std::string key)
    {
        m_own.push_back(std::move(key));
        m_keys.back() = m_own.back();
    }

    /// Numbers like "ORD-00017" differ behind their common start only. Empty texts come first all
    /// the same.
    void findCommonStart()
    {
        std::string_view common;
        for (const std::string_view key : m_keys) {
            if (key.empty()) {
                continue;
            }
            if (common.empty()) {
                common = key;
            }
            const auto end = std::mismatch(common.begin(), common.end(), key.begin(), key.end());
            common = common.substr(0, size_t(end.first - common.begin()));
            if (common.empty()) {
                break;
            }
        }
        m_commonStart = common.size();
    }

    quint64 head(std::string_view key) const
    {
        quint64 bytes = 0;
        for (size_t i = m_commonStart; i < m_commonStart + sizeof bytes; ++i) {
            bytes = bytes << 8 | (i < key.size() ? uchar(key[i]) : 0U);
        }
        return bytes;
    }

    std::vector<std::string_view> m_keys;
    std::deque<std::string> m_own;
    size_t m_commonStart = 0;
};

bool rankCollated(const std::vector<std::string_view> &texts, bool caseSensitive,
                  const Progress &progress, std::vector<quint32> *ranks)
{
    QCollator collator{QLocale()};
    collator.setCaseSensitivity(caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive);
    std::vector<QCollatorSortKey> keys;
    std::vector<CollatedItem> items;
    keys.reserve(texts.size());
    items.reserve(texts.size());
    for (const std::string_view text : texts) {
        if (keys.size() % progressInterval == 0 && !reportProgress(progress, 0.0)) {
            return false;
        }
        items.push_back({quint32(keys.size())});
        keys.push_back(collator.sortKey(Utf8::decoded(text)));
    }
    const auto less = [&keys](CollatedItem a, CollatedItem b) {
        return keys[a.number].compare(keys[b.number]) < 0;
    };
    if (!sortInRuns(&items, less, progress)) {
        return false;
    }
    rankSorted(items, less, ranks);
    return true;
}

} // namespace

bool rankTexts(const std::vector<std::string_view> &texts, const TextOrder &order,
               const Progress &progress, std::vector<quint32> *ranks)
{
    // The C locale has no collation: its collator compares code units, but its sort keys do not.
    if (order.localeAware && QLocale().language() != QLocale::C) {
        return rankCollated(texts, order.caseSensitive, progress, ranks);
    }
    const ByteKeys keys(texts, order.caseSensitive);
    std::vector<TextItem> items = keys.items();
    const auto less = [&keys](const TextItem &a, const TextItem &b) { return keys.less(a, b); };
    if (!sortInRuns(&items, less, progress)) {
        return false;
    }
    rankSorted(items, less, ranks);
    return true;
}

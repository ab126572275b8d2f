#include "vcardreader.h"

#include "inputoptions.h"
#include "inputreader.h"
#include "rowcollector.h"
#include "textdecoder.h"
#include "textinput.h"
#include "texts.h"
#include "utf8.h"
#include "vcardlines.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QTextCodec>
#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <vector>

namespace {

constexpr double readingShare = 0.5;
// A row is as wide as the columns of all cards: more could not be worked with.
constexpr size_t mostColumns = 1 << 16;
constexpr int utf8Mib = 106;

struct VCardReader
{
    Q_DECLARE_TR_FUNCTIONS(VCardReader)
};

enum class CardLine { Begin, End, Other };

bool isSame(std::string_view text, const char *other)
{
    const std::string_view trimmed = Utf8::trimmed(text);
    return trimmed.size() == strlen(other) &&
           qstrnicmp(trimmed.data(), other, uint(trimmed.size())) == 0;
}

/// The columns of the cards: which of them the next property of a name goes to.
class CardColumns
{
public:
    /// All properties of one name.
    struct Family
    {
        std::string name;
        /// The columns that its first, second ... property went to.
        std::vector<int> columns;
        qint64 card = -1;
        size_t used = 0;
    };

    Family *family(const std::string &name)
    {
        const auto [at, isNew] = m_families.try_emplace(name);
        if (isNew) {
            at->second.name = name;
        }
        return &at->second;
    }

    /// -1 when there are too many.
    int take(Family *family, qint64 card)
    {
        if (family->card != card) {
            family->card = card;
            family->used = 0;
        }
        for (;;) {
            if (family->used == family->columns.size()) {
                const int column = columnFor(numbered(family->name, family->used + 1));
                if (column < 0) {
                    return -1;
                }
                family->columns.push_back(column);
            }
            const int column = family->columns[family->used];
            ++family->used;
            // A property may have such a name of its own.
            if (m_card[size_t(column)] != card) {
                m_card[size_t(column)] = card;
                return column;
            }
        }
    }
    QStringList names() const { return m_names; }

private:
    static std::string numbered(const std::string &name, size_t number)
    {
        return number == 1 ? name : name + ' ' + std::to_string(number);
    }

    int columnFor(const std::string &name)
    {
        const auto [at, isNew] = m_columns.try_emplace(name, m_names.size());
        if (isNew) {
            if (m_columns.size() > mostColumns) {
                return -1;
            }
            m_names.append(Utf8::decoded(name));
            m_card.push_back(-1);
        }
        return at->second;
    }

    std::map<std::string, Family> m_families;
    std::map<std::string, int> m_columns;
    QStringList m_names;
    /// The last card that has a value in a column.
    std::vector<qint64> m_card;
};

/// Turns the lines of a text into rows.
class CardReader
{
public:
    CardReader(const InputOptions &options, std::string *text)
        : m_lines(text)
        , m_collector(options, nullptr)
    {
        m_collector.setLengthsMatter(false);
        m_collector.setHeaderInRows(false);
    }

    /// False when the progress asked to stop.
    bool read(const Progress &progress);
    Dataset finish(const QString &path, Messages *messages);

private:
    struct Head
    {
        VCardHead parsed;
        CardColumns::Family *family;
        QTextCodec *codec;
    };

    static CardLine kindOf(std::string_view line);
    void begin();
    void end();
    void addProperty();
    const Head &headFor(std::string_view text);
    std::string_view valueFor(const Head &head);
    std::string_view keep(std::string text);
    void endCard();
    void warn(Messages *messages) const;

    VCardLines m_lines;
    RowCollector m_collector;
    CardColumns m_columns;
    std::map<std::string, Head, std::less<>> m_heads;
    qint64 m_begins = 0;
    qint64 m_ends = 0;
    int m_depth = 0;
    qint64 m_card = 0;
    /// A card inside another belongs to the property in front of it.
    std::string m_outerName;
    std::string m_nestedHead;
    VCardVersion m_version = VCardVersion::New;
    std::vector<std::string_view> m_row;
    int m_rowSize = 0;
    /// Values of the card that had to be converted.
    std::deque<std::string> m_kept;
    qint64 m_strayLines = 0;
    qint64 m_damagedValues = 0;
    QStringList m_unknownCharsets;
    bool m_tooManyColumns = false;
};

bool CardReader::read(const Progress &progress)
{
    qint64 lines = 0;
    while (m_lines.next(m_version) && !m_tooManyColumns) {
        switch (kindOf(m_lines.line())) {
        case CardLine::Begin:
            begin();
            break;
        case CardLine::End:
            end();
            break;
        case CardLine::Other:
            if (m_depth > 0 && !m_lines.head().empty()) {
                addProperty();
            } else if (!Utf8::trimmed(m_lines.line()).empty()) {
                ++m_strayLines;
            }
            break;
        }
        if (++lines % progressInterval == 0 &&
            !reportProgress(progress, readingShare + (1 - readingShare) * m_lines.fraction())) {
            return false;
        }
    }
    if (m_depth > 0) {
        endCard();
    }
    return true;
}

CardLine CardReader::kindOf(std::string_view line)
{
    const char first = line.front();
    if ((first == 'B' || first == 'b' || first == ' ' || first == '\t') &&
        isSame(line, "BEGIN:VCARD")) {
        return CardLine::Begin;
    }
    if ((first == 'E' || first == 'e' || first == ' ' || first == '\t') &&
        isSame(line, "END:VCARD")) {
        return CardLine::End;
    }
    return CardLine::Other;
}

void CardReader::begin()
{
    ++m_begins;
    ++m_depth;
    if (m_depth == 1) {
        m_version = VCardVersion::New;
        m_outerName.clear();
    }
}

void CardReader::end()
{
    ++m_ends;
    if (m_depth == 0) {
        return;
    }
    --m_depth;
    if (m_depth == 0) {
        endCard();
    }
}

void CardReader::endCard()
{
    m_depth = 0;
    m_collector.add(m_row.data(), m_rowSize, true);
    std::fill(m_row.begin(), m_row.begin() + m_rowSize, std::string_view());
    m_rowSize = 0;
    m_kept.clear();
    m_version = VCardVersion::New;
    ++m_card;
}

void CardReader::addProperty()
{
    const bool isVersion = isSame(m_lines.head(), "VERSION");
    if (isVersion && m_depth == 1) {
        m_version = isSame(m_lines.value(), "2.1") ? VCardVersion::Old : VCardVersion::New;
    }
    if (m_collector.ignoresNext()) {
        return;
    }
    if (m_depth == 1) {
        m_outerName = m_lines.head();
    } else {
        m_nestedHead.assign(m_outerName).append(1, '.').append(m_lines.head());
    }
    const Head &head = headFor(m_depth == 1 ? m_lines.head() : std::string_view(m_nestedHead));
    const int column = m_columns.take(head.family, m_card);
    if (column < 0) {
        m_tooManyColumns = true;
        return;
    }
    if (size_t(column) >= m_row.size()) {
        m_row.resize(2 * size_t(column) + 16);
    }
    m_row[size_t(column)] = valueFor(head);
    m_rowSize = std::max(m_rowSize, column + 1);
}

const CardReader::Head &CardReader::headFor(std::string_view text)
{
    const auto found = m_heads.find(text);
    if (found != m_heads.end()) {
        return found->second;
    }
    VCardHead parsed(text);
    QTextCodec *codec = nullptr;
    if (parsed.isQuotedPrintable && !parsed.charset.empty()) {
        codec = QTextCodec::codecForName(QByteArray::fromStdString(parsed.charset));
        const QString name = Utf8::decoded(parsed.charset);
        if (!codec && !m_unknownCharsets.contains(name) && m_unknownCharsets.size() < 10) {
            m_unknownCharsets.append(name);
        }
        codec = codec && codec->mibEnum() == utf8Mib ? nullptr : codec;
    }
    CardColumns::Family *const family = m_columns.family(parsed.name);
    return m_heads.emplace(std::string(text), Head{std::move(parsed), family, codec}).first->second;
}

std::string_view CardReader::keep(std::string text)
{
    text.resize(unescapeVCardText(text.data(), text.size(), m_version));
    m_kept.push_back(std::move(text));
    return m_kept.back();
}

std::string_view CardReader::valueFor(const Head &head)
{
    const std::string_view bytes = m_lines.decodedValue(head.parsed);
    if (head.parsed.isQuotedPrintable) {
        if (head.codec) {
            QTextCodec::ConverterState state;
            const QString text = head.codec->toUnicode(bytes.data(), int(bytes.size()), &state);
            m_damagedValues += state.invalidChars > 0 || state.remainingChars > 0 ? 1 : 0;
            return keep(Utf8::encoded(text));
        }
        if (!Utf8::isValid(bytes)) {
            ++m_damagedValues;
            return keep(Utf8::repaired(bytes));
        }
    }
    return m_lines.unescapedValue(m_version);
}

void CardReader::warn(Messages *messages) const
{
    for (const QString &name : m_unknownCharsets) {
        messages->warn(VCardReader::tr("Encoding '%1' is not known, '%2' is used.")
                           .arg(name, QStringLiteral("UTF-8")));
    }
    if (m_damagedValues > 0) {
        messages->warn(VCardReader::tr("%1 quoted-printable value(s) contain bytes that are not "
                                       "valid in their encoding.")
                           .arg(Texts::count(m_damagedValues)));
    }
    if (m_strayLines > 0) {
        messages->warn(VCardReader::tr("%1 line(s) that are no property of a vCard ignored.")
                           .arg(Texts::count(m_strayLines)));
    }
}

Dataset CardReader::finish(const QString &path, Messages *messages)
{
    if (m_tooManyColumns) {
        messages->fail(tooBigText(path));
        return {};
    }
    if (m_begins != m_ends) {
        messages->fail(VCardReader::tr("vCard parsing error: %1 'BEGIN:VCARD' and %2 'END:VCARD'")
                           .arg(Texts::count(m_begins), Texts::count(m_ends)));
        return {};
    }
    warn(messages);
    return m_collector.finish(m_columns.names(), messages);
}

} // namespace

Dataset readVCards(const InputOptions &options, const QString &path, TextSource *source,
                   Messages *messages, const Progress &progress)
{
    noteEncoding(options, *source, messages);
    std::optional<std::string> text = readWholeText(path, source, messages, progress, readingShare);
    if (!text) {
        return {};
    }
    CardReader reader(options, &*text);
    return reader.read(progress) ? reader.finish(path, messages) : Dataset();
}

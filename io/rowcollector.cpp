#include "rowcollector.h"

#include "inputoptions.h"
#include "textdecoder.h"
#include "texts.h"
#include "utf8.h"

#include <algorithm>
#include <limits>
#include <new>

namespace {

bool isAsciiSpace(char byte)
{
    return byte == ' ' || (byte >= '\t' && byte <= '\r');
}

/// True when an ASCII value is what QString::simplified() makes of it.
bool isSimple(std::string_view value)
{
    bool afterSpace = true;
    for (const char byte : value) {
        const bool space = isAsciiSpace(byte);
        if (space && (afterSpace || byte != ' ')) {
            return false;
        }
        afterSpace = space;
    }
    return value.empty() || !afterSpace;
}

/// Appends what QString::simplified() makes of a value.
void appendSimplified(std::string_view value, std::string *out)
{
    if (!Utf8::isAscii(value)) {
        Utf8::encode(Utf8::decoded(value).simplified(), out);
        return;
    }
    const size_t start = out->size();
    bool gap = false;
    for (const char byte : value) {
        if (isAsciiSpace(byte)) {
            gap = true;
            continue;
        }
        if (gap && out->size() > start) {
            out->push_back(' ');
        }
        gap = false;
        out->push_back(byte);
    }
}

} // namespace

RowCollector::RowCollector(const InputOptions &options, const TextSource *source)
    : m_source(source)
    , m_ignoredRows(options.ignoredRows)
    , m_trim(options.trim)
    , m_simplify(options.simplify)
    , m_ignoreEmptyRows(options.ignoreEmptyRows)
    , m_ignoreEmptyColumns(options.ignoreEmptyColumns)
    , m_wantsHeader(options.header)
{
}

void RowCollector::add(std::string_view *values, int count, bool clean)
{
    ++m_inputRows;
    if (m_inputRows <= m_ignoredRows) {
        return;
    }
    if (!clean) {
        mend(values, count);
    }
    if (m_trim || m_simplify) {
        tidy(values, count);
    }
    if (m_ignoreEmptyRows &&
        std::all_of(values, values + count, [](std::string_view v) { return v.empty(); })) {
        ++m_emptyRows;
        return;
    }
    countLength(count);
    if (m_wantsHeader && !m_header) {
        m_header.emplace();
        m_header->reserve(count);
        for (int i = 0; i < count; ++i) {
            m_header->append(Utf8::decoded(values[i]));
        }
        return;
    }
    if (m_builder.rowCount() == std::numeric_limits<int>::max()) {
        throw std::bad_alloc();
    }
    m_builder.appendRow(values, count);
}

void RowCollector::mend(std::string_view *values, int count)
{
    m_mended.clear();
    for (int i = 0; i < count; ++i) {
        if (const std::optional<std::string> text = m_source->mended(values[i])) {
            const size_t from = m_mended.size();
            m_mended.text()->append(*text);
            m_mended.end(i, from);
            ++m_mendedValues;
        }
    }
    m_mended.place(values);
}

void RowCollector::tidy(std::string_view *values, int count)
{
    if (!m_simplify) {
        std::transform(values, values + count, values, Utf8::trimmed);
        return;
    }
    m_tidied.clear();
    for (int i = 0; i < count; ++i) {
        if (Utf8::isAscii(values[i]) && isSimple(values[i])) {
            continue;
        }
        const size_t from = m_tidied.size();
        appendSimplified(values[i], m_tidied.text());
        m_tidied.end(i, from);
    }
    m_tidied.place(values);
}

void RowCollector::countLength(int length)
{
    if (length != m_lastLength) {
        m_lastLength = length;
        m_lastLengthCount = &m_lengths[length];
    }
    if (m_lastLengthCount->rows == 0) {
        m_lastLengthCount->firstRow = m_inputRows;
    }
    ++m_lastLengthCount->rows;
}

Dataset RowCollector::finish(Messages *messages)
{
    noteRows(messages);
    Dataset dataset = m_builder.take();
    if (dataset.columnCount() < ColIndex(m_minimumColumns)) {
        dataset.setColumnCount(ColIndex(m_minimumColumns));
    }
    if (m_header) {
        if (dataset.columnCount() < ColIndex(m_header->size())) {
            dataset.setColumnCount(ColIndex(m_header->size()));
        }
        dataset.setHeader(*m_header);
    }
    return m_ignoreEmptyColumns ? withoutEmptyColumns(dataset) : dataset;
}

Dataset RowCollector::finish(const QStringList &columnNames, Messages *messages)
{
    m_header = columnNames;
    return finish(messages);
}

void RowCollector::noteRows(Messages *messages) const
{
    if (m_emptyRows > 0) {
        messages->note(tr("%1 empty row(s) ignored").arg(Texts::count(m_emptyRows)));
    }
    if (m_mendedValues > 0) {
        messages->warn(tr("%1 value(s) contain bytes that are not valid %2; they were "
                          "replaced by '%3'.")
                           .arg(Texts::count(m_mendedValues), m_source->encodingName(),
                                QString(QChar(QChar::ReplacementCharacter))));
    }
    if (!m_lengthsMatter || m_lengths.size() < 2) {
        return;
    }
    messages->warn(tr("Number of values per row vary:"));
    for (const auto &[length, rows] : m_lengths) {
        const QString line =
            tr("%1 input %2 %3 %4")
                .arg(Texts::count(rows.rows), rows.rows == 1 ? tr("row has") : tr("rows have"),
                     Texts::count(length), length == 1 ? tr("value") : tr("values"));
        messages->warn(line + tr(": E.g. input row %1").arg(Texts::count(rows.firstRow)));
    }
}

Dataset withoutEmptyColumns(const Dataset &dataset)
{
    if (!dataset.hasRows()) {
        return dataset;
    }
    std::vector<ColIndex> kept;
    for (ColIndex column(0); column < dataset.columnCount(); ++column) {
        const ColumnReader reader = dataset.columnReader(column);
        for (int row = 0; row < dataset.rowCount(); ++row) {
            if (reader.code(row) != ValuePool::emptyCode) {
                kept.push_back(column);
                break;
            }
        }
    }
    return int(kept.size()) == dataset.columnCount().value() ? dataset
                                                             : dataset.selectColumns(kept);
}

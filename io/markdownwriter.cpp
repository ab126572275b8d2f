#include "markdownwriter.h"

#include "cellblocks.h"
#include "outputoptions.h"
#include "textencoder.h"
#include "textwidth.h"
#include "utf8.h"

#include <QRegularExpression>
#include <cctype>

namespace {

// Longer values stick out: one of them must not widen every row.
constexpr int widestColumn = 50;
constexpr int narrowestColumn = 3; // that of the divider

void widen(int *width, std::string_view value)
{
    if (*width >= widestColumn) {
        return;
    }
    const std::string_view start = value.substr(0, size_t(widestColumn) * 4);
    int needed = textWidth(start);
    for (const char c : start) {
        needed += c == '|' || c == '\\'    ? 1
                  : c == '\n' || c == '\r' ? 4
                                           : 0; // what stands for them
    }
    *width = qBound(*width, needed, widestColumn);
}

} // namespace

MarkdownWriter::MarkdownWriter(const TextJob &job)
    : RecordFormat(job)
{
    useRealLineEnds();
    watchFor("|\\\r\n");
}

QString MarkdownWriter::syntax() const
{
    return QStringLiteral("|-\\ <>br!\r\n");
}

bool MarkdownWriter::prepare(Messages *, const Progress &progress)
{
    m_widths.assign(size_t(dataset().columnCount().value()), narrowestColumn);
    if (options().writeHeader && dataset().hasHeader()) {
        const QStringList names = dataset().header();
        for (int i = 0; i < names.size(); ++i) {
            widen(&m_widths[size_t(i)], Utf8::encoded(names.at(i)));
        }
    }
    return measure(progress);
}

bool MarkdownWriter::measure(const Progress &progress)
{
    const size_t columns = m_widths.size();
    const auto measureBlock = [&](const std::string_view *cells, int, int rowCount) {
        for (int i = 0; i < rowCount; ++i) {
            for (size_t column = 0; column < columns; ++column, ++cells) {
                widen(&m_widths[column], *cells);
            }
        }
        return true;
    };
    return forEachCellBlock(dataset(), progress, measureBlock);
}

std::string_view MarkdownWriter::formatted(std::string_view value)
{
    if (value.find_first_of("|\\\r\n") == std::string_view::npos && Utf8::isAscii(value)) {
        return value;
    }
    m_formatted.clear();
    size_t done = 0;
    for (size_t at = 0; at < value.size();) {
        if (!isWatched(value[at])) {
            ++at;
            continue;
        }
        m_formatted.append(value.substr(done, at - done));
        done = at;
        const char c = value[at];
        const uint codePoint = Utf8::nextCodePoint(value, &at);
        const bool isLineBreak = c == '\r' || c == '\n';
        if (isLineBreak) {
            at += c == '\r' && at < value.size() && value[at] == '\n' ? 1 : 0;
            m_formatted.append("<br>");
            done = at;
        } else if (c == '|') {
            m_formatted.append("\\|");
            done = at;
        } else if (c == '\\') {
            // In front of punctuation it would vanish.
            const bool vanishes = at < value.size() && ispunct(uchar(value[at]));
            m_formatted.append(vanishes ? "\\\\" : "\\");
            done = at;
        } else if (!out()->codec().holds(codePoint)) {
            escapeUnencodable(codePoint, &m_formatted);
            done = at;
        }
    }
    m_formatted.append(value.substr(done));
    return m_formatted;
}

bool MarkdownWriter::escapeCharacter(uint, std::string *)
{
    return false; // formatted() does it
}

void MarkdownWriter::begin(bool withHeader)
{
    if (!options().fileComment.isEmpty()) {
        // Not only "-->" ends a comment: "--!>" does, and ">" or "->" at its start.
        QString comment = options().fileComment;
        comment.replace(QLatin1Char('>'), QLatin1String("&gt;"));
        writeLine("<!--" + encodable(comment) + "-->");
    }
    if (withHeader && dataset().hasColumns()) {
        writeHeader();
    }
}

void MarkdownWriter::writeHeader()
{
    std::vector<std::string> names;
    for (const QString &name : dataset().header()) {
        names.push_back(Utf8::encoded(name));
    }
    const std::vector<std::string_view> cells(names.begin(), names.end());
    writeRow(cells.data());
    writeDivider();
}

void MarkdownWriter::writeDivider()
{
    std::string line = "|";
    for (const int width : m_widths) {
        line += ' ' + std::string(size_t(width), '-') + " |";
    }
    writeLine(line);
}

/// Rows are added below a table of as many columns.
bool MarkdownWriter::canContinue(const OldText &old, QString *)
{
    static const QRegularExpression lastLine(
        QStringLiteral("(\\A|[\\r\\n])(\\|[^\\r\\n]*\\|)\\s*\\z"));
    static const QRegularExpression bar(QStringLiteral("(?<!\\\\)(\\\\\\\\)*\\|"));
    const QRegularExpressionMatch match = lastLine.match(old.tail);
    return match.hasMatch() && match.captured(2).count(bar) == dataset().columnCount().value() + 1;
}

/// A second header would be a row of the table.
void MarkdownWriter::resume(bool) {}

bool MarkdownWriter::addRows(const Progress &progress)
{
    const size_t columns = m_widths.size();
    const auto writeBlock = [&](const std::string_view *cells, int, int rowCount) {
        for (int i = 0; i < rowCount; ++i, cells += columns) {
            writeRow(cells);
        }
        return !out()->hasFailed();
    };
    return forEachCellBlock(dataset(), progress, writeBlock) && !out()->hasFailed();
}

void MarkdownWriter::writeRow(const std::string_view *cells)
{
    m_line.assign(1, '|');
    for (size_t column = 0; column < m_widths.size(); ++column) {
        addCell(cells[column], m_widths[column]);
    }
    writeLine(m_line);
}

void MarkdownWriter::addCell(std::string_view value, int width)
{
    const std::string_view text = formatted(value);
    endValue();
    m_line.push_back(' ');
    m_line.append(text);
    const int used = text.size() > size_t(widestColumn) * 4 ? widestColumn : textWidth(text);
    if (used < width) {
        m_line.append(size_t(width - used), ' ');
    }
    m_line.append(" |");
}

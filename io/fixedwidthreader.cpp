#include "fixedwidthreader.h"

#include "delimitedparser.h"
#include "fixedwidthguess.h"
#include "inputoptions.h"
#include "rowcollector.h"
#include "textdecoder.h"
#include "textinput.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>
#include <algorithm>
#include <limits>

namespace {

constexpr qint64 sampleBytes = 512 * 1024;
constexpr int sampleLines = 1000;
constexpr int previewLines = 50;
// As for delimited text: a table of more columns could not be worked with.
constexpr int mostWidths = 1 << 20;

struct FixedWidthReader
{
    Q_DECLARE_TR_FUNCTIONS(FixedWidthReader)
};

/// The first lines of the text after `skipped` ones. A line cut by the end of the sample is left
/// out unless it is the only one.
QStringList firstLines(DelimitedParser *parser, const TextSource &source, qint64 skipped, int most)
{
    std::string_view rest = parser->sample(sampleBytes);
    const bool cut = rest.size() > size_t(sampleBytes);
    rest = rest.substr(0, size_t(sampleBytes));
    QStringList lines;
    while (!rest.empty() && lines.size() < most) {
        const size_t end = std::min(rest.find_first_of("\r\n"), rest.size());
        if (end == rest.size() && cut && !lines.isEmpty()) {
            break;
        }
        if (skipped > 0) {
            --skipped;
        } else {
            const std::string_view line = rest.substr(0, end);
            lines.append(Utf8::decoded(source.mended(line).value_or(std::string(line))));
        }
        const bool pair = rest.substr(end, 2) == "\r\n";
        rest.remove_prefix(std::min(rest.size(), end + (pair ? 2 : 1)));
    }
    return lines;
}

/// The widths that the options give; empty when they are to be guessed.
QList<int> givenWidths(const InputOptions &options, Messages *messages)
{
    QList<int> widths;
    if (options.autoFixedWidths) {
        return widths;
    }
    std::copy_if(options.fixedWidths.begin(), options.fixedWidths.end(), std::back_inserter(widths),
                 [](int width) { return width > 0; });
    const int dropped = options.fixedWidths.size() - widths.size();
    if (dropped > 0) {
        messages->warn(FixedWidthReader::tr("%1 column width(s) that are not above 0 ignored.")
                           .arg(Texts::count(dropped)));
    }
    return widths.mid(0, mostWidths);
}

QList<int> guessedWidths(const InputOptions &options, const TextSource &source,
                         DelimitedParser *lines, Messages *messages)
{
    QList<int> widths =
        guessColumnWidths(firstLines(lines, source, options.ignoredRows, sampleLines));
    if (lines->ending() == DelimitedParser::Ending::None) {
        messages->note(FixedWidthReader::tr("Columns=Automatic guesses %1 columns. Set 'Columns' "
                                            "option to '%2' to change.\n")
                           .arg(Texts::count(widths.size()), FixedWidthReader::tr("Manual")));
    }
    // Later lines may be longer than those of the sample.
    if (!widths.isEmpty()) {
        widths.last() = std::numeric_limits<int>::max();
    }
    return widths;
}

/// Cuts lines into pieces of given widths.
class LineCutter
{
public:
    explicit LineCutter(const QList<int> &widths)
        : m_widths(widths.begin(), widths.end())
        , m_pieces(size_t(std::max(widths.size(), 1)))
    {
    }

    /// Answers the number of pieces, at least 1; they stand in pieces().
    int cut(std::string_view line)
    {
        m_pieces[0] = {};
        m_rest = line;
        const bool ascii = Utf8::isAscii(line);
        size_t count = 0;
        while (!m_rest.empty() && count < m_widths.size()) {
            const auto width = size_t(m_widths[count]);
            const size_t size = ascii ? std::min(width, m_rest.size()) : bytesOf(width);
            m_pieces[count] = m_rest.substr(0, size);
            m_rest.remove_prefix(size);
            ++count;
        }
        return int(std::max(count, size_t(1)));
    }
    std::string_view *pieces() { return m_pieces.data(); }
    /// What stands beyond the last width.
    std::string_view rest() const { return m_rest; }

private:
    size_t bytesOf(size_t characters) const
    {
        size_t at = 0;
        while (characters > 0 && at < m_rest.size()) {
            at += size_t(Utf8::characterLength(m_rest.substr(at)));
            --characters;
        }
        return at;
    }

    std::vector<int> m_widths;
    std::vector<std::string_view> m_pieces;
    std::string_view m_rest;
};

} // namespace

Dataset readFixedWidth(const InputOptions &options, const QString &path, TextSource *source,
                       Messages *messages, const Progress &progress)
{
    noteEncoding(options, *source, messages);
    DelimitedParser lines(source, progress);
    lines.setLines();
    QList<int> widths = givenWidths(options, messages);
    if (widths.isEmpty()) {
        widths = guessedWidths(options, *source, &lines, messages);
    }
    LineCutter cutter(widths);
    RowCollector collector(options, source);
    collector.setLengthsMatter(false);
    collector.setMinimumColumns(widths.size());
    qint64 longLines = 0;
    while (lines.next()) {
        const CutRow line = lines.row();
        const int count = cutter.cut(line.values[0]);
        if (!collector.ignoresNext() && !Utf8::trimmed(cutter.rest()).empty()) {
            ++longLines;
        }
        collector.add(cutter.pieces(), count, line.clean);
    }
    if (!tellEnding(lines.ending(), path, *source, messages)) {
        return {};
    }
    if (longLines > 0) {
        messages->warn(FixedWidthReader::tr("%1 line(s) longer than the column widths, the rest "
                                            "was ignored.")
                           .arg(Texts::count(longLines)));
    }
    return collector.finish(messages);
}

QStringList fixedWidthPreview(TextSource *source)
{
    DelimitedParser parser(source);
    return firstLines(&parser, *source, 0, previewLines);
}

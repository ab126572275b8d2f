#include "fixedwidthguess.h"

#include <QChar>
#include <QVector>
#include <algorithm>
#include <deque>
#include <vector>

namespace {

using Line = QVector<uint>;
constexpr int alwaysKept = 20;
constexpr int mostKept = 200;
constexpr double keptShare = 0.9;
constexpr double agreeingGroups = 0.8;
// A gap must be seen in so many lines before a word in front of it counts as a column of its own.
constexpr size_t fewLines = 10;
// With so many other lines the header need not be heard on where gaps are.
constexpr size_t enoughLines = 3;
// Running text of one very long line must not become a table of thousands of columns.
constexpr size_t mostColumns = 2000;

/// Characters from `from` up to `to`, not including it.
struct Span
{
    int from;
    int to;
    int size() const { return to - from; }
};

bool isBlank(const Line &line, int at)
{
    return at < 0 || at >= line.size() || QChar::isSpace(line.at(at));
}

bool isBlank(const Line &line, Span span)
{
    for (int at = span.from; at < std::min(span.to, line.size()); ++at) {
        if (!isBlank(line, at)) {
            return false;
        }
    }
    return true;
}

/// First and last character of the text inside a span; from > to when there is none.
Span textIn(const Line &line, Span span)
{
    int from = span.from;
    int to = std::min(span.to, line.size());
    while (from < to && isBlank(line, from)) {
        ++from;
    }
    while (to > from && isBlank(line, to - 1)) {
        --to;
    }
    return {from, to};
}

std::vector<Span> wordsOf(const Line &line)
{
    std::vector<Span> words;
    for (int at = 0; at < line.size(); ++at) {
        if (isBlank(line, at)) {
            continue;
        }
        if (isBlank(line, at - 1)) {
            words.push_back({at, at});
        }
        words.back().to = at + 1;
    }
    return words;
}

/// Only dashes or the like, and blanks.
bool isRule(const Line &line)
{
    return std::all_of(
               line.begin(), line.end(),
               [](uint c) { return c == '-' || c == '=' || c == '_' || QChar::isSpace(c); }) &&
           wordsOf(line).size() > 0 && textIn(line, {0, line.size()}).size() > 1;
}

int longestOf(const std::vector<const Line *> &lines)
{
    int longest = 0;
    for (const Line *line : lines) {
        longest = std::max(longest, textIn(*line, {0, line->size()}).to);
    }
    return longest;
}

/// Spans of at least one position for which `isIn` answers true.
template <class Test>
std::vector<Span> spansWhere(Span whole, Test isIn)
{
    std::vector<Span> spans;
    for (int at = whole.from; at < whole.to; ++at) {
        if (!isIn(at)) {
            continue;
        }
        if (spans.empty() || spans.back().to != at) {
            spans.push_back({at, at});
        }
        spans.back().to = at + 1;
    }
    return spans;
}

class Guess
{
public:
    explicit Guess(const QStringList &texts);
    QList<int> widths() const;

private:
    void takeSample(int linesRead);
    std::vector<Span> ruledGaps() const;
    std::vector<Span> votedGaps() const;
    std::vector<Span> settledGaps(const std::vector<Span> &voted) const;
    bool isColumn(Span stretch) const;
    bool isInsideText(Span gap, bool widerGaps) const;
    int boundaryIn(Span gap, Span left, Span right) const;
    int besideHeader(int boundary, Span gap, Span right) const;
    bool isRightAligned(Span column) const;

    std::deque<Line> m_lines;
    /// Of the sample: all lines; those without the header and without rules.
    std::vector<const Line *> m_sample;
    std::vector<const Line *> m_data;
    const Line *m_header = nullptr;
    const Line *m_rule = nullptr;
    int m_longest = 0;
    /// How many lines of m_data have a character at a position.
    std::vector<int> m_used;
};

Guess::Guess(const QStringList &texts)
{
    for (const QString &text : texts) {
        Line line = text.toUcs4();
        if (!isBlank(line, Span{0, line.size()})) {
            m_lines.push_back(std::move(line));
        }
    }
    size_t runs = 1;
    for (const Line &line : m_lines) {
        if (!isRule(line)) {
            m_header = m_header ? m_header : &line;
        } else if (wordsOf(line).size() > runs) {
            runs = wordsOf(line).size();
            m_rule = &line;
        }
    }
    takeSample(texts.size());
}

void Guess::takeSample(int linesRead)
{
    size_t from = 0;
    size_t to = m_lines.size();
    if (to > alwaysKept) {
        const auto most = size_t(std::min(int(keptShare * linesRead), mostKept));
        for (bool front = true; to - from > most; front = !front) {
            from += front ? 1 : 0;
            to -= front ? 0 : 1;
        }
    }
    for (size_t i = from; i < to; ++i) {
        m_sample.push_back(&m_lines[i]);
        if (&m_lines[i] != m_header && !isRule(m_lines[i])) {
            m_data.push_back(&m_lines[i]);
        }
    }
    if (m_data.empty()) {
        m_data = m_sample;
    }
    m_longest = longestOf(m_sample);
    m_used.assign(size_t(m_longest), 0);
    for (const Line *line : m_data) {
        for (int at = 0; at < std::min(line->size(), m_longest); ++at) {
            m_used[size_t(at)] += isBlank(*line, at) ? 0 : 1;
        }
    }
}

/// The gaps between the dashes of a line of them, when the lines keep to it.
std::vector<Span> Guess::ruledGaps() const
{
    if (!m_rule) {
        return {};
    }
    const std::vector<Span> runs = wordsOf(*m_rule);
    std::vector<Span> gaps;
    for (size_t i = 1; i < runs.size(); ++i) {
        const Span gap{runs[i - 1].to, runs[i].from};
        const auto crossing = std::count_if(m_data.begin(), m_data.end(), [&](const Line *line) {
            return !isBlank(*line, gap.from - 1) && !isBlank(*line, gap) && !isBlank(*line, gap.to);
        });
        if (size_t(crossing) * 5 > m_data.size()) {
            return {};
        }
        gaps.push_back(gap);
    }
    return gaps;
}

/// The spans that are blank in nearly all groups of lines.
std::vector<Span> Guess::votedGaps() const
{
    const size_t count = m_sample.size();
    const size_t size = count <= 10 ? 2 : count <= 50 ? 5 : 10;
    const size_t groups = std::max(count / size, size_t(1));
    std::vector<size_t> blankGroups(size_t(m_longest), groups);
    std::vector<size_t> seenIn(size_t(m_longest), groups);
    for (size_t i = 0; i < std::min(groups * size, count); ++i) {
        const Line &line = *m_sample[i];
        if (isRule(line) || (&line == m_header && m_data.size() >= enoughLines)) {
            continue;
        }
        for (int at = 0; at < std::min(line.size(), m_longest); ++at) {
            if (!isBlank(line, at) && seenIn[size_t(at)] != i / size) {
                seenIn[size_t(at)] = i / size;
                --blankGroups[size_t(at)];
            }
        }
    }
    const auto share = size_t(agreeingGroups * double(groups) + 0.999);
    const size_t needed = groups < 3 ? groups : std::min(groups - 1, share);
    return spansWhere({0, m_longest}, [&](int at) { return blankGroups[size_t(at)] >= needed; });
}

/// Whether text between two gaps is that of a column with few values: several lines have some, all
/// with the same start or the same end.
bool Guess::isColumn(Span stretch) const
{
    size_t lines = 0;
    bool sameStart = true;
    bool sameEnd = true;
    for (const Line *line : m_data) {
        const Span text = textIn(*line, stretch);
        if (text.size() > 0) {
            ++lines;
            sameStart = sameStart && text.from == stretch.from;
            sameEnd = sameEnd && text.to == stretch.to;
        }
    }
    return lines >= 2 && (sameStart || sameEnd);
}

/// A gap of one blank that all lines use to part two words need not part columns.
bool Guess::isInsideText(Span gap, bool widerGaps) const
{
    if (gap.size() != 1 || !widerGaps) {
        return false;
    }
    bool sameWord = true;
    bool letters = true;
    int start = gap.from;
    const Line &first = *m_data.front();
    while (!isBlank(first, start - 1)) {
        --start;
    }
    for (const Line *line : m_data) {
        if (isBlank(*line, gap.from - 1) || isBlank(*line, gap.to) ||
            !QChar::isLower(line->at(gap.from - 1))) {
            return false;
        }
        letters = letters && QChar::isLetter(line->at(gap.to));
        sameWord =
            sameWord && line->mid(start, gap.from - start) == first.mid(start, gap.from - start);
    }
    return (sameWord && m_data.size() > 1) || (letters && m_data.size() < fewLines);
}

/// Of each voted gap the part that parts columns; there may be several of them, or none.
std::vector<Span> Guess::settledGaps(const std::vector<Span> &voted) const
{
    std::vector<Span> gaps;
    for (const Span whole : voted) {
        std::vector<Span> pure =
            spansWhere(whole, [this](int at) { return m_used[size_t(at)] == 0; });
        if (pure.empty()) {
            pure.push_back(whole);
        }
        // Long values reach into a gap and have blanks of their own.
        Span best = pure.front();
        for (size_t i = 1; i < pure.size(); ++i) {
            if (isColumn({pure[i - 1].to, pure[i].from})) {
                gaps.push_back(best);
                best = pure[i];
            } else if (pure[i].size() >= best.size()) {
                best = pure[i];
            }
        }
        if (whole.to < m_longest || isColumn({pure.back().to, m_longest})) {
            gaps.push_back(best);
        }
    }
    const bool widerGaps = std::any_of(gaps.begin(), gaps.end(),
                                       [](Span gap) { return gap.from > 0 && gap.size() > 1; });
    gaps.erase(
        std::remove_if(gaps.begin(), gaps.end(),
                       [&](Span gap) { return gap.from == 0 || isInsideText(gap, widerGaps); }),
        gaps.end());
    return gaps;
}

bool Guess::isRightAligned(Span column) const
{
    int last = column.from;
    for (const Line *line : m_data) {
        last = std::max(last, textIn(*line, column).to);
    }
    int atStart = 0;
    int atEnd = 0;
    for (const Line *line : m_data) {
        const Span text = textIn(*line, column);
        if (text.size() > 0) {
            atStart += text.from == column.from ? 1 : 0;
            atEnd += text.to == last ? 1 : 0;
        }
    }
    return atEnd > atStart;
}

/// Where in a gap the right column begins: room is left on the side that values of other rows may
/// grow to.
int Guess::boundaryIn(Span gap, Span left, Span right) const
{
    int boundary = gap.to;
    if (isRightAligned(right)) {
        boundary = isRightAligned(left) ? gap.from : (gap.from + gap.to + 1) / 2;
    }
    return m_header ? besideHeader(boundary, gap, right) : boundary;
}

/// The boundary moved so that the header's words stand with their columns.
int Guess::besideHeader(int boundary, Span gap, Span right) const
{
    const Line &header = *m_header;
    if (!isBlank(header, gap.to) && !isBlank(header, gap.to - 1)) {
        int start = gap.to;
        while (start > gap.from && !isBlank(header, start - 1)) {
            --start;
        }
        return isBlank(header, start - 1) ? start : boundary;
    }
    const Span text = textIn(header, gap);
    if (text.size() <= 0) {
        return boundary;
    }
    if (!isBlank(header, Span{gap.to, right.to})) {
        return std::max(boundary, text.to);
    }
    // The right column's name stands beside its values: the last words without a wider gap.
    int start = text.to;
    while (start > gap.from && !(isBlank(header, start - 1) && isBlank(header, start - 2))) {
        --start;
    }
    return isBlank(header, start - 1) ? start : boundary;
}

QList<int> Guess::widths() const
{
    if (m_sample.empty()) {
        return {};
    }
    std::vector<Span> gaps = ruledGaps();
    if (gaps.empty()) {
        gaps = settledGaps(votedGaps());
    }
    QList<int> widths;
    if (gaps.size() >= mostColumns) {
        gaps.clear();
    }
    int from = 0;
    for (size_t i = 0; i < gaps.size(); ++i) {
        const int end = i + 1 < gaps.size() ? gaps[i + 1].from : m_longest;
        const int to = boundaryIn(gaps[i], {from, gaps[i].from}, {gaps[i].to, end});
        if (to > from && to < m_longest) {
            widths.append(to - from);
            from = to;
        }
    }
    widths.append(std::max(m_longest - from, 1));
    return widths;
}

} // namespace

QList<int> guessColumnWidths(const QStringList &lines)
{
    return Guess(lines).widths();
}

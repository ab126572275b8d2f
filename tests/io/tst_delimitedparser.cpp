#include "delimitedreader.h"
#include "inputoptions.h"
#include "testsupport.h"
#include "trickle.h"

#include <QMap>
#include <QRandomGenerator>
#include <QTextCodec>

namespace {

using Value = std::u32string;
using Row = std::vector<Value>;

/// What reading a text must give.
struct Expected
{
    QStringList header;
    QList<QStringList> rows;
    int columns = 0;
    QStringList information;
    QStringList warnings;
};

// --- The grammars, character by character, straight from their tables --------------------------

std::vector<Row> quotedRows(const Value &text, char32_t delimiter, bool dropRepeated)
{
    enum Class { DelimiterClass, QuoteClass, NewlineClass, OtherClass };
    constexpr int next[7][4] = {
        {5, 2, 6, 1}, // start of input
        {5, 1, 6, 1}, // inside an unquoted value
        {3, 4, 3, 3}, // just after an opening quote
        {3, 4, 3, 3}, // inside a quoted value
        {5, 3, 6, 1}, // quote seen inside a quoted value
        {5, 2, 6, 1}, // value ended by a delimiter
        {5, 2, 6, 1}  // row ended by a newline
    };
    std::vector<Row> rows;
    Row row;
    Value value;
    const auto endRow = [&] {
        row.push_back(value);
        value.clear();
        rows.push_back(row);
        row.clear();
    };
    int state = 0;
    for (size_t i = 0; i < text.size(); ++i) {
        const char32_t c = text[i];
        if (c == '\r' && state != 2 && state != 3 && i + 1 < text.size() && text[i + 1] == '\n') {
            continue;
        }
        const Class kind = c == delimiter           ? DelimiterClass
                           : c == '"'               ? QuoteClass
                           : c == '\n' || c == '\r' ? NewlineClass
                                                    : OtherClass;
        state = next[state][kind];
        if (state == 1 || state == 3) {
            value.push_back(c);
        } else if (state == 5 && !(dropRepeated && value.empty())) {
            row.push_back(value);
            value.clear();
        } else if (state == 6) {
            endRow();
        }
    }
    if (state != 0 && state != 6) {
        endRow();
    }
    return rows;
}

std::vector<Value> split(const Value &text, char32_t separator)
{
    std::vector<Value> parts(1);
    for (const char32_t c : text) {
        if (c == separator) {
            parts.emplace_back();
        } else {
            parts.back().push_back(c);
        }
    }
    return parts;
}

std::vector<Row> unquotedRows(const Value &text, char32_t delimiter, bool dropRepeated)
{
    std::vector<Value> lines = split(text, '\n');
    if (lines.back().empty()) {
        lines.pop_back();
    }
    std::vector<Row> rows;
    for (Value &line : lines) {
        if (!line.empty() && line.back() == '\r') {
            line.pop_back();
        }
        // A line end is never a delimiter here.
        if (dropRepeated && delimiter != '\r') {
            Value kept;
            for (auto c = line.rbegin(); c != line.rend(); ++c) {
                if (*c != delimiter || kept.empty() || kept.front() != delimiter) {
                    kept.insert(kept.begin(), *c);
                }
            }
            line = kept;
        }
        for (const Value &piece : split(line, '\r')) {
            rows.push_back(split(piece, delimiter));
        }
    }
    return rows;
}

// --- What becomes of the rows ------------------------------------------------------------------

QStringList lengthWarnings(const QMap<int, QPair<int, int>> &lengths)
{
    if (lengths.size() < 2) {
        return {};
    }
    QStringList lines{QStringLiteral("Number of values per row vary:")};
    for (auto at = lengths.begin(); at != lengths.end(); ++at) {
        lines.append(
            QStringLiteral("%1 input %2 %3 %4: E.g. input row %5")
                .arg(QString::number(at->first),
                     at->first == 1 ? QStringLiteral("row has") : QStringLiteral("rows have"),
                     QString::number(at.key()),
                     at.key() == 1 ? QStringLiteral("value") : QStringLiteral("values"),
                     QString::number(at->second)));
    }
    return lines;
}

Expected finished(const std::vector<Row> &rows, const InputOptions &options)
{
    Expected expected;
    QMap<int, QPair<int, int>> lengths;
    int number = 0;
    int empty = 0;
    int mended = 0;
    for (const Row &row : rows) {
        if (++number <= options.ignoredRows) {
            continue;
        }
        QStringList values;
        for (const Value &value : row) {
            QString text = QString::fromUcs4(value.data(), int(value.size()));
            mended += text.contains(QChar(QChar::ReplacementCharacter));
            text = options.trim ? text.trimmed() : text;
            values.append(options.simplify ? text.simplified() : text);
        }
        if (options.ignoreEmptyRows && values.join(QString()).isEmpty()) {
            ++empty;
            continue;
        }
        QPair<int, int> &length = lengths[values.size()];
        length.second = length.first == 0 ? number : length.second;
        ++length.first;
        expected.columns = qMax(expected.columns, values.size());
        expected.rows.append(values);
    }
    for (QStringList &values : expected.rows) {
        while (values.size() < expected.columns) {
            values.append(QString());
        }
    }
    if (options.header && !expected.rows.isEmpty()) {
        expected.header = expected.rows.takeFirst();
    }
    if (empty > 0) {
        expected.information.append(QStringLiteral("%1 empty row(s) ignored").arg(empty));
    }
    if (mended > 0) {
        expected.warnings.append(
            QStringLiteral("%1 value(s) contain bytes that are not valid UTF-8; they were "
                           "replaced by '%2'.")
                .arg(QString::number(mended), QString(QChar(QChar::ReplacementCharacter))));
    }
    expected.warnings += lengthWarnings(lengths);
    return expected;
}

Expected expectedOf(const QByteArray &bytes, const InputOptions &options)
{
    const QString text = QTextCodec::codecForName("UTF-8")->toUnicode(bytes);
    const QVector<uint> ucs4 = text.toUcs4();
    const Value value(ucs4.begin(), ucs4.end());
    const char32_t delimiter = options.customDelimiter.toUcs4().first();
    return finished(options.quoting == InputQuoting::Quoted
                        ? quotedRows(value, delimiter, options.ignoreRepeatedDelimiter)
                        : unquotedRows(value, delimiter, options.ignoreRepeatedDelimiter),
                    options);
}

// --- Random texts and options ------------------------------------------------------------------

InputOptions randomOptions(QRandomGenerator *random)
{
    static const QStringList delimiters{QStringLiteral(","),
                                        QStringLiteral(","),
                                        QStringLiteral("\t"),
                                        QString::fromUtf8("\u00e9"),
                                        QString::fromUtf8("\U0001F600"),
                                        QStringLiteral(" "),
                                        QStringLiteral("\""),
                                        QStringLiteral("\n"),
                                        QStringLiteral("\r"),
                                        QString(QChar(0))};
    const auto chance = [random](int one) { return random->bounded(one) == 0; };
    InputOptions options;
    options.delimiter = Delimiter::Custom;
    options.customDelimiter = delimiters.at(random->bounded(delimiters.size()));
    options.quoting = chance(3) ? InputQuoting::Unquoted : InputQuoting::Quoted;
    options.encoding = QStringLiteral("UTF-8");
    options.ignoreRepeatedDelimiter = chance(3);
    options.trim = chance(4);
    options.simplify = chance(4);
    options.ignoreEmptyRows = chance(2);
    options.header = chance(2);
    options.ignoredRows = chance(3) ? random->bounded(4) : 0;
    return options;
}

QByteArray randomBytes(QRandomGenerator *random, const QString &delimiter)
{
    static const QList<QByteArray> alphabet{"a",
                                            "a",
                                            "bc",
                                            "\"",
                                            "\"",
                                            "\"",
                                            "\n",
                                            "\n",
                                            "\r",
                                            "\r\n",
                                            " ",
                                            "\u00e9",
                                            "\u00e8",
                                            "\U0001F600",
                                            "\u00a0",
                                            "\u2003",
                                            QByteArray("\0", 1),
                                            "x0123456789012345678901234567890"};
    static const QList<QByteArray> damage{"\xff", "\xc3", "\xe2\x82", "\xf0\x9f\x98", "\xa9"};
    const bool damaged = random->bounded(4) == 0;
    QByteArray bytes;
    for (int left = random->bounded(60); left > 0; --left) {
        const int kind = random->bounded(5);
        if (kind == 0) {
            bytes += delimiter.toUtf8();
        } else if (kind == 1 && damaged) {
            bytes += damage.at(random->bounded(damage.size()));
        } else {
            bytes += alphabet.at(random->bounded(alphabet.size()));
        }
    }
    return bytes;
}

QList<QStringList> rowsOf(const Dataset &dataset)
{
    QList<QStringList> rows;
    for (RowIndex row(0); row < RowIndex(dataset.rowCount()); ++row) {
        rows.append(QStringList());
        for (ColIndex column(0); column < dataset.columnCount(); ++column) {
            rows.last().append(dataset.cell(row, column));
        }
    }
    return rows;
}

} // namespace

class TestDelimitedParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithThePlainGrammars();
};

void TestDelimitedParser::agreesWithThePlainGrammars()
{
    QRandomGenerator random(20260131);
    for (int i = 0; i < 25000; ++i) {
        const InputOptions options = randomOptions(&random);
        const QByteArray bytes = randomBytes(&random, options.customDelimiter);
        const Expected expected = expectedOf(bytes, options);

        const int most = random.bounded(2) ? 1 + random.bounded(8) : 1 + random.bounded(200);
        const auto source =
            TextSource::fromDevice(std::make_unique<Trickle>(bytes, most), options.encoding);
        Messages messages;
        const Dataset dataset = readDelimitedText(options, QString(), source.get(), &messages,
                                                  Progress(), 16 + random.bounded(100));
        const bool same = rowsOf(dataset) == expected.rows && dataset.header() == expected.header &&
                          dataset.columnCount().value() == expected.columns &&
                          messages.information == expected.information &&
                          messages.warnings == expected.warnings && !messages.failed;
        if (!same) {
            qWarning() << "text" << bytes << "delimiter" << options.customDelimiter << "quoting"
                       << int(options.quoting) << "repeated" << options.ignoreRepeatedDelimiter
                       << "most" << most;
            qWarning() << dataset.header() << rowsOf(dataset) << messages.information
                       << messages.warnings;
            qWarning() << expected.header << expected.rows << expected.information
                       << expected.warnings;
        }
        QVERIFY2(same, qPrintable(QStringLiteral("text %1").arg(i)));
    }
}

TW_TEST_CLASS(TestDelimitedParser)
#include "tst_delimitedparser.moc"

#include "jsonreader.h"

#include "inputoptions.h"
#include "jsonparser.h"
#include "nestedrecords.h"
#include "textdecoder.h"
#include "textinput.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>
#include <algorithm>
#include <optional>

namespace {

// Reading the text takes about a quarter of the time.
constexpr double shareOfText = 0.25;
constexpr int stepsBetweenReports = 8 * progressInterval;

struct JsonReader
{
    Q_DECLARE_TR_FUNCTIONS(JsonReader)
};

/// What is at the top of the text.
enum class Top {
    /// An array, whose elements are the records, or an object that may hold just one array of
    /// objects, which are then the records.
    Document,
    /// An object that is a record itself.
    OneRecord,
    /// Nothing: each document is a record.
    Lines
};

/// Finds the records among the values of a document.
class RecordFinder final : public JsonHandler
{
public:
    RecordFinder(Top top, NestedRecords *records, const Progress &progress, double size)
        : m_top(top)
        , m_records(records)
        , m_progress(progress)
        , m_size(size)
    {
    }

    /// Where the position is read for the progress.
    void setParser(const JsonParser *parser, qint64 start)
    {
        m_parser = parser;
        m_start = start;
    }
    /// True when the document was stopped because its object is a record itself.
    bool isOneRecord() const { return m_isOneRecord; }

    bool beginObject() override
    {
        if (m_depth == 0 && m_top == Top::Document) {
            m_recordDepth = 2; // until something other than one array of objects is met
        } else if (m_depth < m_recordDepth) {
            return refuse();
        } else {
            beginValue();
            m_records->beginObject();
        }
        ++m_depth;
        return step();
    }
    bool key(std::string_view name) override
    {
        if (m_depth < m_recordDepth) {
            return ++m_outerKeys == 1 || refuse();
        }
        m_records->key(name);
        return true;
    }
    bool endObject() override
    {
        --m_depth;
        if (m_depth < m_recordDepth) {
            return m_anyRecord || refuse();
        }
        m_records->endObject();
        return endValue();
    }
    bool beginArray() override
    {
        if (m_depth == 0 && m_top == Top::Document) {
            m_recordDepth = 1;
        } else if (m_recordDepth == 2 && m_depth == 2) {
            return refuse();
        } else if (m_depth >= m_recordDepth) {
            beginValue();
            m_records->beginArray();
        }
        ++m_depth;
        return step();
    }
    bool endArray() override
    {
        --m_depth;
        if (m_depth < m_recordDepth) {
            return true;
        }
        m_records->endArray();
        return endValue();
    }
    bool value(std::string_view text) override
    {
        if (!beginScalar()) {
            return false;
        }
        m_records->value(text);
        return endValue() && step();
    }
    bool null() override
    {
        if (!beginScalar()) {
            return false;
        }
        m_records->null();
        return endValue() && step();
    }

private:
    bool refuse()
    {
        m_isOneRecord = true;
        return false;
    }
    bool beginScalar()
    {
        if (m_recordDepth == 2 && m_depth <= 2) {
            return refuse();
        }
        beginValue();
        return true;
    }
    void beginValue()
    {
        if (m_depth == m_recordDepth) {
            m_anyRecord = true;
            m_records->beginRecord();
        }
    }
    bool endValue()
    {
        if (m_depth == m_recordDepth) {
            m_records->endRecord();
        }
        return true;
    }
    bool step()
    {
        if (++m_steps % stepsBetweenReports != 0) {
            return true;
        }
        const double done = double(m_start + m_parser->position()) / m_size;
        return reportProgress(m_progress, shareOfText + (1 - shareOfText) * done);
    }

    Top m_top;
    NestedRecords *m_records;
    const Progress &m_progress;
    double m_size;
    const JsonParser *m_parser = nullptr;
    qint64 m_start = 0;
    int m_depth = 0;
    /// The number of containers around a record.
    int m_recordDepth = 0;
    int m_outerKeys = 0;
    bool m_anyRecord = false;
    bool m_isOneRecord = false;
    qint64 m_steps = 0;
};

/// One attempt to read the text.
struct Attempt
{
    JsonParser::Outcome outcome = JsonParser::Outcome::Done;
    bool isOneRecord = false;
    QJsonParseError::ParseError errorCode = QJsonParseError::NoError;
    QString errorText;
    qint64 offset = 0;
    qint64 line = 0;
    Dataset dataset;
};

void setFailure(const JsonParser &parser, Attempt *attempt)
{
    attempt->errorCode = parser.errorCode();
    attempt->errorText = parser.errorText();
    attempt->offset = parser.position();
}

class TextReader
{
public:
    TextReader(const InputOptions &options, std::string_view text, Messages *messages,
               const Progress &progress)
        : m_options(options)
        , m_text(text)
        , m_messages(messages)
        , m_progress(progress)
    {
    }

    Attempt readDocument(Top top)
    {
        NestedRecords records = makeRecords();
        RecordFinder finder(top, &records, m_progress, double(m_text.size()));
        JsonParser parser(m_text, &finder, records.texts());
        finder.setParser(&parser, 0);
        Attempt attempt;
        attempt.outcome = parser.parse();
        attempt.isOneRecord = finder.isOneRecord();
        setFailure(parser, &attempt);
        finish(&records, &attempt);
        return attempt;
    }

    Attempt readLines()
    {
        NestedRecords records = makeRecords();
        RecordFinder finder(Top::Lines, &records, m_progress, double(m_text.size()));
        Attempt attempt;
        for (size_t at = 0; at < m_text.size() && attempt.outcome == JsonParser::Outcome::Done;) {
            const size_t end = std::min(m_text.find('\n', at), m_text.size());
            const std::string_view line = bare(m_text.substr(at, end - at));
            ++attempt.line;
            if (!line.empty()) {
                JsonParser parser(line, &finder, records.texts());
                finder.setParser(&parser, qint64(at));
                attempt.outcome = parser.parse();
                setFailure(parser, &attempt);
            }
            at = end + 1;
        }
        finish(&records, &attempt);
        return attempt;
    }

private:
    NestedRecords makeRecords() const { return NestedRecords(m_options, JsonReader::tr("Value")); }

    static std::string_view bare(std::string_view line)
    {
        line = Utf8::trimmed(line);
        const std::string_view mark = "\xef\xbb\xbf";
        return line.substr(0, mark.size()) == mark ? line.substr(mark.size()) : line;
    }

    void finish(NestedRecords *records, Attempt *attempt)
    {
        if (attempt->outcome != JsonParser::Outcome::Done) {
            return;
        }
        attempt->dataset = records->finish(m_messages);
        if (records->droppedValues() > 0) {
            m_messages->warn(JsonReader::tr("%1 value(s) dropped because their key occurs again in "
                                            "the same object; the last value counts.")
                                 .arg(Texts::count(records->droppedValues())));
        }
    }

    const InputOptions &m_options;
    std::string_view m_text;
    Messages *m_messages;
    const Progress &m_progress;
};

class OneValue final : public JsonHandler
{
public:
    bool beginObject() override { return false; }
    bool key(std::string_view) override { return false; }
    bool endObject() override { return false; }
    bool beginArray() override { return ++m_arrays == 1; }
    bool endArray() override { return true; }
    bool value(std::string_view) override { return ++m_values == 1; }
    bool null() override { return ++m_values == 1; }

private:
    int m_arrays = 0;
    int m_values = 0;
};

/// True for a text that is a number, a string, true, false or null and nothing more.
bool isPlainValue(std::string_view text)
{
    OneValue handler;
    TextArena texts;
    const char first = Utf8::trimmed(text).front();
    if (first == '[' || first == '{') {
        return false;
    }
    const std::string element = '[' + std::string(text) + ']';
    return JsonParser(element, &handler, &texts).parse() == JsonParser::Outcome::Done;
}

bool mayBeLines(const Attempt &attempt)
{
    return attempt.errorCode == QJsonParseError::GarbageAtEnd ||
           attempt.errorCode == QJsonParseError::IllegalValue;
}

QString failureText(const Attempt &attempt)
{
    if (attempt.line > 0) {
        return JsonReader::tr("Error parsing JSON lines: at line %1 offset %2: %3.")
            .arg(QString::number(attempt.line), QString::number(attempt.offset), attempt.errorText);
    }
    return JsonReader::tr("Error parsing JSON: %1").arg(attempt.errorText) +
           JsonReader::tr(" at offset %1").arg(QString::number(attempt.offset)) + QLatin1Char('.');
}

} // namespace

Dataset readJson(const InputOptions &options, const QString &path, TextSource *source,
                 Messages *messages, const Progress &progress)
{
    const std::optional<std::string> text =
        readWholeText(path, source, messages, progress, shareOfText);
    if (!text || Utf8::trimmed(*text).empty()) {
        return {};
    }
    TextReader reader(options, *text, messages, progress);
    Attempt attempt = reader.readDocument(Top::Document);
    if (attempt.outcome == JsonParser::Outcome::Stopped && attempt.isOneRecord) {
        attempt = reader.readDocument(Top::OneRecord);
    }
    if (attempt.outcome == JsonParser::Outcome::Failed && mayBeLines(attempt)) {
        if (isPlainValue(*text)) {
            messages->fail(JsonReader::tr("Array or object expected at top-level in JSON"));
            return {};
        }
        attempt = reader.readLines();
    }
    if (attempt.outcome == JsonParser::Outcome::Failed) {
        messages->fail(failureText(attempt));
    }
    return attempt.dataset;
}

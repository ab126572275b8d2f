#include "jsonreader.h"

#include "inputoptions.h"
#include "jsonarraystream.h"
#include "jsonparser.h"
#include "jsonrecordfinder.h"
#include "nestedrecords.h"
#include "textdecoder.h"
#include "textinput.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstring>
#include <memory>
#include <optional>

namespace {

// Reading the text takes about a quarter of the time.
constexpr double shareOfText = 0.25;
// Smaller files are read whole.
constexpr qint64 leastStreamed = qint64(16) << 20;

struct JsonReader
{
    Q_DECLARE_TR_FUNCTIONS(JsonReader)
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

std::unique_ptr<NestedRecords> makeRecords(const InputOptions &options)
{
    return std::make_unique<NestedRecords>(options, JsonReader::tr("Value"));
}

void tellDropped(const NestedRecords &records, Messages *messages)
{
    if (records.droppedValues() > 0) {
        messages->warn(JsonReader::tr("%1 value(s) dropped because their key occurs again in the "
                                      "same object; the last value counts.")
                           .arg(Texts::count(records.droppedValues())));
    }
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
        const std::unique_ptr<NestedRecords> records = makeRecords(m_options);
        RecordFinder finder(top, records.get(), m_progress, double(m_text.size()), shareOfText);
        JsonParser parser(m_text, &finder, records->texts());
        finder.setParser(&parser, 0);
        Attempt attempt;
        attempt.outcome = parser.parse();
        attempt.isOneRecord = finder.isOneRecord();
        setFailure(parser, &attempt);
        finish(records.get(), &attempt);
        return attempt;
    }

    Attempt readLines()
    {
        const std::unique_ptr<NestedRecords> records = makeRecords(m_options);
        RecordFinder finder(Top::Lines, records.get(), m_progress, double(m_text.size()),
                            shareOfText);
        Attempt attempt;
        for (size_t at = 0; at < m_text.size() && attempt.outcome == JsonParser::Outcome::Done;) {
            const size_t end = std::min(m_text.find('\n', at), m_text.size());
            const std::string_view line = bare(m_text.substr(at, end - at));
            ++attempt.line;
            if (!line.empty()) {
                JsonParser parser(line, &finder, records->texts());
                finder.setParser(&parser, qint64(at));
                attempt.outcome = parser.parse();
                setFailure(parser, &attempt);
            }
            at = end + 1;
        }
        finish(records.get(), &attempt);
        return attempt;
    }

private:
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
        tellDropped(*records, m_messages);
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
    std::unique_ptr<TextSource> again;
    if (source->size() >= leastStreamed && options.medium == Medium::File) {
        JsonArrayStream stream(source, makeRecords(options), progress);
        const JsonArrayStream::End end = stream.read();
        if (end == JsonArrayStream::End::Stopped) {
            return {};
        }
        if (end == JsonArrayStream::End::Read) {
            Dataset dataset = stream.records()->finish(messages);
            tellDropped(*stream.records(), messages);
            return dataset;
        }
        QString error;
        again = TextSource::fromFile(path, options.encoding, &error);
        if (!again) {
            messages->fail(unreadableText(path, error));
            return {};
        }
        source = again.get();
    }
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

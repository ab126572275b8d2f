#include "recordformat.h"

#include "cellblocks.h"
#include "messages.h"
#include "outputoptions.h"
#include "textencoder.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>
#include <QHash>
#include <QSet>
#include <cstring>

namespace {

// Longer values do not gain from being copied while they are looked at.
constexpr size_t longestPlain = 4096;
constexpr char surrogateLead = char(0xed);
enum Judgement : quint8 { Unknown, IsPlain, IsSpecial };

QString translated(const char *text)
{
    return QCoreApplication::translate("RecordFormat", text);
}

char *put(char *at, const std::string &bytes)
{
    memcpy(at, bytes.data(), bytes.size());
    return at + bytes.size();
}

} // namespace

RecordFormat::RecordFormat(const TextJob &job)
    : TextFormat(job)
    , m_plainLimit(job.out->codec().holdsAscii() ? longestPlain : 0)
    , m_lineEnd(Utf8::encoded(lineEndingText(job.options.lineEnding)))
{
    const OutputCodec &codec = job.out->codec();
    if (codec.isUnicode()) {
        m_special.add(surrogateLead);
        m_watched[uchar(surrogateLead)] = true;
    } else {
        m_special.addNonAscii();
        std::fill(m_watched.begin() + (codec.holdsAscii() ? 0x80 : 0), m_watched.end(), true);
        m_special.add(surrogateLead);
    }
}

void RecordFormat::watchFor(const char *characters)
{
    for (; *characters; ++characters) {
        m_special.add(*characters);
        m_watched[uchar(*characters)] = true;
    }
}

void RecordFormat::watchForControls()
{
    m_special.addControls();
    std::fill(m_watched.begin(), m_watched.begin() + 0x20, true);
}

void RecordFormat::watchInEscapes(const char *characters)
{
    for (; *characters; ++characters) {
        m_watched[uchar(*characters)] = true;
    }
}

bool RecordFormat::isPlain(int, std::string_view)
{
    return true;
}

void RecordFormat::format(int, std::string_view value, std::string *out)
{
    escape(value, out);
}

void RecordFormat::escape(std::string_view value, std::string *out)
{
    size_t done = 0;
    for (size_t at = 0; at < value.size();) {
        if (!m_watched[uchar(value[at])]) {
            ++at;
            continue;
        }
        out->append(value.substr(done, at - done));
        done = at;
        const uint c = Utf8::nextCodePoint(value, &at);
        if (escapeCharacter(c, out)) {
            done = at;
        } else if (!this->out()->codec().holds(c)) {
            escapeUnencodable(c, out);
            done = at;
        }
    }
    out->append(value.substr(done));
}

void RecordFormat::escapeUnencodable(uint, std::string *out)
{
    out->push_back('?');
    m_hasLost = true;
}

std::string RecordFormat::escaped(const QString &text)
{
    std::string escapedText;
    escape(Utf8::encoded(text), &escapedText);
    endValue();
    return escapedText;
}

std::string RecordFormat::encodable(const QString &text)
{
    const std::string bytes = Utf8::encoded(text);
    std::string clean;
    if (out()->replaceUnencodable(bytes, &clean)) {
        m_hasLost = true;
        endValue();
        return clean;
    }
    return bytes;
}

void RecordFormat::replaceCharacter(uint codePoint, std::string *out)
{
    if (m_replacedValues == 0 && !m_hasReplaced) {
        m_firstReplaced = codePoint;
    }
    m_hasReplaced = true;
    if (this->out()->codec().holds(QChar::ReplacementCharacter)) {
        Utf8::encode(QString(QChar(QChar::ReplacementCharacter)), out);
    } else {
        escapeUnencodable(QChar::ReplacementCharacter, out);
    }
}

std::string RecordFormat::cleanComment(const QString &text, bool (*isAllowed)(uint codePoint))
{
    const std::string bytes = Utf8::encoded(text);
    std::string clean;
    for (size_t at = 0; at < bytes.size();) {
        const size_t start = at;
        const uint c = Utf8::nextCodePoint(bytes, &at);
        if (!isAllowed(c)) {
            replaceCharacter(c, &clean);
        } else {
            clean.append(bytes, start, at - start);
        }
    }
    endValue();
    return encodable(Utf8::decoded(clean));
}

void RecordFormat::useRealLineEnds()
{
    if (options().lineEnding == LineEnding::RecordSeparator) {
        m_lineEnd = "\n";
        m_replacesLineEnds = true;
    }
}

void RecordFormat::write(std::string_view bytes)
{
    out()->append(bytes);
}

void RecordFormat::writeLine(std::string_view line)
{
    out()->append(line);
    out()->append(m_lineEnd);
}

void RecordFormat::endValue()
{
    m_lostValues += m_hasLost ? 1 : 0;
    m_hasLost = false;
    m_replacedValues += m_hasReplaced ? 1 : 0;
    m_hasReplaced = false;
}

QStringList RecordFormat::uniqueNames(Messages *messages) const
{
    QStringList names = dataset().columnNames();
    QSet<QString> used(names.begin(), names.end());
    if (used.size() == names.size()) {
        return names;
    }
    QHash<QString, int> numbers;
    QSet<QString> seen;
    int repeated = 0;
    QString example;
    for (QString &name : names) {
        if (!seen.contains(name)) {
            seen.insert(name);
            continue;
        }
        int &number = numbers[name];
        number = qMax(number, 1);
        QString unique;
        do {
            ++number;
            unique = name + QLatin1Char('_') + QString::number(number);
        } while (used.contains(unique));
        used.insert(unique);
        seen.insert(unique);
        name = unique;
        example = repeated == 0 ? name : example;
        ++repeated;
    }
    if (messages) {
        warnOnce(messages,
                 translated(QT_TRANSLATE_NOOP("RecordFormat",
                                              "%1 column name(s) are repeated. They are written "
                                              "with a number, as in '%2'."))
                     .arg(Texts::count(repeated), example));
    }
    return names;
}

bool RecordFormat::addRows(const Progress &progress)
{
    const int columns = dataset().columnCount().value();
    const int rows = dataset().rowCount();
    for (int column = 0; column < columns && rows > 0; ++column) {
        if (m_fields[size_t(column)].plain == Plain::ByValue) {
            const ColumnReader reader = dataset().columnReader(ColIndex(column));
            // A few rows of a large table must not cost what the whole table costs.
            const bool remembers = reader.isPooled() && reader.codeCount() / 2 <= uint(rows);
            m_judged.push_back(
                {column, reader, std::vector<quint8>(remembers ? reader.codeCount() : 0)});
        }
    }
    if (columns == 0) {
        return addEmptyRows(progress);
    }
    const auto writeBlock = [&](const std::string_view *cells, int firstRow, int rowCount) {
        if (!m_judged.empty()) {
            m_isPlain.resize(size_t(rowCount) * size_t(columns));
            judge(firstRow, rowCount);
        }
        for (int i = 0; i < rowCount; ++i, cells += columns) {
            addRow(cells, m_judged.empty() ? nullptr : &m_isPlain[size_t(i) * size_t(columns)]);
        }
        return !out()->hasFailed();
    };
    return forEachCellBlock(dataset(), progress, writeBlock) && !out()->hasFailed();
}

/// Rows of a table that has lost all its columns.
bool RecordFormat::addEmptyRows(const Progress &progress)
{
    const int rows = dataset().rowCount();
    for (int row = 0; row < rows && !out()->hasFailed(); ++row) {
        if (row % progressInterval == 0 && !reportProgress(progress, double(row) / rows)) {
            return false;
        }
        addRow(nullptr, nullptr);
    }
    return !out()->hasFailed();
}

void RecordFormat::judge(int firstRow, int rowCount)
{
    const size_t columns = m_fields.size();
    for (Judged &judged : m_judged) {
        quint8 *isPlainAt = &m_isPlain[size_t(judged.column)];
        for (int i = 0; i < rowCount; ++i, isPlainAt += columns) {
            const ColumnReader::Code code = judged.reader.code(firstRow + i);
            quint8 unremembered = Unknown;
            quint8 &known = judged.known.empty() ? unremembered : judged.known[code];
            if (known == Unknown) {
                const bool plain = isPlain(judged.column, judged.reader.utf8OfCode(code));
                known = plain ? IsPlain : IsSpecial;
            }
            *isPlainAt = known == IsPlain;
        }
    }
}

void RecordFormat::addRow(const std::string_view *cells, const quint8 *isPlain)
{
    write(m_hasRows ? m_frame.nextRow : m_frame.firstRow);
    m_hasRows = true;
    bool hasFields = false;
    const int columns = int(m_fields.size());
    for (int column = 0; column < columns; ++column) {
        const std::string_view value = cells[column];
        if (!value.empty()) {
            addField(column, value, hasFields, isPlain && isPlain[column]);
        } else if (m_frame.omitsEmpty) {
            continue;
        } else {
            if (hasFields) {
                write(m_frame.separator);
            }
            write(m_fields[size_t(column)].empty);
        }
        hasFields = true;
    }
    write(hasFields ? m_frame.fieldsEnd : m_frame.noFields);
    write(m_frame.rowEnd);
}

inline void RecordFormat::addField(int column, std::string_view value, bool withSeparator,
                                   bool isPlain)
{
    const Field &field = m_fields[size_t(column)];
    const size_t around = field.before.size() + field.after.size() + m_frame.separator.size();
    if (value.size() <= m_plainLimit && around <= longestPlain) {
        char *at = out()->room(value.size() + around);
        if (withSeparator) {
            at = put(at, m_frame.separator);
        }
        at = put(at, field.before);
        bool done = field.plain == Plain::Always || (field.plain == Plain::ByValue && isPlain);
        if (done) {
            memcpy(at, value.data(), value.size());
        } else if (field.plain == Plain::ByBytes) {
            done = m_special.copyWithout(value.data(), value.size(), at);
        }
        if (done) {
            out()->setEnd(put(at + value.size(), field.after));
            return;
        }
    }
    m_text.clear();
    if (field.plain == Plain::Always || (field.plain == Plain::ByValue && isPlain)) {
        m_text.append(value);
    } else {
        format(column, value, &m_text);
        endValue();
    }
    if (withSeparator) {
        write(m_frame.separator);
    }
    write(field.before);
    write(m_text);
    write(field.after);
}

void RecordFormat::tell(Messages *messages) const
{
    if (m_replacesLineEnds) {
        warnOnce(messages,
                 translated(QT_TRANSLATE_NOOP("RecordFormat",
                                              "'%1' does not end a line of %2, '%3' is used."))
                     .arg(lineEndingLabel(LineEnding::RecordSeparator, true),
                          fileTypeLabel(options().fileType),
                          lineEndingLabel(LineEnding::Unix, true)));
    }
    if (m_replacedValues > 0) {
        messages->warn(
            translated(QT_TRANSLATE_NOOP("RecordFormat",
                                         "%1 value(s) contain characters that %2 does not allow, "
                                         "the first of them is U+%3. They are written as U+FFFD."))
                .arg(Texts::count(m_replacedValues), fileTypeLabel(options().fileType),
                     QString::number(m_firstReplaced, 16)
                         .toUpper()
                         .rightJustified(4, QLatin1Char('0'))));
    }
    warnOfUnencodable(m_lostValues, out()->codec(), messages);
}

void warnOfUnencodable(qint64 values, const OutputCodec &codec, Messages *messages)
{
    if (values > 0) {
        messages->warn(
            translated(
                QT_TRANSLATE_NOOP("RecordFormat",
                                  "%1 value(s) contain characters that encoding '%2' cannot hold."))
                .arg(Texts::count(values), codec.name()));
    }
}

void warnOnce(Messages *messages, const QString &text)
{
    if (!messages->warnings.contains(text)) {
        messages->warn(text);
    }
}

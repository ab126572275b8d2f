#include "delimitedwriter.h"

#include "dataset.h"
#include "messages.h"
#include "outputoptions.h"
#include "recordformat.h"
#include "textencoder.h"
#include "texts.h"

#include <QCoreApplication>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("DelimitedWriter", text);
}

DelimitedFormat formatOf(const OutputOptions &options)
{
    DelimitedFormat format;
    format.delimiter = delimiterText(options.delimiter, options.customDelimiter);
    format.lineEnding = lineEndingText(options.lineEnding);
    format.quoting = options.quoting;
    return format;
}

} // namespace

DelimitedWriter::DelimitedWriter(const TextJob &job)
    : TextFormat(job)
    , m_format(formatOf(job.options))
    , m_lines(m_format, job.out)
{
}

QString DelimitedWriter::syntax() const
{
    return QString();
}

bool DelimitedWriter::check(Messages *messages) const
{
    const OutputCodec &codec = out()->codec();
    if (!codec.holds(m_format.delimiter)) {
        messages->fail(
            translated(
                QT_TRANSLATE_NOOP("DelimitedWriter",
                                  "Encoding '%1' cannot hold the delimiter '%2', nothing written."))
                .arg(codec.name(), m_format.delimiter));
        return false;
    }
    if (!codec.holds(m_format.lineEnding + QLatin1Char('"'))) {
        messages->fail(translated(QT_TRANSLATE_NOOP("DelimitedWriter",
                                                    "Encoding '%1' cannot hold the line endings "
                                                    "'%2', nothing written."))
                           .arg(codec.name(), lineEndingLabel(options().lineEnding, true)));
        return false;
    }
    return true;
}

void DelimitedWriter::begin(bool withHeader)
{
    if (withHeader) {
        m_lines.addHeader(dataset().header());
    }
}

void DelimitedWriter::resume(bool withHeader)
{
    begin(withHeader);
}

bool DelimitedWriter::addRows(const Progress &progress)
{
    return m_lines.addRows(dataset(), progress);
}

void DelimitedWriter::tell(Messages *messages) const
{
    if (m_lines.replacedValues() > 0) {
        messages->warn(
            translated(
                QT_TRANSLATE_NOOP(
                    "DelimitedWriter",
                    "Delimiter, Line Feed or Carriage Return characters were found within %1 "
                    "unquoted "
                    "data value(s). These have been replaced with '%2'. You may want to use a "
                    "'Replace' transform to replace these characters or output the file with "
                    "'Quoting' set to '%3'."))
                .arg(Texts::count(m_lines.replacedValues()), QString(m_lines.replacement()),
                     outputQuotingLabel(OutputQuoting::AsNeeded)));
    }
    warnOfUnencodable(m_lines.unencodableValues(), out()->codec(), messages);
    if (m_lines.formulaValues() > 0) {
        messages->note(
            translated(QT_TRANSLATE_NOOP("DelimitedWriter", "%1 value(s) start like a formula."))
                .arg(Texts::count(m_lines.formulaValues())));
    }
}

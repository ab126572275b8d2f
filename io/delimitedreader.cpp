#include "delimitedreader.h"

#include "inputoptions.h"
#include "rowcollector.h"
#include "textdecoder.h"
#include "textinput.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>
#include <QStringView>
#include <algorithm>

namespace {

constexpr int sampleCharacters = 4096;
// UTF-8 that holds the sample: a UTF-16 unit takes three bytes at most.
constexpr qint64 sampleBytes = 3 * sampleCharacters + 4;

struct DelimitedReader
{
    Q_DECLARE_TR_FUNCTIONS(DelimitedReader)
};

QString startOfText(DelimitedParser *parser, const TextSource &source)
{
    const std::string_view bytes = parser->sample(sampleBytes).substr(0, size_t(sampleBytes));
    return Utf8::decoded(source.mended(bytes).value_or(std::string(bytes)));
}

/// The delimiter in use, guessed when the options leave it open.
QString chooseDelimiter(const InputOptions &options, const TextSource &source,
                        DelimitedParser *parser, Messages *messages)
{
    if (options.delimiter != Delimiter::Automatic) {
        return delimiterText(options.delimiter, options.customDelimiter);
    }
    const DelimiterGuess guess = guessDelimiter(startOfText(parser, source));
    if (parser->ending() == DelimitedParser::Ending::None) {
        messages->note(guess.note);
    }
    return delimiterText(guess.delimiter, QString());
}

DelimitedParser::Grammar chooseGrammar(const InputOptions &options, const QString &delimiter,
                                       Messages *messages)
{
    InputQuoting quoting = options.quoting;
    if (quoting != InputQuoting::Quoted && quoting != InputQuoting::Unquoted) {
        quoting = delimiter == QLatin1String("\t") ? InputQuoting::Unquoted : InputQuoting::Quoted;
        messages->note(
            DelimitedReader::tr("Quoting=Automatic guesses '%1'. Set 'Quoting' option to change.\n")
                .arg(inputQuotingLabel(quoting)));
    }
    return quoting == InputQuoting::Unquoted ? DelimitedParser::Grammar::Unquoted
                                             : DelimitedParser::Grammar::Quoted;
}

} // namespace

DelimiterGuess guessDelimiter(const QString &start)
{
    const QStringView sample = QStringView(start).left(sampleCharacters);
    DelimiterGuess guess;
    std::ptrdiff_t largest = -1;
    QStringList counts;
    for (const Delimiter candidate : delimiters(false, false, false)) {
        const QChar character = delimiterCharacter(candidate, QString());
        const auto count = std::count(sample.begin(), sample.end(), character);
        if (count > largest) {
            largest = count;
            guess.delimiter = candidate;
        }
        counts.append(
            DelimitedReader::tr("%1 %2").arg(Texts::count(count), delimiterLabel(candidate)));
    }
    guess.note =
        DelimitedReader::tr("Delimiter=Automatic guesses '%1'. Set 'Delimiter' option to change.\n")
            .arg(delimiterLabel(guess.delimiter)) +
        DelimitedReader::tr("First %1 characters contain: %2\n")
            .arg(Texts::count(sample.size()), counts.join(QLatin1String(", ")));
    return guess;
}

Dataset readDelimitedText(const InputOptions &options, const QString &path, TextSource *source,
                          Messages *messages, const Progress &progress, qint64 blockSize)
{
    noteEncoding(options, *source, messages);
    DelimitedParser parser(source, progress, blockSize);
    const QString delimiter = chooseDelimiter(options, *source, &parser, messages);
    parser.setGrammar(chooseGrammar(options, delimiter, messages), delimiter,
                      options.ignoreRepeatedDelimiter);

    RowCollector collector(options, source);
    while (parser.next()) {
        const CutRow row = parser.row();
        collector.add(row.values, row.count, row.clean);
    }
    return tellEnding(parser.ending(), path, *source, messages) ? collector.finish(messages)
                                                                : Dataset();
}

#include "termclipboard.h"

#include "comparison.h"

#include <QCoreApplication>
#include <optional>

namespace {

const QChar quote = QLatin1Char('"');
const QChar tab = QLatin1Char('\t');

QString translated(const char *text)
{
    return QCoreApplication::translate("TermClipboard", text);
}

QString anyColumn()
{
    return QCoreApplication::translate("ParameterColumns", "<Any>");
}

QString quoted(QString field)
{
    const bool isPlain = std::none_of(field.begin(), field.end(), [](QChar c) {
        return c == quote || c == tab || c == QLatin1Char('\n') || c == QLatin1Char('\r');
    });
    return isPlain ? field : quote + field.replace(quote, QStringLiteral("\"\"")) + quote;
}

/// The fields of each line that is not empty.
QList<QStringList> fieldsOf(const QString &text)
{
    QList<QStringList> lines;
    QStringList fields{QString()};
    bool isQuoted = false;
    const auto endLine = [&] {
        if (fields.size() > 1 || !fields.first().isEmpty()) {
            lines.append(fields);
        }
        fields = QStringList{QString()};
    };
    for (int i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == quote && isQuoted && i + 1 < text.size() && text[i + 1] == quote) {
            fields.last() += quote;
            ++i;
        } else if (c == quote && (isQuoted || fields.last().isEmpty())) {
            isQuoted = !isQuoted;
        } else if (!isQuoted && c == tab) {
            fields.append(QString());
        } else if (!isQuoted && (c == QLatin1Char('\n') || c == QLatin1Char('\r'))) {
            endLine();
        } else {
            fields.last() += c;
        }
    }
    endLine();
    return lines;
}

std::optional<ComparisonOperator> operatorOf(const QString &text)
{
    for (int i = 0; i < Comparison::operatorCount; ++i) {
        const ComparisonOperator op = Comparison::fromNumber(i);
        if (text == Comparison::symbol(op) || text == Comparison::label(op)) {
            return op;
        }
    }
    return std::nullopt;
}

std::optional<FilterTerm> termOf(const QStringList &fields, const FilterTerm &pattern)
{
    if (fields.size() == 1) {
        return FilterTerm{pattern.column, pattern.op, fields[0]};
    }
    const QString column = fields[0] == anyColumn() ? QString() : fields[0];
    const auto op = operatorOf(fields[1]);
    if (fields.size() == 2) {
        return op && !Comparison::takesValue(*op)
                   ? FilterTerm{column, *op, {}}
                   : FilterTerm{column, ComparisonOperator::Equal, fields[1]};
    }
    if (!op || fields.size() > 3) {
        return std::nullopt;
    }
    return FilterTerm{column, *op, fields[2]};
}

} // namespace

QString TermClipboard::write(const QList<FilterTerm> &terms)
{
    QString text;
    for (const FilterTerm &term : terms) {
        const QString column = term.column.isEmpty() ? anyColumn() : term.column;
        text += quoted(column) + tab + Comparison::symbol(term.op) + tab + quoted(term.value) +
                QLatin1Char('\n');
    }
    return text;
}

QList<FilterTerm> TermClipboard::read(const QString &text, const FilterTerm &pattern)
{
    QList<FilterTerm> terms;
    const QList<QStringList> lines = fieldsOf(text);
    for (const QStringList &fields : lines) {
        if (const auto term = termOf(fields, pattern)) {
            terms.append(*term);
        }
    }
    return terms;
}

QString TermClipboard::help()
{
    return translated(
        "Terms are pasted from lines of text, as they are copied from here or from a spreadsheet, "
        "with tabs between the parts of a line.\n\n"
        "Column, operator and value: one term, for example Price, >= and 10. The operator is its "
        "sign; <Any> stands for any column.\n"
        "Column and value: the column has to be equal to the value.\n"
        "Only a value: for the column and the operator of the current term; without one, any "
        "column has to be equal to it.\n\n"
        "A part with a tab, a line end or a quote in it stands in quotes. Lines of other shapes "
        "are "
        "left out.");
}

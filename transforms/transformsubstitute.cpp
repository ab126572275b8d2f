#include "transformsubstitute.h"

#include "columnvariables.h"
#include "newcolumns.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <QUrl>
#include <algorithm>

namespace {

enum class Escape { Nothing, Html, Xml, Url, Json, Csv, Sql };

struct Options
{
    const TransformOption<QString> text{
        ParameterType::LongText, "Text", QT_TRANSLATE_NOOP("Transform", "Text"),
        QT_TRANSLATE_NOOP("Transform",
                          "The text of the new column. $(2) stands for the value of the second "
                          "column in the same row, $(Name) for that of the column 'Name'.")};
    const TransformOption<int> escape =
        TransformOption<int>(
            ParameterType::Selection, "Escape", QT_TRANSLATE_NOOP("Transform", "Escape values for"),
            QT_TRANSLATE_NOOP("Transform",
                              "How the values that are put in, but not the text around them, are "
                              "escaped.\n\n"
                              "Nothing: as they are\n"
                              "HTML: &, <, > and quotes as character references\n"
                              "XML: the same in the form that XML prescribes\n"
                              "URL: all but letters, digits and -._~ as % and two hex digits\n"
                              "JSON: as inside the quotes of a JSON string\n"
                              "CSV: in quotes if they hold a comma, a quote or a line end\n"
                              "SQL: single quotes doubled"))
            .choices({"Nothing", "HTML", "XML", "URL", "JSON", "CSV", "SQL"});
    const TransformOption<QString> newName{
        ParameterType::Text, "New_Name", QT_TRANSLATE_NOOP("Transform", "New column name"),
        QT_TRANSLATE_NOOP("Transform", "The name of the new column."),
        QStringLiteral("Substitute")};
    const TransformOption<bool> emptyIfMissing{
        ParameterType::Bool, "Empty_If_Missing",
        QT_TRANSLATE_NOOP("Transform", "leave empty if a value is empty"),
        QT_TRANSLATE_NOOP("Transform", "Check to get an empty cell, instead of a text with a gap, "
                                       "in rows where one of the values put in is empty."),
        false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

QString escapedMarkup(const QString &value, const QString &apostrophe)
{
    return value.toHtmlEscaped().replace(QLatin1Char('\''), apostrophe);
}

QString escapedJson(const QString &value)
{
    QString result;
    for (const QChar c : value) {
        const ushort unit = c.unicode();
        if (unit == '"' || unit == '\\') {
            result += QLatin1Char('\\');
            result += c;
        } else if (unit == '\n') {
            result += QLatin1String("\\n");
        } else if (unit == '\r') {
            result += QLatin1String("\\r");
        } else if (unit == '\t') {
            result += QLatin1String("\\t");
        } else if (unit < 0x20) {
            result += QStringLiteral("\\u%1").arg(unit, 4, 16, QLatin1Char('0'));
        } else {
            result += c;
        }
    }
    return result;
}

QString doubled(const QString &value, QChar quote)
{
    return QString(value).replace(quote, QString(2, quote));
}

QString escapedCsv(const QString &value)
{
    const bool needsQuotes = std::any_of(value.begin(), value.end(), [](QChar c) {
        return c == QLatin1Char(',') || c == QLatin1Char('"') || c == QLatin1Char('\n') ||
               c == QLatin1Char('\r');
    });
    const QChar quote = QLatin1Char('"');
    return needsQuotes ? quote + doubled(value, quote) + quote : value;
}

QString escaped(const QString &value, Escape escape)
{
    switch (escape) {
    case Escape::Nothing:
        break;
    case Escape::Html:
        return escapedMarkup(value, QStringLiteral("&#39;"));
    case Escape::Xml:
        return escapedMarkup(value, QStringLiteral("&apos;"));
    case Escape::Url:
        return QString::fromLatin1(QUrl::toPercentEncoding(value));
    case Escape::Json:
        return escapedJson(value);
    case Escape::Csv:
        return escapedCsv(value);
    case Escape::Sql:
        return doubled(value, QLatin1Char('\''));
    }
    return value;
}

constexpr TransformFacts substituteFacts =
    TransformFacts(59, "TransformSubstitute", "Substitute", "Substitute", TransformCategory::Other,
                   QT_TRANSLATE_NOOP("Transform", "Substitute column values into text."))
        .words("template variables text")
        .with(TransformFacts::Advanced);

} // namespace

struct TransformSubstitute::Settings
{
    QString text;
    int escape = 0;
    QString newName;
    bool emptyIfMissing = false;
};

TransformSubstitute::TransformSubstitute()
    : Transform(substituteFacts)
{
}

std::unique_ptr<Transform> TransformSubstitute::clone() const
{
    return cloned(*this);
}

void TransformSubstitute::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().text.create());
    append(options().escape.create());
    append(options().newName.create());
    append(options().emptyIfMissing.create());
}

Dataset TransformSubstitute::execute(const QList<Dataset> &inputs)
{
    Settings settings;
    if (inputs.size() != 1 || !options().text.read(*this, &settings.text) ||
        !options().escape.read(*this, &settings.escape) ||
        !options().newName.read(*this, &settings.newName) ||
        !options().emptyIfMissing.read(*this, &settings.emptyIfMissing)) {
        return {};
    }
    const Dataset &input = inputs.first();
    const ColumnTemplate text(settings.text, input);
    const QStringList unknown = text.unknownVariables();
    for (const QString &variable : unknown) {
        messages().warn(tr("Column variable '%1' not found.").arg(variable));
    }
    Dataset output = input;
    const ColIndex column =
        NewColumns::append(&output, settings.newName, QStringLiteral("Substitute"));
    if (!fill(text, settings, column, &output)) {
        return {};
    }
    setStatus(Texts::columnsAdded(1));
    return output;
}

bool TransformSubstitute::fill(const ColumnTemplate &text, const Settings &settings,
                               ColIndex column, Dataset *output)
{
    const int rowCount = output->rowCount();
    const auto escape = Escape(settings.escape);
    const auto changed = [escape](const QString &value) { return escaped(value, escape); };
    for (int row = 0; row < rowCount; ++row) {
        if (!reportRow(row, rowCount)) {
            return false;
        }
        if (settings.emptyIfMissing && text.hasEmptyValue(row)) {
            continue;
        }
        output->setCell(RowIndex(row), column,
                        escape == Escape::Nothing ? text.expanded(row)
                                                  : text.expanded(row, changed));
    }
    return true;
}

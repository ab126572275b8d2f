#include "transformreplacemulti.h"

#include "parametervalues.h"
#include "textreplacer.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

#include <algorithm>

namespace {

struct Options
{
    const TransformOption<QList<ColIndex>> columns{
        ParameterType::MultipleColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "Columns"),
        QT_TRANSLATE_NOOP("Transform", "The columns in which texts are replaced.")};
    const TransformOption<QList<ReplaceTerm>> terms{
        ParameterType::ReplaceTerms, "Terms", QT_TRANSLATE_NOOP("Transform", "Replace"),
        QT_TRANSLATE_NOOP(
            "Transform",
            "What is replaced by what. The terms act from top to bottom, each on the result of the "
            "one before, wherever the text stands. A replacement may hold column variables such as "
            "$(2) or $(Name).\n\n"
            "Text: the text, also inside words\n"
            "Whole word: the text where no letter, digit or underscore is next to it\n"
            "Whole cell: cells that are just this text; nothing to find stands for empty cells\n"
            "Regex: a regular expression; \\0 in the replacement is the match, \\1 to \\9 are its "
            "groups, \\t and \\n a tab and a line end")};
    const TransformOption<bool> caseSensitive{
        ParameterType::Bool, "Case_Sensitive", QT_TRANSLATE_NOOP("Transform", "case sensitive"),
        QT_TRANSLATE_NOOP("Transform", "Check to tell capitals from small letters."), true};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

QString replacedByAll(std::vector<TextReplacer> *replacers, const QString &text, int row)
{
    QString result = text;
    for (TextReplacer &replacer : *replacers) {
        result = replacer.replaced(result, row);
    }
    return result;
}

constexpr TransformFacts replaceFacts =
    TransformFacts(
        45, "TransformReplaceMulti", "Replace", "Replace_Multi", TransformCategory::Format,
        QT_TRANSLATE_NOOP("Transform", "Replace multiple text in the selected column(s)."))
        .words("find regex substitute multiple")
        .with(TransformFacts::EditsInPlace);

} // namespace

TransformReplaceMulti::TransformReplaceMulti()
    : InPlaceTransform(replaceFacts)
{
}

std::unique_ptr<Transform> TransformReplaceMulti::clone() const
{
    return cloned(*this);
}

void TransformReplaceMulti::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().terms.create());
    append(options().caseSensitive.create());
}

Dataset TransformReplaceMulti::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    const Dataset &input = inputs.first();
    QList<ColIndex> columns;
    QList<ReplaceTerm> terms;
    bool caseSensitive = true;
    if (!options().columns.read(*this, input, &columns) || !options().terms.read(*this, &terms) ||
        !options().caseSensitive.read(*this, &caseSensitive)) {
        return {};
    }
    std::vector<TextReplacer> replacers;
    for (const ReplaceTerm &term : std::as_const(terms)) {
        replacers.emplace_back(term, input, caseSensitive, &messages());
    }
    const bool isValid = std::all_of(replacers.begin(), replacers.end(),
                                     [](const TextReplacer &each) { return each.isValid(); });
    if (columns.isEmpty() || replacers.empty() || !isValid) {
        return input;
    }

    const bool dependsOnRow = std::any_of(replacers.begin(), replacers.end(),
                                          [](const auto &each) { return each.dependsOnRow(); });
    Dataset output = dependsOnRow ? mapRows(input, columns,
                                            [&](int row, const QString &value) {
                                                return replacedByAll(&replacers, value, row);
                                            })
                                  : mapCells(input, columns, [&](const QString &value) {
                                        return replacedByAll(&replacers, value, 0);
                                    });
    for (const TextReplacer &replacer : replacers) {
        replacer.report(&messages());
    }
    return output;
}

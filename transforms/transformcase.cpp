#include "transformcase.h"

#include "textcase.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

namespace {

struct Options
{
    const TransformOption<QList<ColIndex>> columns{
        ParameterType::MultipleColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "Columns"),
        QT_TRANSLATE_NOOP("Transform", "The columns whose values change their case.")};
    /// In the order of TextCase.
    const TransformOption<int> textCase =
        TransformOption<int>(
            ParameterType::Selection, "Case", QT_TRANSLATE_NOOP("Transform", "Change case to"),
            QT_TRANSLATE_NOOP(
                "Transform", "Select the new case. For \"New york, NEW YORK\" the choices give:\n\n"
                             "lower case: new york, new york\n"
                             "UPPER CASE: NEW YORK, NEW YORK\n"
                             "Title Case: New York, New York\n"
                             "Sentence case: New york, new york\n"
                             "iNVERTED cASE: nEW YORK, new york\n"
                             "camelCase: newYorkNewYork\n"
                             "PascalCase: NewYorkNewYork\n"
                             "snake_case: new_york_new_york\n"
                             "kebab-case: new-york-new-york\n"
                             "CONSTANT_CASE: NEW_YORK_NEW_YORK"))
            .choices({"lower case", "UPPER CASE", "Title Case", "Sentence case", "iNVERTED cASE",
                      "camelCase", "PascalCase", "snake_case", "kebab-case", "CONSTANT_CASE"});
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

constexpr TransformFacts caseFacts =
    TransformFacts(1, "TransformCase", "Case", "Case", TransformCategory::Format,
                   QT_TRANSLATE_NOOP("Transform", "Change the case in the selected column(s)."))
        .words("inverted snake kebab camel sentence title tolower toupper upper lower cases")
        .with(TransformFacts::EditsInPlace);

} // namespace

TransformCase::TransformCase()
    : InPlaceTransform(caseFacts)
{
}

std::unique_ptr<Transform> TransformCase::clone() const
{
    return cloned(*this);
}

void TransformCase::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().textCase.create());
}

Dataset TransformCase::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    const Dataset &input = inputs.first();
    QList<ColIndex> columns;
    int textCase = 0;
    if (!options().columns.read(*this, input, &columns) ||
        !options().textCase.read(*this, &textCase)) {
        setStatus(Texts::noChanges());
        return {};
    }
    const CaseChanger changer{TextCase(textCase)};
    return mapCells(input, columns, [&](const QString &value) { return changer.changed(value); });
}

#include "transformcalculate.h"

#include "calculation.h"
#include "newcolumns.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

namespace {

enum class Source { Column, Value };

std::vector<const char *> operationNames()
{
    std::vector<const char *> names;
    for (const CalculationOperation &operation : CalculateOperations::all()) {
        names.push_back(operation.name);
    }
    return names;
}

struct Options
{
    const TransformOption<ColIndex> column1{
        ParameterType::SingleColumn, "Column_1", QT_TRANSLATE_NOOP("Transform", "Value 1"),
        QT_TRANSLATE_NOOP("Transform", "The column of the first value, v1.")};
    /// In the order of CalculateOperations::all(); the help goes on with their list.
    const TransformOption<int> operation =
        TransformOption<int>(
            ParameterType::Selection, "Operation", QT_TRANSLATE_NOOP("Transform", "Operation"),
            QT_TRANSLATE_NOOP("Transform",
                              "What is calculated from value 1 (v1) and value 2 (v2). An empty "
                              "value gives an empty result, unless something else makes sense."))
            .choices(operationNames());
    const TransformOption<int> source =
        TransformOption<int>(ParameterType::Selection, "Value_2_Type",
                             QT_TRANSLATE_NOOP("Transform", "Value 2 from"),
                             QT_TRANSLATE_NOOP("Transform",
                                               "Where the second value, v2, comes from.\n\n"
                                               "Column: a column of the same row\n"
                                               "Value: a value typed in here"))
            .choices({"Column", "Value"});
    const TransformOption<ColIndex> column2{
        ParameterType::SingleColumn, "Column_2", QT_TRANSLATE_NOOP("Transform", "Value 2"),
        QT_TRANSLATE_NOOP("Transform", "The column of the second value, v2.")};
    const TransformOption<QString> value2{
        ParameterType::Text, "Value_2", QT_TRANSLATE_NOOP("Transform", "Value 2"),
        QT_TRANSLATE_NOOP("Transform", "The second value, v2. It may hold column variables such as "
                                       "$(2) or $(Name).")};
    const TransformOption<QString> newName{
        ParameterType::Text, "New_Name", QT_TRANSLATE_NOOP("Transform", "New column name"),
        QT_TRANSLATE_NOOP("Transform", "The name of the new column, which is added at the right."),
        QStringLiteral("Result")};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

/// One line an operation, under the names of the groups.
QString operationList()
{
    QString text;
    const char *group = "";
    for (const CalculationOperation &operation : CalculateOperations::all()) {
        if (qstrcmp(group, operation.group) != 0) {
            group = operation.group;
            text += QStringLiteral("\n\n%1").arg(QCoreApplication::translate("Calculate", group));
        }
        text += QStringLiteral("\n%1: %2")
                    .arg(QString::fromLatin1(operation.name),
                         QCoreApplication::translate("Calculate", operation.help));
    }
    return text;
}

constexpr TransformFacts calculateFacts =
    TransformFacts(
        0, "TransformCalculate", "Calculate", "Calculate", TransformCategory::Column,
        QT_TRANSLATE_NOOP("Transform",
                          "Perform calculations on 1 or 2 columns to create a new column."))
        .words("formula add sum math trig log round date difference age")
        .with(TransformFacts::DateFormats | TransformFacts::DependentParameters);

} // namespace

TransformCalculate::TransformCalculate()
    : Transform(calculateFacts)
{
}

std::unique_ptr<Transform> TransformCalculate::clone() const
{
    return cloned(*this);
}

void TransformCalculate::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().column1.create(inputs.value(0)));
    append(options().operation.create())->help += operationList();
    append(options().source.create());
    append(options().column2.create(inputs.value(0)));
    append(options().value2.create());
    append(options().newName.create());
}

bool TransformCalculate::isParameterShown(const TransformParameter &shown) const
{
    int operation = 0;
    int source = 0;
    options().operation.read(*this, &operation);
    options().source.read(*this, &source);
    const bool isBinary = CalculateOperations::all()[size_t(operation)].isBinary();
    if (shown.key == options().source.key()) {
        return isBinary;
    }
    if (shown.key == options().column2.key()) {
        return isBinary && Source(source) == Source::Column;
    }
    return shown.key != options().value2.key() || (isBinary && Source(source) == Source::Value);
}

Dataset TransformCalculate::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    setStatus(Texts::noChanges());
    const Dataset &input = inputs.first();
    ColIndex column1;
    ColIndex column2;
    int choice = 0;
    int source = 0;
    QString value2;
    QString newName;
    if (!options().column1.read(*this, input, &column1) ||
        !options().operation.read(*this, &choice) || !options().source.read(*this, &source) ||
        !options().column2.read(*this, input, &column2) || !options().value2.read(*this, &value2) ||
        !options().newName.read(*this, &newName)) {
        return {};
    }
    const CalculationOperation &operation = CalculateOperations::all()[size_t(choice)];
    const bool needsColumn2 = operation.isBinary() && Source(source) == Source::Column;
    if (!column1.isValid() || (needsColumn2 && !column2.isValid())) {
        return input;
    }

    Calculation calculation(operation, input, column1);
    if (needsColumn2) {
        calculation.setSecondColumn(column2);
    } else if (operation.isBinary()) {
        calculation.setSecondText(value2);
    }
    Dataset output = input;
    NewColumns::append(&output, newName, tr("Result"));
    if (!calculate(&calculation, &output)) {
        return {};
    }
    calculation.report(&messages());
    setStatus(calculation.status());
    return output;
}

bool TransformCalculate::calculate(Calculation *calculation, Dataset *output)
{
    const ColIndex column(output->columnCount().value() - 1);
    const int rowCount = output->rowCount();
    for (int row = 0; row < rowCount; ++row) {
        if (!reportRow(row, rowCount)) {
            return false;
        }
        const QString value = calculation->at(row);
        if (!value.isEmpty()) {
            output->setCell(RowIndex(row), column, value);
        }
    }
    return true;
}

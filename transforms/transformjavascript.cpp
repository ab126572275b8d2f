#include "transformjavascript.h"

#include "memoryceiling.h"
#include "newcolumns.h"
#include "numbertext.h"
#include "scriptrunner.h"
#include "scriptvariables.h"
#include "tablebuilder.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"
#include "utf8.h"

#include <QLocale>
#include <algorithm>

namespace {

constexpr int mostErrorsTold = 10;

struct Options
{
    const TransformOption<QString> script{
        ParameterType::Script, "Script", QT_TRANSLATE_NOOP("Transform", "Javascript"),
        QT_TRANSLATE_NOOP(
            "Transform",
            "The body of a function. $(2) stands for the text of the second column, $(Name) for "
            "that of the column 'Name'. Also there: row (counted from 1), rowCount, header and "
            "values (arrays of texts), number(text) and isNumber(text), which read numbers as they "
            "are written in your locale, and state, an object that is kept from row to row."),
        QStringLiteral("return $(1);")};
    const TransformOption<int> mode =
        TransformOption<int>(
            ParameterType::Selection, "Mode", QT_TRANSLATE_NOOP("Transform", "Result"),
            QT_TRANSLATE_NOOP("Transform",
                              "What becomes of what the script returns.\n\n"
                              "New column: it is the value of a new column; an array gives several "
                              "columns\n"
                              "Keep rows where true: it decides whether the row is kept\n"
                              "Whole dataset: the script runs once, with the array rows of arrays "
                              "of texts, and returns {header: [...], rows: [[...]]}"))
            .choices({"New column", "Keep rows where true", "Whole dataset"});
    const TransformOption<QString> newName{
        ParameterType::Text, "New_Name", QT_TRANSLATE_NOOP("Transform", "New column name"),
        QT_TRANSLATE_NOOP("Transform", "The name of the new column."),
        QStringLiteral("Javascript")};
    const TransformOption<int> timeout =
        TransformOption<int>(
            ParameterType::Int, "Timeout",
            QT_TRANSLATE_NOOP("Transform", "Maximum seconds without progress"),
            QT_TRANSLATE_NOOP("Transform",
                              "A script that works longer than this on one row, or on the whole "
                              "dataset, is interrupted."),
            10)
            .range(1, 3600);
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

constexpr TransformFacts javascriptFacts =
    TransformFacts(
        26, "TransformJavascript", "Javascript", "Javascript", TransformCategory::Other,
        QT_TRANSLATE_NOOP("Transform", "Script your own custom transform in Javascript."))
        .words("script code custom function")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters);

} // namespace

struct TransformJavascript::Settings
{
    QString script;
    ScriptJob::Mode mode = ScriptJob::Mode::Row;
    QString newName;
    int timeout = 10;
};

/// What the script has told so far.
struct TransformJavascript::Result
{
    int rowsDone = 0; ///< of the input
    qint64 errors = 0;
    int notCalculated = 0;
    QStringList errorTexts;
    QString failure;
    RowSelection kept;
    QStringList header;
    TableBuilder values;
    int width = 1;
};

TransformJavascript::TransformJavascript()
    : Transform(javascriptFacts)
{
}

std::unique_ptr<Transform> TransformJavascript::clone() const
{
    return cloned(*this);
}

void TransformJavascript::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().script.create());
    append(options().mode.create());
    append(options().newName.create());
    append(options().timeout.create());
}

bool TransformJavascript::isParameterShown(const TransformParameter &parameter) const
{
    int mode = 0;
    return parameter.key != options().newName.key() || !options().mode.read(*this, &mode) ||
           ScriptJob::Mode(mode) == ScriptJob::Mode::Row;
}

bool TransformJavascript::readSettings(Settings *settings) const
{
    int mode = 0;
    const bool complete = options().script.read(*this, &settings->script) &&
                          options().mode.read(*this, &mode) &&
                          options().newName.read(*this, &settings->newName) &&
                          options().timeout.read(*this, &settings->timeout);
    settings->mode = ScriptJob::Mode(mode);
    return complete;
}

Dataset TransformJavascript::execute(const QList<Dataset> &inputs)
{
    Settings settings;
    if (inputs.size() != 1 || !readSettings(&settings)) {
        return {};
    }
    const Dataset &input = inputs.first();
    setStatus(Texts::noChanges());
    if (!input.hasColumns()) {
        return input;
    }
    const ScriptVariables variables(settings.script, input);
    if (!variables.unknown.isEmpty()) {
        for (const QString &variable : variables.unknown) {
            messages().fail(tr("Column variable '%1' not found.").arg(variable));
        }
        return input;
    }
    if (settings.mode == ScriptJob::Mode::Whole && !variables.columns.empty()) {
        messages().fail(tr("Column variables stand for the cells of one row: with 'Whole dataset', "
                           "use rows instead."));
        return input;
    }
    const ScriptJob job{variables, input, settings.mode};
    Result result;
    const ScriptProcess::End end = ScriptProcess::run(
        [&job](const ScriptProcess::Tell &tell) { runScript(job, tell); },
        [&](const ScriptRecord &record) { take(record, settings.mode, &result); },
        [&] { return report(double(result.rowsDone) / std::max(1, input.rowCount())); },
        settings.timeout);
    if (end == ScriptProcess::End::Stopped) {
        return {};
    }
    if (!isDone(end, result)) {
        return input;
    }
    tell(result, input);
    switch (settings.mode) {
    case ScriptJob::Mode::Condition:
        return input.selectRows(std::move(result.kept));
    case ScriptJob::Mode::Row:
        return withNewColumns(input, settings.newName, &result);
    case ScriptJob::Mode::Whole:
        break;
    }
    Dataset output = result.values.take();
    if (!result.header.isEmpty()) {
        output.setHeader(result.header);
    }
    return output;
}

bool TransformJavascript::isDone(ScriptProcess::End end, const Result &result)
{
    switch (end) {
    case ScriptProcess::End::Done:
        if (!result.failure.isEmpty()) {
            messages().fail(result.failure);
        }
        break;
    case ScriptProcess::End::Timeout:
    case ScriptProcess::End::Stopped:
        messages().fail(tr("Script interrupted."));
        break;
    case ScriptProcess::End::Memory:
        messages().fail(tr("Script interrupted: more than %1 GB of memory are in use.")
                            .arg(QLocale().toString(MemoryCeiling::limitGb(), 'f', 2)));
        break;
    case ScriptProcess::End::Crashed:
        messages().fail(tr("Script interrupted: it ran out of stack or memory."));
        break;
    case ScriptProcess::End::NotStarted:
        messages().fail(tr("The script could not be started: the system has no room for another "
                           "process."));
        break;
    }
    return !messages().failed;
}

void TransformJavascript::take(const ScriptRecord &record, ScriptJob::Mode mode, Result *result)
{
    const auto told = [&record](int index) { return Utf8::decoded(record.texts[size_t(index)]); };
    switch (record.kind) {
    case ScriptRecord::Kind::Alive:
    case ScriptRecord::Kind::End:
        break;
    case ScriptRecord::Kind::Kept:
        result->kept.push_back(result->rowsDone++);
        break;
    case ScriptRecord::Kind::Dropped:
        ++result->rowsDone;
        break;
    case ScriptRecord::Kind::Values:
        result->width = std::max(result->width, int(record.texts.size()));
        result->values.appendRow(record.texts.data(), int(record.texts.size()));
        ++result->rowsDone;
        break;
    case ScriptRecord::Kind::RowError:
        addError(told(0), record.number, result);
        if (mode == ScriptJob::Mode::Row) {
            result->values.appendRow(nullptr, 0);
        }
        ++result->rowsDone;
        break;
    case ScriptRecord::Kind::Failure:
        result->failure = record.number > 0
                              ? tr("%1 at line %2.").arg(told(0), QString::number(record.number))
                              : tr("%1.").arg(told(0));
        break;
    case ScriptRecord::Kind::Header:
        for (int i = 0; i < int(record.texts.size()); ++i) {
            result->header.append(told(i));
        }
        break;
    case ScriptRecord::Kind::Calculated:
        result->notCalculated = record.number;
        break;
    }
}

void TransformJavascript::addError(const QString &text, int line, Result *result)
{
    if (result->errors++ >= mostErrorsTold) {
        return;
    }
    const QString row = Texts::count(qint64(result->rowsDone) + 1);
    result->errorTexts.append(
        line > 0 ? tr("Row %1: %2 at line %3.").arg(row, text, QString::number(line))
                 : tr("Row %1: %2.").arg(row, text));
}

void TransformJavascript::tell(const Result &result, const Dataset &input)
{
    for (const QString &text : result.errorTexts) {
        messages().warn(text);
    }
    if (result.errors > mostErrorsTold) {
        messages().warn(
            tr("... and %1 more error(s).").arg(Texts::count(result.errors - mostErrorsTold)));
    }
    if (result.notCalculated > 0) {
        messages().warn(
            tr("%1 result(s) could not be calculated.").arg(Texts::count(result.notCalculated)));
    }
    setStatus(tr("%1 row(s) processed, %2 error(s)")
                  .arg(Texts::count(input.rowCount()), Texts::count(result.errors)));
}

Dataset TransformJavascript::withNewColumns(const Dataset &input, const QString &name,
                                            Result *result) const
{
    Dataset added = result->values.take();
    added.setColumnCount(ColIndex(result->width));
    if (added.rowCount() < input.rowCount()) {
        added.resize(input.rowCount(), result->width);
    }
    Dataset output = Dataset::sideBySide(input, added);
    if (!input.hasHeader()) {
        return output;
    }
    QStringList names = input.header();
    QSet<QString> used(names.begin(), names.end());
    const QString wanted = name.isEmpty() ? QStringLiteral("Javascript") : name;
    for (int i = 0; i < result->width; ++i) {
        names.append(NewColumns::uniqueName(wanted, used));
        used.insert(names.last());
    }
    output.setHeader(names);
    return output;
}

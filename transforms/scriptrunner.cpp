#include "scriptrunner.h"

#include "numberreader.h"
#include "numbertext.h"
#include "utf8.h"

#include <QCoreApplication>
#include <QJSEngine>
#include <QJSValue>
#include <cmath>
#include <limits>

namespace {

/// Reads numbers as all transforms do. The script gets functions that call it, not the object.
class NumberHost : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE double number(const QString &text) const
    {
        bool ok = false;
        const double value = NumberReader::current().toReal(QStringView(text), false, true, &ok);
        return ok ? value : std::numeric_limits<double>::quiet_NaN();
    }
};

/// Makes the callable from the user's function: catches whatever it throws, and turns what it
/// returns into plain values, so that nothing of the user's is called from outside.
const char *const wrapperSource = R"js((function(make, host, mode, names, count) {
    "use strict";
    var isArray = Array.isArray, toText = String, apply = Function.prototype.apply;
    var toNumber = host.number;
    function number(value) {
        return typeof value === "number" ? value : toNumber(toText(value));
    }
    function isNumber(value) { var n = number(value); return n === n; }
    function plain(value) {
        if (value === undefined || value === null) return undefined;
        switch (typeof value) {
        case "string": case "number": case "boolean": return value;
        }
        return value instanceof Date ? value.toISOString() : toText(value);
    }
    function plainArray(value) {
        var list = [], size = value.length;
        if (size > 1048576) throw new RangeError("too many values in one row");
        for (var i = 0; i < size; ++i) list[i] = plain(value[i]);
        return list;
    }
    function failure(thrown) {
        var result = { text: "unknown error", line: 0 };
        try { result.text = toText(thrown); } catch (e) {}
        try {
            if (thrown instanceof Error && toText(thrown.fileName).slice(-6) === "script")
                result.line = +thrown.lineNumber;
        } catch (e) {}
        return result;
    }
    var user = make(number, isNumber, {}, names, count);
    return {
        call: function() {
            try {
                var value = apply.call(user, undefined, arguments);
                if (mode === 1) return !!value;
                if (mode === 2) {
                    if (value === null || typeof value !== "object")
                        throw new TypeError("the script must return an object with rows");
                    var header = value.header, rows = value.rows;
                    if (!isArray(rows)) throw new TypeError("rows is not an array");
                    if (header !== undefined && header !== null && !isArray(header))
                        throw new TypeError("header is not an array");
                    return [isArray(header) ? plainArray(header) : undefined, rows];
                }
                return isArray(value) ? plainArray(value) : plain(value);
            } catch (thrown) { return failure(thrown); }
        },
        readRow: function(row) {
            try {
                if (!isArray(row)) throw new TypeError("a row of the result is not an array");
                return plainArray(row);
            } catch (thrown) { return failure(thrown); }
        }
    };
}))js";

/// One script at work.
class ScriptRunner
{
    Q_DECLARE_TR_FUNCTIONS(ScriptRunner)

public:
    ScriptRunner(const ScriptJob &job, const ScriptProcess::Tell &tell)
        : m_job(job)
        , m_tell(tell)
    {
    }

    void run()
    {
        if (compile()) {
            if (m_job.mode == ScriptJob::Mode::Whole) {
                runWhole();
            } else {
                runRows();
            }
        }
        ScriptRecord record;
        record.kind = ScriptRecord::Kind::Calculated;
        record.number = m_notCalculated;
        m_tell(record);
        record.kind = ScriptRecord::Kind::End;
        m_tell(record);
    }

private:
    bool compile();
    void makeReaders();
    void runRows();
    void runWhole();
    void tellResult(const QJSValue &result);
    bool isError(const QJSValue &result, ScriptRecord::Kind kind, const QString &before = {});
    void tellError(ScriptRecord::Kind kind, const QString &text, int line);
    void tellValues(ScriptRecord::Kind kind, const QJSValue &array);
    void tellTexts(ScriptRecord::Kind kind);
    QJSValue cellsOf(int row);
    QString textOf(const QJSValue &value);

    const ScriptJob &m_job;
    const ScriptProcess::Tell &m_tell;
    QJSEngine m_engine;
    std::vector<ColumnReader> m_columns;    // those of the variables
    std::vector<ColumnReader> m_allColumns; // empty when the script has no use for them
    QJSValue m_call;
    QJSValue m_readRow;
    std::vector<std::string> m_texts; // of the record in hand
    int m_notCalculated = 0;
};

bool ScriptRunner::compile()
{
    const Dataset &table = m_job.table;
    const QStringList arguments =
        (m_job.mode == ScriptJob::Mode::Whole
             ? QStringList{QStringLiteral("rows")}
             : QStringList{QStringLiteral("row"), QStringLiteral("values")}) +
        m_job.variables.parameters;
    // The body begins in line 1.
    const QString source =
        QStringLiteral("(function(number, isNumber, state, header, rowCount) { return "
                       "function(%1) {\n%2\n}; })")
            .arg(arguments.join(QLatin1Char(',')), m_job.variables.script);
    const QJSValue made = m_engine.evaluate(source, QStringLiteral("script"), 0);
    if (!made.isCallable()) {
        tellError(ScriptRecord::Kind::Failure,
                  made.isError() ? made.toString() : tr("The script is not the body of a function"),
                  made.isError() ? made.property(QStringLiteral("lineNumber")).toInt() : 0);
        return false;
    }
    QJSValue names = m_engine.newArray(uint(table.columnCount().value()));
    for (ColIndex column(0); column < table.columnCount(); ++column) {
        names.setProperty(quint32(column.value()), table.columnName(column));
    }
    const QJSValue callables = m_engine.evaluate(QString::fromLatin1(wrapperSource))
                                   .call({made, m_engine.newQObject(new NumberHost),
                                          int(m_job.mode), names, table.rowCount()});
    m_call = callables.property(QStringLiteral("call"));
    m_readRow = callables.property(QStringLiteral("readRow"));
    if (!m_call.isCallable()) {
        tellError(ScriptRecord::Kind::Failure, callables.toString(), 0);
        return false;
    }
    makeReaders();
    return true;
}

void ScriptRunner::makeReaders()
{
    for (const ColIndex column : m_job.variables.columns) {
        m_columns.push_back(m_job.table.columnReader(column));
    }
    if (m_job.mode == ScriptJob::Mode::Whole ||
        m_job.variables.script.contains(QLatin1String("values")) ||
        m_job.variables.script.contains(QLatin1String("arguments"))) {
        for (ColIndex column(0); column < m_job.table.columnCount(); ++column) {
            m_allColumns.push_back(m_job.table.columnReader(column));
        }
    }
}

QJSValue ScriptRunner::cellsOf(int row)
{
    QJSValue cells = m_engine.newArray(uint(m_allColumns.size()));
    for (size_t i = 0; i < m_allColumns.size(); ++i) {
        cells.setProperty(quint32(i), m_allColumns[i].text(row));
    }
    return cells;
}

void ScriptRunner::runRows()
{
    QJSValueList arguments;
    for (int row = 0; row < m_job.table.rowCount(); ++row) {
        arguments.clear();
        arguments.append(QJSValue(row + 1));
        arguments.append(m_allColumns.empty() ? QJSValue() : cellsOf(row));
        for (const ColumnReader &column : m_columns) {
            arguments.append(QJSValue(column.text(row)));
        }
        const QJSValue result = m_call.call(arguments);
        if (!isError(result, ScriptRecord::Kind::RowError)) {
            tellResult(result);
        }
    }
}

void ScriptRunner::tellResult(const QJSValue &result)
{
    if (m_job.mode == ScriptJob::Mode::Condition) {
        ScriptRecord record;
        record.kind = result.toBool() ? ScriptRecord::Kind::Kept : ScriptRecord::Kind::Dropped;
        m_tell(record);
    } else if (result.isArray()) {
        tellValues(ScriptRecord::Kind::Values, result);
    } else {
        m_texts.assign(1, Utf8::encoded(textOf(result)));
        tellTexts(ScriptRecord::Kind::Values);
    }
}

void ScriptRunner::runWhole()
{
    const int rowCount = m_job.table.rowCount();
    QJSValue rows = m_engine.newArray(uint(rowCount));
    for (int row = 0; row < rowCount; ++row) {
        if (row % 1000 == 0) {
            m_tell(ScriptRecord());
        }
        rows.setProperty(quint32(row), cellsOf(row));
    }
    const QJSValue result = m_call.call({rows});
    if (isError(result, ScriptRecord::Kind::Failure)) {
        return;
    }
    if (result.property(0).isArray()) {
        tellValues(ScriptRecord::Kind::Header, result.property(0));
    }
    const QJSValue made = result.property(1);
    const double size = made.property(QStringLiteral("length")).toNumber();
    for (quint32 row = 0; double(row) < size; ++row) {
        const QJSValue cells = m_readRow.call({made.property(row)});
        if (isError(cells, ScriptRecord::Kind::Failure,
                    tr("Row %1 of the result: ").arg(qint64(row) + 1))) {
            return;
        }
        tellValues(ScriptRecord::Kind::Values, cells);
    }
}

/// True, and told, when the result is no result but an error.
bool ScriptRunner::isError(const QJSValue &result, ScriptRecord::Kind kind, const QString &before)
{
    if (result.isError()) {
        tellError(kind, before + result.toString(), 0); // thrown by the engine itself
        return true;
    }
    if (!result.isObject() || result.isArray()) {
        return false;
    }
    tellError(kind, before + result.property(QStringLiteral("text")).toString(),
              result.property(QStringLiteral("line")).toInt());
    return true;
}

void ScriptRunner::tellError(ScriptRecord::Kind kind, const QString &text, int line)
{
    const std::string bytes =
        Utf8::encoded(text.endsWith(QLatin1Char('.')) ? text.chopped(1) : text);
    ScriptRecord record;
    record.kind = kind;
    record.number = line;
    record.texts.push_back(bytes);
    m_tell(record);
}

void ScriptRunner::tellValues(ScriptRecord::Kind kind, const QJSValue &array)
{
    const quint32 size = array.property(QStringLiteral("length")).toUInt();
    m_texts.clear();
    for (quint32 i = 0; i < size; ++i) {
        m_texts.push_back(Utf8::encoded(textOf(array.property(i))));
    }
    tellTexts(kind);
}

void ScriptRunner::tellTexts(ScriptRecord::Kind kind)
{
    ScriptRecord record;
    record.kind = kind;
    record.texts.assign(m_texts.begin(), m_texts.end());
    m_tell(record);
}

/// The text of a plain value.
QString ScriptRunner::textOf(const QJSValue &value)
{
    if (value.isUndefined() || value.isNull()) {
        return QString();
    }
    if (!value.isNumber()) {
        return value.toString();
    }
    const double number = value.toNumber();
    m_notCalculated += std::isfinite(number) ? 0 : 1;
    return plainNumberText(number);
}

} // namespace

void runScript(const ScriptJob &job, const ScriptProcess::Tell &tell)
{
    ScriptRunner(job, tell).run();
}

#include "scriptrunner.moc"

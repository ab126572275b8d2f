#include "memoryceiling.h"
#include "scriptvariables.h"
#include "testsupport.h"
#include "transformjavascript.h"
#include "transformrun.h"

#include <QElapsedTimer>
#include <QLocale>

class TestTransformJavascript : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void computes_data();
    void computes();
    void replacesVariables_data();
    void replacesVariables();
    void keepsCellsOutOfTheProgram();
    void readsNumbersByLocale();
    void tellsErrors_data();
    void tellsErrors();
    void tellsTheFirstErrorsOnly();
    void interruptsEndlessScripts_data();
    void interruptsEndlessScripts();
    void interruptsHungryScripts_data();
    void interruptsHungryScripts();
    void survivesCrashes_data();
    void survivesCrashes();
    void stops();
    void repeatsItself();
};

namespace {

OptionTexts script(const char *text, const char *mode = "New column")
{
    return {{"Script", QString::fromUtf8(text)}, {"Mode", QString::fromLatin1(mode)}};
}

/// A script that holds a bar or a semi-colon is no problem here: options are not split, tables are.
std::unique_ptr<TransformJavascript> transformOf(const OptionTexts &options)
{
    auto transform = std::make_unique<TransformJavascript>();
    transform->defineParameters({});
    for (const auto &[key, value] : options) {
        if (!transform->parameter(QString::fromLatin1(key))->setValueText(value)) {
            qFatal("option %s does not take '%s'", key, qPrintable(value));
        }
    }
    transform->resetRun();
    return transform;
}

QStringList told(const Transform &transform)
{
    return transform.messages().information + transform.messages().warnings;
}

} // namespace

void TestTransformJavascript::computes_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("messages");
    const auto add = [](const char *tag, const OptionTexts &options, const char *input,
                        const char *expected, const QStringList &messages = {}) {
        QTest::newRow(tag) << options << QString::fromUtf8(input) << QString::fromUtf8(expected)
                           << messages;
    };
    add("default", {}, "A|B:1|2", "A|B|Javascript:1|2|1");
    add("numbers", script("return $(1)*2"), "A:3;x", "A|Javascript:3|6;x|",
        {"1 result(s) could not be calculated."});
    add("number forms", script("return [0.1+0.2, 1e21, -0, 1/3, Infinity]"), "A:x",
        "A|Javascript|Javascript_2|Javascript_3|Javascript_4|Javascript_5:"
        "x|0.3|1e+21|0|0.333333333333333|",
        {"1 result(s) could not be calculated."});
    add("other values",
        script("return [true, false, null, undefined, 'ü', Symbol('s'), [1,[2]], {}]"), "A:x",
        "A|Javascript|Javascript_2|Javascript_3|Javascript_4|Javascript_5|Javascript_6|"
        "Javascript_7|Javascript_8:x|true|false|||ü|Symbol(s)|1,2|[object Object]");
    add("in quotes", script("return 'Dear $(A)' + `, ${1}$(A)`"), "A:x",
        "A|Javascript:x|Dear x, 1x");
    add("nothing returned", script("$(1)"), "A:x", "A|Javascript:x|");
    add("arrays of several lengths", script("return $(A).split('-')"), "A:1-2;3;4-5-6",
        "A|Javascript|Javascript_2|Javascript_3:1-2|1|2|;3|3||;4-5-6|4|5|6");
    add("empty array", script("return []"), "A:1", "A|Javascript:1|");
    add("scope", script("return row + '/' + rowCount + header.join('') + values.join('')"),
        "A|B:1|2;3|4", "A|B|Javascript:1|2|1/2AB12;3|4|2/2AB34");
    add("state", script("state.sum = (state.sum || 0) + number($(1)); return state.sum"),
        "A:1;2;3.5", "A|Javascript:1|1;2|3;3.5|6.5");
    add("date", script("return new Date(0)"), "A:1", "A|Javascript:1|1970-01-01T00:00:00.000Z");
    add("several lines",
        script("var a = $(1);\nfunction twice(x) { return x + x; }\nreturn twice(a);"), "A:q",
        "A|Javascript:q|qq");
    add("name in use", script("return 1"), "Javascript:x", "Javascript|Javascript_2:x|1");
    add("no header", script("return $(2)"), "1|2", "1|2|2");
    add("no rows", script("return 1"), "A:", "A|Javascript:");
    add("filter", script("return $(1) > 1", "Keep rows where true"), "A:1;2;x;3", "A:2;3");
    add("whole", script("rows.reverse(); return {header: header, rows: rows}", "Whole dataset"),
        "A|B:1|2;3|4", "A|B:3|4;1|2");
    add("whole, other shape",
        script("return {header: ['n', 5], rows: [[rows.length], [1.5, true, null]]}",
               "Whole dataset"),
        "A:x;y", "n|5|:2||;1.5|true|");
    add("whole without header", script("return {rows: [['a']]}", "Whole dataset"), "A:x", "a");
    add("nothing of the outside",
        script("return [typeof Qt, typeof XMLHttpRequest, typeof console,"
               " typeof setTimeout, typeof require, typeof host]"),
        "A:x",
        "A|Javascript|Javascript_2|Javascript_3|Javascript_4|Javascript_5|Javascript_6:"
        "x|undefined|undefined|undefined|undefined|undefined|undefined");
}

void TestTransformJavascript::computes()
{
    QFETCH(OptionTexts, options);
    QFETCH(QString, input);
    QFETCH(QString, expected);
    QFETCH(QStringList, messages);
    const Dataset table = parsed(input);
    const auto transform = transformOf(options);
    QCOMPARE(written(transform->execute({table})), expected);
    QCOMPARE(told(*transform), messages);
    QVERIFY(!transform->messages().failed);
    QCOMPARE(table, parsed(input));
}

void TestTransformJavascript::replacesVariables_data()
{
    QTest::addColumn<QString>("script");
    QTest::addColumn<QString>("expected");
    QTest::addColumn<QStringList>("unknown");
    const auto add = [](const char *tag, const char *text, const char *expected,
                        const QStringList &unknown = {}) {
        QTest::newRow(tag) << text << expected << unknown;
    };
    add("by number and name", "$(1)+$(B c)+$(1)", "(cell_1)+(cell_2)+(cell_1)");
    add("unknown", "$(3)+$(x)", "$(3)+$(x)", {"3", "x"});
    add("in quotes", "'a$(1)b' + \"$(B c)\"", "('a'+(cell_1)+'b') + (\"\"+(cell_2)+\"\")");
    add("as a property", "{'$(1)': 1}", "{[''+(cell_1)+'']: 1}");
    add("escaped quotes", "'\\'' + $(1) + \"\\\\\" + $(1)",
        "'\\'' + (cell_1) + \"\\\\\" + (cell_1)");
    add("an unclosed quote ends with its line", "'a\n$(1)", "'a\n(cell_1)");
    add("comments", "// '$(1)\n$(1) /* \" $(1) */ + $(1)",
        "// '$(1)\n(cell_1) /* \" $(1) */ + (cell_1)");
    add("regular expression", "return /['\"/]/.test($(1)) ", "return /['\"/]/.test((cell_1)) ");
    add("division", "$(1) / 2 / $(1)", "(cell_1) / 2 / (cell_1)");
    add("template", "`a $(1) ${ $(1) + `b${ {a: $(1)}.a }` } c` + $(1)",
        "`a ${(cell_1)} ${ (cell_1) + `b${ {a: (cell_1)}.a }` } c` + (cell_1)");
    add("the name of a parameter in use", "cell_ + $(1)", "cell_ + (cell__1)");
}

void TestTransformJavascript::replacesVariables()
{
    QFETCH(QString, script);
    QFETCH(QString, expected);
    QFETCH(QStringList, unknown);
    const ScriptVariables variables(script, parsed("A|B c:1|2"));
    QCOMPARE(variables.script, expected);
    QCOMPARE(variables.unknown, unknown);
}

void TestTransformJavascript::keepsCellsOutOfTheProgram()
{
    const QStringList cells{
        "\");alert(1)//",  "'",     "\\", "${1}", "$(1)", QString(QChar(0xD800)),
        QString(QChar(0)), "\u2028"};
    const Dataset table = columnTable("A", cells);
    const auto transform = transformOf(script("return $(1);"));
    QCOMPARE(columnOf(transform->execute({table}), 1), cells);
}

void TestTransformJavascript::readsNumbersByLocale()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const Dataset table = columnTable("A", {"1.234,5", "x", ""});
    const auto transform =
        transformOf(script("return isNumber($(1)) ? number($(1)) + number(0.5) : 'no number'"));
    const QStringList results = columnOf(transform->execute({table}), 1);
    QLocale::setDefault(before);
    QCOMPARE(results, QStringList({"1235", "no number", "no number"}));
}

void TestTransformJavascript::tellsErrors_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QStringList>("messages");
    QTest::addColumn<bool>("fails");
    const auto add = [](const char *tag, const OptionTexts &options, const QStringList &messages,
                        bool fails) { QTest::newRow(tag) << options << messages << fails; };
    add("thrown error", script("var a = 1;\nthrow new Error('bad');"),
        {"Row 1: Error: bad at line 2."}, false);
    add("unknown name", script("\n\nreturn nothing.at.all"),
        {"Row 1: ReferenceError: nothing is not defined at line 3."}, false);
    add("thrown text", script("throw 'plain'"), {"Row 1: plain."}, false);
    add("thrown nothing", script("throw undefined"), {"Row 1: undefined."}, false);
    add("thrown object that cannot be told", script("throw {toString: function() { throw 1; }}"),
        {"Row 1: unknown error."}, false);
    add("value that cannot be a text", script("return {toString: function() { throw 'no' }}"),
        {"Row 1: no."}, false);
    add("too many values", script("return new Array(4294967295)"),
        {"Row 1: RangeError: too many values in one row."}, false);
    add("endless recursion", script("function f() { return f(); } return f();"),
        {"Row 1: RangeError: Maximum call stack size exceeded."}, false);
    add("syntax", script("var a = 1;\nreturn ((a);"),
        {"SyntaxError: Expected token `,' at line 2."}, true);
    add("not a body", script("}; (function() {"), {}, true);
    add("empty", script(""), {}, false);
    add("column not there", script("return $(7) + $(none)"),
        {"Column variable '7' not found.", "Column variable 'none' not found."}, true);
    add("whole: variables", script("return {rows: [[$(1)]]}", "Whole dataset"),
        {"Column variables stand for the cells of one row: with 'Whole dataset', use rows "
         "instead."},
        true);
    add("whole: nothing", script("return", "Whole dataset"),
        {"TypeError: the script must return an object with rows."}, true);
    add("whole: rows of something else", script("return {rows: [1]}", "Whole dataset"),
        {"Row 1 of the result: TypeError: a row of the result is not an array."}, true);
    add("whole: rows that only claim to be",
        script("return {rows: {length: 1e9}}", "Whole dataset"),
        {"TypeError: rows is not an array."}, true);
    add("whole: thrown", script("\nthrow new Error('x')", "Whole dataset"), {"Error: x at line 2."},
        true);
}

void TestTransformJavascript::tellsErrors()
{
    QFETCH(OptionTexts, options);
    QFETCH(QStringList, messages);
    QFETCH(bool, fails);
    const Dataset table = parsed("A:1");
    const auto transform = transformOf(options);
    const Dataset output = transform->execute({table});
    if (!messages.isEmpty()) {
        QCOMPARE(told(*transform), messages);
    }
    QCOMPARE(transform->messages().failed, fails);
    if (fails) {
        QVERIFY(!told(*transform).isEmpty());
        QCOMPARE(output, table);
    } else {
        QCOMPARE(output.rowCount(), 1);
    }
}

void TestTransformJavascript::tellsTheFirstErrorsOnly()
{
    QStringList cells;
    for (int i = 1; i <= 1200; ++i) {
        cells.append(QString::number(i));
    }
    const auto transform = transformOf(script("if ($(1) != 5) throw new Error($(1)); return 'ok'"));
    const Dataset output = transform->execute({columnTable("A", cells)});
    QCOMPARE(columnOf(output, 1).count("ok"), 1);
    QCOMPARE(columnOf(output, 1).count(""), 1199);
    QCOMPARE(transform->messages().warnings.size(), 11);
    QCOMPARE(transform->messages().warnings[4], QStringLiteral("Row 6: Error: 6 at line 1."));
    QCOMPARE(transform->messages().warnings[10], QStringLiteral("... and 1,189 more error(s)."));
    QCOMPARE(transform->status(), QStringLiteral("1,200 row(s) processed, 1,199 error(s)"));
}

void TestTransformJavascript::interruptsEndlessScripts_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::newRow("loop") << script("while (true) {}");
    QTest::newRow("loop that catches")
        << script("while (true) { try { while (true) {} } catch (e) {} }");
    QTest::newRow("in a conversion") << script("return {toString: function() { for (;;) {} }}");
    QTest::newRow("filter") << script("while (true) {}", "Keep rows where true");
    QTest::newRow("whole") << script("while (true) {}", "Whole dataset");
    QTest::newRow("whole, in a row")
        << script("return {rows: [[{toString: function() { for (;;) {} }}]]}", "Whole dataset");
}

void TestTransformJavascript::interruptsEndlessScripts()
{
    QFETCH(OptionTexts, options);
    const Dataset table = parsed("A:1;2");
    const auto transform = transformOf(options + OptionTexts{{"Timeout", "1"}});
    QCOMPARE(transform->execute({table}), table);
    QVERIFY(transform->messages().failed);
    QCOMPARE(transform->messages().warnings, QStringList{"Script interrupted."});
}

void TestTransformJavascript::interruptsHungryScripts_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("array") << "var a = []; while (true) a.push([a.length]);";
    QTest::newRow("text") << "var a = [], s = 'x'; while (true) { s += s.length; a.push(s + s); }";
}

void TestTransformJavascript::interruptsHungryScripts()
{
    QFETCH(QString, text);
    const Dataset table = parsed("A:1");
    const double before = MemoryCeiling::limitGb();
    MemoryCeiling::setLimitGb(MemoryCeiling::memoryInUseNowGb() + 0.15);
    const auto transform =
        transformOf(script(text.toUtf8().constData()) + OptionTexts{{"Timeout", "60"}});
    const Dataset output = transform->execute({table});
    MemoryCeiling::setLimitGb(before);
    QCOMPARE(output, table);
    QVERIFY(transform->messages().failed);
    QVERIFY2(transform->messages().warnings.join(' ').contains("GB of memory are in use"),
             qPrintable(transform->messages().warnings.join(' ')));
}

void TestTransformJavascript::survivesCrashes_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("array in itself") << "var a = []; a.push(a); return String(a);";
    QTest::newRow("deep object") << "var o = {}, p = o; for (var i = 0; i < 1e6; ++i) { p.a = {}; "
                                    "p = p.a; } return JSON.stringify(o);";
    QTest::newRow("endless in the engine") << "return new Array(4294967295).fill(1).length;";
}

/// What ends the engine itself, or never returns from it, must not touch the program.
void TestTransformJavascript::survivesCrashes()
{
    QFETCH(QString, text);
    const Dataset table = parsed("A:1");
    const auto transform =
        transformOf(script(text.toUtf8().constData()) + OptionTexts{{"Timeout", "2"}});
    const Dataset output = transform->execute({table});
    QVERIFY(!told(*transform).isEmpty());
    QCOMPARE(output.rowCount(), 1);
}

void TestTransformJavascript::stops()
{
    const auto transform = transformOf(script("while (true) {}") + OptionTexts{{"Timeout", "60"}});
    QElapsedTimer time;
    time.start();
    transform->setProgress([&time](double) { return time.elapsed() < 300; });
    transform->execute({parsed("A:1")});
    QVERIFY(transform->isStopped());
    QVERIFY(!transform->messages().failed);
    QVERIFY2(time.elapsed() < 20000, "the stop was not seen");
}

void TestTransformJavascript::repeatsItself()
{
    const auto transform = transformOf(script("state.n = (state.n || 0) + 1; return state.n"));
    const Dataset table = parsed("A:1;2");
    const Dataset first = transform->execute({table});
    transform->resetRun();
    QCOMPARE(transform->execute({table}), first);
}

TW_TEST_CLASS(TestTransformJavascript)
#include "tst_transformjavascript.moc"

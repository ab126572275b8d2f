#include "messages.h"
#include "parametervalues.h"
#include "tables.h"
#include "testsupport.h"
#include "transformoption.h"
#include "transformparameter.h"

#include <limits>

using Op = ComparisonOperator;

namespace {

/// A bar stands for U+001F, the separator of lists.
QString text(const char *utf8)
{
    return QString::fromUtf8(utf8).replace(QLatin1Char('|'), QChar(0x1F));
}

/// A parameter of a type, with bounds wide enough for any value.
TransformParameter parameterOf(ParameterType type)
{
    TransformParameter parameter(type, text("Label"), text("Key"), QVariant(),
                                 QStringList{text("Left"), text("Right"), text("5")});
    parameter.intMinimum = std::numeric_limits<int>::min();
    parameter.intMaximum = std::numeric_limits<int>::max();
    parameter.realMinimum = -1e300;
    parameter.realMaximum = 1e300;
    return parameter;
}

template <class T>
QVariant variant(const T &value)
{
    return QVariant::fromValue(value);
}

QList<ColumnRef> refs(const QList<int> &numbers)
{
    QList<ColumnRef> list;
    for (const int number : numbers) {
        list.append(ColumnRef(number));
    }
    return list;
}

ColumnRename renamed(int column, const QString &name)
{
    return {ColumnRef(column), true, name};
}

} // namespace

class TestTransformParameter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void writesAndReads_data();
    void writesAndReads();
    void leavesTheValueForMalformedText_data();
    void leavesTheValueForMalformedText();
    void readsOtherFormsOfTheSameValue_data();
    void readsOtherFormsOfTheSameValue();
    void survivesAnyText();
    void readsSelectionsByTextThenByIndex();
    void keepsBounds();

    void followsNames();
    void prefersItsOwnNumberAmongEqualNames();
    void holdsNumbersWithoutAHeader();
    void resolvesByNameAfterLoading();
    void tellsNewColumnsFromUncheckedOnes();
    void loadsUncheckedColumns();
    void renamesFollowTheirColumns();
    void leavesFilterTermsAlone();
    void readsColumnsInTableOrder();
    void summarises_data();
    void summarises();
};

void TestTransformParameter::writesAndReads_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("stored");
    using Type = ParameterType;
    const auto addRow = [](const char *tag, Type type, const QVariant &value, const char *stored) {
        QTest::newRow(tag) << int(type) << value << text(stored);
    };
    const QString odd = text("a%|*é\n ");

    addRow("no column", Type::SingleColumn, variant(ColumnRef()), "0");
    addRow("third column", Type::SingleColumn, variant(ColumnRef(2)), "3");
    addRow("no columns", Type::MultipleColumns, variant(refs({})), "");
    addRow("columns", Type::MultipleColumns, variant(refs({0, 3})), "1|4");
    addRow("order", Type::ReorderColumns, variant(refs({2, 0, 1})), "3|1|2");
    addRow("none checked", Type::ColumnSet, variant(ColumnChoice{false, {}, {}}), "");
    addRow("checked", Type::ColumnSet, variant(ColumnChoice{false, refs({1}), {}}), "2");
    addRow("sort keys", Type::SortColumns,
           variant(QList<SortKey>{{ColumnRef(1), true}, {ColumnRef(4), false}}), "2|-5");
    addRow("empty filter", Type::FilterColumns, variant(FilterSpec()), "1|1");
    addRow("filter", Type::FilterColumns,
           variant(FilterSpec{
               false,
               true,
               {{text("A B"), Op::GreaterEqual, odd}, {QString(), Op::IsEmpty, QString()}}}),
           "0|1|A%20B|6|a%25%1F%2A%C3%A9%0A%20||19|");
    addRow("empty if", Type::If, variant(IfSpec()), "*StartIf**EndIf*");
    addRow("if with else", Type::If, variant(IfSpec{{}, text("*EndIf*")}),
           "*StartIf*%2AEndIf%2A*EndIf*");
    addRow("if", Type::If,
           variant(IfSpec{{{{{text("S"), Op::Greater, text("9 0")}}, text("A")}, {{}, text("B")}},
                          text("C")}),
           "*StartIf*A%1FS%1F4%1F9%25200|B|C*EndIf*");
    addRow("if with an empty branch", Type::If, variant(IfSpec{{IfBranch()}, QString()}),
           "*StartIf*|*EndIf*");
    addRow("renames", Type::RenameColumns,
           variant(QList<ColumnRename>{renamed(0, text("New name")),
                                       {ColumnRef(1), false, QString()},
                                       renamed(2, text("*NORENAME*")),
                                       renamed(3, QString())}),
           "New%20name|*NORENAME*|%2ANORENAME%2A|");
    addRow("split rows", Type::SplitRows,
           variant(SplitRowsSpec{SplitRowsSpec::Mode::Fixed, ColumnRef(1), 2, 3}), "fixed|2|2|3");
    addRow("split rows by names", Type::SplitRows,
           variant(SplitRowsSpec{SplitRowsSpec::Mode::Matching, ColumnRef(), 0, 1}),
           "matching|0|0|1");
    addRow("unique", Type::Unique,
           variant(QList<UniqueAction>{{ColumnRef(0), text("Unique")},
                                       {ColumnRef(2), text("Count non-empty")}}),
           "1|Unique|3|Count%20non-empty");
    addRow("replacements", Type::ReplaceTerms,
           variant(QList<ReplaceTerm>{{text("a"), QString(), ReplaceTerm::Kind::Word},
                                      {QString(), text("n/a"), ReplaceTerm::Kind::Cell}}),
           "a||word||n%2Fa|cell");
    addRow("rules", Type::VerifyRules, variant(QList<VerifyRule>{{QString(), 14, text("1 to 9")}}),
           "|14|1%20to%209");
    addRow("on", Type::Bool, true, "1");
    addRow("off", Type::Bool, false, "0");
    addRow("least int", Type::Int, std::numeric_limits<int>::min(), "-2147483648");
    addRow("real", Type::Real, 0.1, "0.1");
    addRow("real of many digits", Type::Real, 1.0 / 3.0, "0.3333333333333333");
    addRow("small real", Type::Real, 1e-9, "1e-09");
    addRow("text", Type::Text, odd, "a%|*é\n ");
    addRow("empty text", Type::LongText, QString(), "");
    addRow("script", Type::Script, text("return $(1);"), "return $(1);");
    addRow("character", Type::Char, text("é"), "é");
    addRow("character beyond the BMP", Type::Char, text("😀"), "😀");
    addRow("choice", Type::Selection, text("Right"), "Right");
}

void TestTransformParameter::writesAndReads()
{
    QFETCH(int, type);
    QFETCH(QVariant, value);
    QFETCH(QString, stored);
    TransformParameter written = parameterOf(ParameterType(type));
    written.value = value;
    QCOMPARE(written.valueText(), stored);
    TransformParameter read = parameterOf(ParameterType(type));
    QVERIFY(read.setValueText(stored));
    QCOMPARE(read.value.userType(), value.userType());
    QCOMPARE(read.valueText(), stored);
    QCOMPARE(read.isSet(), written.isSet());
}

void TestTransformParameter::leavesTheValueForMalformedText_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("stored");
    using Type = ParameterType;
    const auto addRow = [](const char *tag, Type type, const char *stored) {
        QTest::newRow(tag) << int(type) << text(stored);
    };
    addRow("column: empty", Type::SingleColumn, "");
    addRow("column: word", Type::SingleColumn, "A");
    addRow("column: negative", Type::SingleColumn, "-1");
    addRow("column: huge", Type::SingleColumn, "2147483648");
    addRow("columns: descending", Type::MultipleColumns, "1|-2");
    addRow("columns: empty item", Type::MultipleColumns, "1|");
    addRow("columns: commas", Type::ColumnSet, "1,2");
    addRow("sort: least int", Type::SortColumns, "-2147483648");
    addRow("filter: empty", Type::FilterColumns, "");
    addRow("filter: one flag", Type::FilterColumns, "1");
    addRow("filter: other flag", Type::FilterColumns, "1|2");
    addRow("filter: cut short", Type::FilterColumns, "1|1|A|0");
    addRow("filter: operator", Type::FilterColumns, "1|1|A|>|5");
    addRow("if: empty", Type::If, "");
    addRow("if: overlapping markers", Type::If, "*StartIf*EndIf*");
    addRow("if: no end", Type::If, "*StartIf*A");
    addRow("if: cut short", Type::If, "*StartIf*A%1FB|C*EndIf*");
    addRow("split rows: mode", Type::SplitRows, "other|1|1|1");
    addRow("split rows: never", Type::SplitRows, "fixed|1|1|0");
    addRow("split rows: short", Type::SplitRows, "fixed|1");
    addRow("unique: odd", Type::Unique, "1|Unique|2");
    addRow("unique: column", Type::Unique, "A|Unique");
    addRow("replace: pair", Type::ReplaceTerms, "a|b");
    addRow("replace: kind", Type::ReplaceTerms, "a|b|words");
    addRow("rules: number", Type::VerifyRules, "A|-1|");
    addRow("bool: word", Type::Bool, "true");
    addRow("bool: two", Type::Bool, "2");
    addRow("int: empty", Type::Int, "");
    addRow("int: fraction", Type::Int, "1.5");
    addRow("int: huge", Type::Int, "99999999999");
    addRow("real: word", Type::Real, "x");
    addRow("real: not a number", Type::Real, "nan");
    addRow("real: infinite", Type::Real, "inf");
    addRow("real: comma", Type::Real, "1,5");
    addRow("character: two", Type::Char, "ab");
    addRow("choice: unknown", Type::Selection, "Up");
    addRow("choice: index", Type::Selection, "3");
}

void TestTransformParameter::leavesTheValueForMalformedText()
{
    QFETCH(int, type);
    QFETCH(QString, stored);
    TransformParameter parameter = parameterOf(ParameterType(type));
    const QString before = parameter.valueText();
    QVERIFY(!parameter.setValueText(stored));
    QCOMPARE(parameter.valueText(), before);
}

void TestTransformParameter::readsOtherFormsOfTheSameValue_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("writtenAgain");
    using Type = ParameterType;
    QTest::newRow("column 0 sorts ascending") << int(Type::SortColumns) << text("0") << text("0");
    QTest::newRow("operator too large")
        << int(Type::FilterColumns) << text("1|1|A|21|5") << text("1|1|A|0|5");
    QTest::newRow("broken percent sign")
        << int(Type::FilterColumns) << text("1|1|5%|0|%4x") << text("1|1|5%25|0|%254x");
    QTest::newRow("more digits") << int(Type::Real) << text("0.1000") << text("0.1");
}

void TestTransformParameter::readsOtherFormsOfTheSameValue()
{
    QFETCH(int, type);
    QFETCH(QString, stored);
    QFETCH(QString, writtenAgain);
    TransformParameter parameter = parameterOf(ParameterType(type));
    QVERIFY(parameter.setValueText(stored));
    QCOMPARE(parameter.valueText(), writtenAgain);
}

void TestTransformParameter::survivesAnyText()
{
    // Whatever stands in a document is either refused or reads back as it is written.
    const QStringList pieces = {text("|"),    text("*StartIf*"),  text("*EndIf*"), text("1"),
                                text("-3"),   text("%"),          text("%1F"),     text("fixed"),
                                text("text"), text("*NORENAME*"), text("é"),       QString()};
    unsigned state = 12345;
    for (int i = 0; i < 20000; ++i) {
        QString stored;
        for (int j = 0; j < i % 9; ++j) {
            state = state * 1664525U + 1013904223U;
            stored += pieces[int((state >> 16) % unsigned(pieces.size()))];
        }
        TransformParameter parameter = parameterOf(ParameterType(i % 20));
        if (parameter.setValueText(stored)) {
            const QString written = parameter.valueText();
            QVERIFY(parameter.setValueText(written));
            QCOMPARE(parameter.valueText(), written);
        }
    }
}

void TestTransformParameter::readsSelectionsByTextThenByIndex()
{
    TransformParameter parameter = parameterOf(ParameterType::Selection);
    QVERIFY(parameter.setValueText(text("1")));
    QCOMPARE(parameter.value.toString(), text("Right"));
    QVERIFY(parameter.setValueText(text("5")));
    QCOMPARE(parameter.value.toString(), text("5"));
    parameter.storedAsIndex = true;
    QCOMPARE(parameter.valueText(), text("2"));
}

void TestTransformParameter::keepsBounds()
{
    TransformParameter number(ParameterType::Int, text("N"), text("N"), 3);
    number.intMinimum = 1;
    number.intMaximum = 10;
    QVERIFY(!number.setValueText(text("0")));
    QVERIFY(!number.setValueText(text("11")));
    QVERIFY(number.setValueText(text("10")));
    TransformParameter real(ParameterType::Real, text("R"), text("R"), 3.0);
    QVERIFY(!real.setValueText(text("100.5")));
    QVERIFY(real.setValueText(text("0")));
}

void TestTransformParameter::followsNames()
{
    FakeItem item({text("A"), text("B"), text("C")});
    TransformParameter parameter(ParameterType::SortColumns, text("L"), text("K"), &item);
    QVERIFY(parameter.setValueText(text("2|-3")));
    Messages messages;
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.columnNames(), (QStringList{text("B"), text("C")}));

    item.setColumns({text("C"), text("New"), text("B")});
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("3|-1"));
    QVERIFY(messages.warnings.isEmpty());

    // A column that is gone is never replaced by another one, and comes back.
    item.setColumns({text("X"), text("Y"), text("B")});
    parameter.resolveColumns(&messages);
    QCOMPARE(messages.warnings, QStringList{text("Column 'C' not found.")});
    const auto keys = parameter.value.value<QList<SortKey>>();
    QVERIFY(keys[0].column.isBound());
    QVERIFY(!keys[1].column.isBound());
    item.setColumns({text("B"), text("C")});
    messages.clear();
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("1|-2"));
    QVERIFY(parameter.value.value<QList<SortKey>>()[1].column.isBound());
    QVERIFY(messages.warnings.isEmpty());

    // Nothing happens while the columns are not known.
    item.setColumns({});
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.columnNames(), (QStringList{text("B"), text("C")}));
    QVERIFY(messages.warnings.isEmpty());
}

void TestTransformParameter::prefersItsOwnNumberAmongEqualNames()
{
    FakeItem item({text("A"), text("B"), text("A")});
    TransformParameter parameter(ParameterType::SingleColumn, text("L"), text("K"), &item);
    QVERIFY(parameter.setValueText(text("3")));
    Messages messages;
    parameter.resolveColumns(&messages);
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("3"));
    item.setColumns({text("B"), text("A"), text("B"), text("A")});
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("2"));
}

void TestTransformParameter::holdsNumbersWithoutAHeader()
{
    FakeItem item({text("Column 1"), text("Column 2")}, false);
    TransformParameter parameter(ParameterType::MultipleColumns, text("L"), text("K"), &item);
    QVERIFY(parameter.setValueText(text("2")));
    Messages messages;
    parameter.resolveColumns(&messages);
    QVERIFY(parameter.columnNames().isEmpty());
    item.setColumns({text("Column 1")}, false);
    parameter.resolveColumns(&messages);
    QCOMPARE(messages.warnings, QStringList{text("Column 'Column 2' not found.")});
    QVERIFY(!parameter.isSet());
    // Once there is a header, the number decides which name is meant.
    item.setColumns({text("A"), text("B"), text("C")});
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.columnNames(), QStringList{text("B")});
    QVERIFY(parameter.isSet());
}

void TestTransformParameter::resolvesByNameAfterLoading()
{
    FakeItem item({text("C"), text("B"), text("A")});
    TransformParameter parameter(ParameterType::Unique, text("L"), text("K"), &item);
    QVERIFY(parameter.setValueText(text("1|Unique|2|Sum")));
    parameter.setColumnNames({text("A"), text("B")});
    Messages messages;
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("3|Unique|2|Sum"));
    // A list of names of another length does no harm.
    parameter.setColumnNames({text("A")});
    parameter.setColumnNames({text("A"), text("B"), text("C")});
    QCOMPARE(parameter.columnNames(), (QStringList{text("A"), text("B")}));
}

void TestTransformParameter::tellsNewColumnsFromUncheckedOnes()
{
    FakeItem item;
    TransformParameter parameter(ParameterType::ColumnSet, text("L"), text("K"), &item);
    QVERIFY(!parameter.isStored());
    QVERIFY(parameter.isSet());
    item.setColumns({text("A"), text("B"), text("C")});
    Messages messages;
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("1|2|3"));
    QVERIFY(parameter.isStored());

    auto choice = parameter.value.value<ColumnChoice>();
    choice.checked.removeAt(1); // B
    parameter.value = variant(choice);
    item.setColumns({text("New"), text("C"), text("B")});
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("4|2"));
    QCOMPARE(parameter.columnNames(), (QStringList{QString(), text("C"), text("B"), text("A")}));
    QCOMPARE(messages.warnings, QStringList{text("Column 'A' not found.")});

    // Through a document all of this comes back.
    TransformParameter loaded(ParameterType::ColumnSet, text("L"), text("K"), &item);
    QVERIFY(loaded.setValueText(parameter.valueText()));
    loaded.setColumnNames(parameter.columnNames());
    loaded.resolveColumns(&messages);
    QCOMPARE(loaded.valueText(), parameter.valueText());
    QCOMPARE(loaded.columnNames(), parameter.columnNames());
}

void TestTransformParameter::loadsUncheckedColumns()
{
    FakeItem item({text("A"), text("B")});
    TransformParameter parameter(ParameterType::ColumnSet, text("L"), text("K"), &item);
    QVERIFY(parameter.setValueText(QString()));
    Messages messages;
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), QString());
    QVERIFY(!parameter.isSet());
    QCOMPARE(parameter.columnNames(), (QStringList{text("A"), text("B")}));
}

void TestTransformParameter::renamesFollowTheirColumns()
{
    FakeItem item({text("A"), text("B")});
    TransformParameter parameter(ParameterType::RenameColumns, text("L"), text("K"), &item);
    Messages messages;
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("*NORENAME*|*NORENAME*"));
    QVERIFY(parameter.setValueText(text("*NORENAME*|New")));
    parameter.resolveColumns(&messages);

    item.setColumns({text("B"), text("X"), text("A")});
    parameter.resolveColumns(&messages);
    QCOMPARE(parameter.valueText(), text("New|*NORENAME*|*NORENAME*"));
    QCOMPARE(parameter.columnNames(), (QStringList{text("B"), text("X"), text("A")}));
    QVERIFY(messages.warnings.isEmpty());

    item.setColumns({text("X")});
    parameter.resolveColumns(&messages);
    QCOMPARE(messages.warnings, QStringList{text("Column 'B' not found.")});
    QCOMPARE(parameter.valueText(), text("*NORENAME*|New"));
    QCOMPARE(parameter.columnNames(), (QStringList{text("X"), text("B")}));
}

void TestTransformParameter::leavesFilterTermsAlone()
{
    FakeItem item({text("A")});
    TransformParameter parameter(ParameterType::FilterColumns, text("L"), text("K"), &item);
    const FilterSpec spec{true, true, {{text("Gone"), Op::Equal, text("1")}}};
    parameter.value = variant(spec);
    Messages messages;
    parameter.resolveColumns(&messages);
    QVERIFY(parameter.value.value<FilterSpec>() == spec);
    QVERIFY(messages.warnings.isEmpty());
    QVERIFY(parameter.columnNames().isEmpty());
}

void TestTransformParameter::readsColumnsInTableOrder()
{
    const Dataset data = table({text("A"), text("B"), text("C")}, {});
    const auto read = [&data](ParameterType type, const char *stored) {
        TransformParameter parameter = parameterOf(type);
        if (stored) {
            parameter.setValueText(text(stored));
        }
        QStringList names;
        const QList<ColIndex> columns = OptionColumns::many(parameter, data);
        for (const ColIndex column : columns) {
            names.append(data.columnName(column));
        }
        return names.join(QString());
    };
    QCOMPARE(read(ParameterType::MultipleColumns, "3|1|3|9|0"), text("AC"));
    QCOMPARE(read(ParameterType::ReorderColumns, "3|1|2"), text("CAB"));
    QCOMPARE(read(ParameterType::ColumnSet, nullptr), text("ABC"));
    TransformParameter one = parameterOf(ParameterType::SingleColumn);
    QVERIFY(one.setValueText(text("4")));
    QVERIFY(!OptionColumns::one(one, data).isValid());
    QVERIFY(one.setValueText(text("3")));
    QCOMPARE(OptionColumns::one(one, data).value(), 2);
}

void TestTransformParameter::summarises_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("expected");
    using Type = ParameterType;
    const auto addRow = [](const char *tag, Type type, const char *stored, const char *expected) {
        QTest::newRow(tag) << int(type) << text(stored) << text(expected);
    };
    addRow("unnamed column", Type::SingleColumn, "2", "Column 2");
    addRow("columns", Type::ReorderColumns, "2|1", "2 column(s)");
    addRow("renamed", Type::RenameColumns, "A|*NORENAME*|C", "2 column(s) renamed");
    addRow("unique", Type::Unique, "1|Unique|2|Sum", "1 unique column(s)");
    addRow("if", Type::If, "*StartIf*A|B|C*EndIf*", "2 if/elseif + else");
    addRow("filter", Type::FilterColumns, "1|1||19|", "1 term(s)");
    addRow("split once", Type::SplitRows, "fixed|1|3|1", "every 3 column(s), 1 time");
    addRow("split", Type::SplitRows, "fixed|1|3|2", "every 3 column(s), 2 times");
    addRow("split by names", Type::SplitRows, "automatic|0|0|1", "Automatically by column names");
    addRow("rules", Type::VerifyRules, "|1|", "(1)");
    addRow("blank", Type::Text, " ", "<Space>");
    addRow("tab", Type::Char, "\t", "<Tab>");
    addRow("on", Type::Bool, "1", "Label");
    addRow("off", Type::Bool, "0", "");
    addRow("count", Type::Int, "1000", "1,000");
}

void TestTransformParameter::summarises()
{
    QFETCH(int, type);
    QFETCH(QString, stored);
    QFETCH(QString, expected);
    TransformParameter parameter = parameterOf(ParameterType(type));
    QVERIFY(parameter.setValueText(stored));
    QCOMPARE(parameter.summary(), expected);
}

TW_TEST_CLASS(TestTransformParameter)
#include "tst_transformparameter.moc"

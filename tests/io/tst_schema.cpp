#include "inputoptions.h"
#include "inputreader.h"
#include "outputtesttools.h"
#include "schema.h"
#include "testsupport.h"

class TestSchema : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void arranges_data();
    void arranges();
    void fails_data();
    void fails();
    void comparesBeforeAndAfter();
    void worksWithoutAHeader();
    void sharesCells();
    void leavesNothingOfAFailedInput();
};

namespace {

QStringList list(const char *commaSeparated)
{
    return QString::fromUtf8(commaSeparated).split(QLatin1Char(','), Qt::SkipEmptyParts);
}

InputOptions schemaOf(const char *names, const char *missingValues = "")
{
    InputOptions options;
    options.schemaInUse = true;
    options.schemaColumnNames = list(names);
    options.schemaMissingValues = QString::fromUtf8(missingValues).split(QLatin1Char(','));
    return options;
}

/// A table with one row that holds numbers from 1 on.
Dataset tableWith(const QStringList &names)
{
    QStringList row;
    for (int i = 1; i <= names.size(); ++i) {
        row.append(QString::number(i));
    }
    return OutputTest::tableOf(names, {row});
}

QStringList firstRow(const Dataset &table)
{
    QStringList row;
    for (ColIndex column(0); column < table.columnCount(); ++column) {
        row.append(table.cell(RowIndex(0), column));
    }
    return row;
}

} // namespace

void TestSchema::arranges_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QString>("schema");
    QTest::addColumn<bool>("ignoresExtra");
    QTest::addColumn<QString>("names");
    QTest::addColumn<QString>("row");
    QTest::addColumn<QStringList>("notes");
    const auto add = [](const char *tag, const char *input, const char *schema, const char *names,
                        const char *row, const QStringList &notes, bool ignoresExtra = false) {
        QTest::newRow(tag) << QString::fromUtf8(input) << QString::fromUtf8(schema) << ignoresExtra
                           << QString::fromUtf8(names) << QString::fromUtf8(row) << notes;
    };
    add("same", "a,b", "a,b", "a,b", "1,2", {});
    add("missing", "a,c", "a,b,c", "a,b,c", "1,vb,2",
        {"Schema change: Added missing column 'b' with values 'vb' to position 2."});
    add("order", "c,a,b", "a,b,c", "a,b,c", "2,3,1",
        {"Schema change: Moved column 'a' from position 2 to position 1.",
         "Schema change: Moved column 'b' from position 3 to position 2.",
         "Schema change: Moved column 'c' from position 1 to position 3."});
    add("extra in front moves nothing", "x,a,b", "a,b", "a,b,x", "2,3,1",
        {"Schema change: Added extra column 'x' from position 1 to position 3."});
    add("extra left out", "a,x,b", "a,b", "a,b", "1,3",
        {"Schema change: Ignored extra column 'x' at position 2."}, true);
    add("missing in front moves nothing", "b,c", "a,b,c", "a,b,c", "va,1,2",
        {"Schema change: Added missing column 'a' with values 'va' to position 1."});
    add("all at once", "x,b,a", "m,a,b", "m,a,b,x", "vm,3,2,1",
        {"Schema change: Added missing column 'm' with values 'vm' to position 1.",
         "Schema change: Moved column 'a' from position 3 to position 2.",
         "Schema change: Moved column 'b' from position 2 to position 3.",
         "Schema change: Added extra column 'x' from position 1 to position 4."});
    add("repeated names", "a,b,a,a", "a,a,b", "a,a,b,a", "1,3,2,4",
        {"Schema change: Moved column 'a' from position 3 to position 2.",
         "Schema change: Moved column 'b' from position 2 to position 3.",
         "Schema change: Added extra column 'a' from position 4 to position 4."});
    add("letter case and blanks count", "A,b ", "a,b", "a,b,A,b ", "va,vb,1,2",
        {"Schema change: Added missing column 'a' with values 'va' to position 1.",
         "Schema change: Added missing column 'b' with values 'vb' to position 2.",
         "Schema change: Added extra column 'A' from position 1 to position 3.",
         "Schema change: Added extra column 'b ' from position 2 to position 4."});
}

void TestSchema::arranges()
{
    QFETCH(QString, input);
    QFETCH(QString, schema);
    QFETCH(bool, ignoresExtra);
    QFETCH(QString, names);
    QFETCH(QString, row);
    QFETCH(QStringList, notes);
    InputOptions options = schemaOf(schema.toUtf8().constData());
    options.schemaExtra = ignoresExtra ? SchemaExtra::Ignore : SchemaExtra::AddToEnd;
    options.schemaMissingValues.clear();
    for (const QString &name : std::as_const(options.schemaColumnNames)) {
        options.schemaMissingValues.append("v" + name);
    }
    Dataset table = tableWith(input.split(QLatin1Char(',')));
    Messages messages;
    QVERIFY(applySchema(options, &table, &messages));
    QCOMPARE(table.header().join(QLatin1Char(',')), names);
    QCOMPARE(firstRow(table).join(QLatin1Char(',')), row);
    QVERIFY(!messages.failed && messages.warnings.isEmpty());
    const QString last = messages.information.takeLast();
    QCOMPARE(messages.information, notes);
    if (notes.isEmpty()) {
        QCOMPARE(last, QStringLiteral("Input matches schema."));
    } else {
        QVERIFY(last.startsWith(QLatin1String("Input does not match schema.\nBefore schema:\n")));
    }
}

void TestSchema::fails_data()
{
    QTest::addColumn<QString>("input");
    QTest::addColumn<QStringList>("errors");
    QTest::newRow("missing") << "a" << QStringList{"Schema error: Missing column 'b'."};
    QTest::newRow("order") << "b,a"
                           << QStringList{
                                  "Schema error: Column 'a' at position 2 when 1 expected.",
                                  "Schema error: Column 'b' at position 1 when 2 expected."};
    QTest::newRow("extra") << "a,x,b"
                           << QStringList{"Schema error: Extra column 'x' at position 2."};
    QTest::newRow("all are told") << "x,b"
                                  << QStringList{"Schema error: Missing column 'a'.",
                                                 "Schema error: Extra column 'x' at position 1."};
}

void TestSchema::fails()
{
    QFETCH(QString, input);
    QFETCH(QStringList, errors);
    InputOptions options = schemaOf("a,b");
    options.schemaMissing = SchemaMissing::Error;
    options.schemaOrder = SchemaOrder::Error;
    options.schemaExtra = SchemaExtra::Error;
    Dataset table = tableWith(input.split(QLatin1Char(',')));
    Messages messages;
    QVERIFY(!applySchema(options, &table, &messages));
    QVERIFY(messages.failed);
    QCOMPARE(messages.warnings, errors + QStringList{"Schema validation failed."});
}

void TestSchema::comparesBeforeAndAfter()
{
    Dataset table = tableWith(list("x,b,a"));
    Messages messages;
    QVERIFY(applySchema(schemaOf("m,a,b", "0"), &table, &messages));
    QCOMPARE(messages.information.last(),
             QStringLiteral("Input does not match schema.\n"
                            "Before schema:\n"
                            "Column position=1 name='x': Extra, added to position 4\n"
                            "Column position=2 name='b': Out of order, moved to position 3\n"
                            "Column position=3 name='a': Out of order, moved to position 2\n"
                            "After schema:\n"
                            "Column position=1 name='m': Added missing\n"
                            "Column position=2 name='a': Out of order, moved from position 3\n"
                            "Column position=3 name='b': Out of order, moved from position 2\n"
                            "Column position=4 name='x': Extra, added from position 1"));
}

void TestSchema::worksWithoutAHeader()
{
    Dataset table = OutputTest::tableOf({}, {{"1", "2"}});
    Messages messages;
    QVERIFY(applySchema(schemaOf("Column 1,Column 2"), &table, &messages));
    QVERIFY(!table.hasHeader());
    QVERIFY(applySchema(schemaOf("Column 2,Price"), &table, &messages));
    QCOMPARE(table.header(), list("Column 2,Price,Column 1"));
    QCOMPARE(firstRow(table), QStringList({"2", "", "1"}));
}

void TestSchema::sharesCells()
{
    Dataset table = OutputTest::tableOf({"a"}, {{QString(1 << 20, QLatin1Char('x'))}});
    const char *const bytes = table.utf8(RowIndex(0), ColIndex(0)).data();
    Messages messages;
    QVERIFY(applySchema(schemaOf("b,a"), &table, &messages));
    QVERIFY(table.utf8(RowIndex(0), ColIndex(1)).data() == bytes);
}

void TestSchema::leavesNothingOfAFailedInput()
{
    InputOptions options = schemaOf("a,b");
    options.schemaMissing = SchemaMissing::Error;
    options.medium = Medium::Clipboard;
    options.text = QStringLiteral("a\n1\n");
    Messages messages;
    const Dataset table = readInput(options, QString(), &messages, Progress());
    QVERIFY(messages.failed && !table.hasColumns());
    options.schemaMissing = SchemaMissing::Add;
    Messages others;
    QCOMPARE(readInput(options, QString(), &others, Progress()).header(), list("a,b"));
}

TW_TEST_CLASS(TestSchema)
#include "tst_schema.moc"

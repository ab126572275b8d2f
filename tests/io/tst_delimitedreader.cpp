#include "delimitedreader.h"
#include "inputoptions.h"
#include "inputreader.h"
#include "memoryceiling.h"
#include "testsupport.h"
#include "trickle.h"

#include <QFile>
#include <QTemporaryDir>

using Rows = QList<QStringList>;
Q_DECLARE_METATYPE(InputOptions)

namespace {

Rows rowsOf(const Dataset &dataset)
{
    Rows rows;
    for (RowIndex row(0); row < RowIndex(dataset.rowCount()); ++row) {
        rows.append(QStringList());
        for (ColIndex column(0); column < dataset.columnCount(); ++column) {
            rows.last().append(dataset.cell(row, column));
        }
    }
    return rows;
}

Rows rows(std::initializer_list<std::initializer_list<const char *>> texts)
{
    Rows all;
    for (const auto &row : texts) {
        all.append(QStringList());
        for (const char *text : row) {
            all.last().append(QString::fromUtf8(text));
        }
    }
    return all;
}

/// Comma, quoted, without a header.
InputOptions plain()
{
    InputOptions options;
    options.delimiter = Delimiter::Comma;
    options.quoting = InputQuoting::Quoted;
    options.encoding = QStringLiteral("UTF-8");
    options.header = false;
    return options;
}

template <class Change>
InputOptions with(Change change)
{
    InputOptions options = plain();
    change(options);
    return options;
}

Dataset read(const QByteArray &bytes, const InputOptions &options, Messages *messages,
             const Progress &progress = Progress())
{
    const auto source =
        TextSource::fromDevice(std::make_unique<Trickle>(bytes, 1 << 20), options.encoding);
    return readDelimitedText(options, QStringLiteral("in.csv"), source.get(), messages, progress);
}

} // namespace

class TestDelimitedReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsRows_data();
    void cutsRows();
    void takesTheHeader_data();
    void takesTheHeader();
    void notesGuesses();
    void guessesTheDelimiter_data();
    void guessesTheDelimiter();
    void looksAtTheFirstCharactersOnly();
    void tellsRaggedAndEmptyRows();
    void dropsEmptyColumns();
    void countsValuesThatAreNotUtf8();
    void readsLongLines();
    void readsWideRows();
    void refusesEndlesslyWideRows();
    void readsTheClipboard();
    void failsWithAClearText_data();
    void failsWithAClearText();
    void failsWhenTheDiskDoes();
    void stopsWhenAsked();
    void letsTheMemoryCeilingThrough();
};

void TestDelimitedReader::cutsRows_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<InputOptions>("options");
    QTest::addColumn<Rows>("expected");
    const auto addRow = [](const char *name, const QByteArray &bytes, const Rows &expected,
                           const InputOptions &options = plain()) {
        QTest::newRow(name) << bytes << options << expected;
    };
    const auto unquoted = with([](InputOptions &o) { o.quoting = InputQuoting::Unquoted; });
    const auto runs = with([](InputOptions &o) { o.ignoreRepeatedDelimiter = true; });
    const auto unquotedRuns = with([](InputOptions &o) {
        o.ignoreRepeatedDelimiter = true;
        o.quoting = InputQuoting::Unquoted;
    });
    const auto all = with([](InputOptions &o) { o.ignoreEmptyRows = false; });
    const auto custom = [](const char *delimiter) {
        return with([delimiter](InputOptions &o) {
            o.delimiter = Delimiter::Custom;
            o.customDelimiter = QString::fromUtf8(delimiter);
        });
    };

    addRow("nothing", "", {});
    addRow("only a mark", "\xef\xbb\xbf", {});
    addRow("a mark", "\xef\xbb\xbf\"a\",b", rows({{"a", "b"}}));
    addRow("no line end at the end", "a,b\nc,d", rows({{"a", "b"}, {"c", "d"}}));
    addRow("all line ends", "a\nb\r\nc\rd", rows({{"a"}, {"b"}, {"c"}, {"d"}}));
    addRow("delimiter at the end", "a,", rows({{"a", ""}}));
    addRow("carriage return at the end", "a\r", rows({{"a"}}));
    addRow("NUL", QByteArray("a\0b,\0\n", 6),
           {{QString::fromLatin1("a\0b", 3), QString(QChar(0))}});

    addRow("delimiter and quote in quotes", "\"a,\"\"b\"\"\",c", rows({{"a,\"b\"", "c"}}));
    addRow("line ends in quotes stay", "\"a\r\nb\rc\nd\"\r\n", rows({{"a\r\nb\rc\nd"}}));
    addRow("text after the closing quote", "\"ab\"cd,e", rows({{"abcd", "e"}}));
    addRow("quotes after the closing quote", "\"a\"b\"c,\"d\"\n", rows({{"ab\"c", "d"}}));
    addRow("quote inside", "a\"b,c\"\n", rows({{"a\"b", "c\""}}));
    addRow("blank before the quote", "a, \"b,c\"", rows({{"a", " \"b", "c\""}}));
    addRow("empty quotes", "\"\",\"\"\"\"", rows({{"", "\""}}));
    addRow("unclosed quote", "a,\"b,c\nd\n", rows({{"a", "b,c\nd\n"}}));
    addRow("unclosed after a doubled quote", "\"a\"\"", rows({{"a\""}}));
    addRow("only a quote", "\"", rows({{""}}), all);
    addRow("doubled quotes in many values", "\"\"\"a\",\"b\"\"\",\"c\"d",
           rows({{"\"a", "b\"", "cd"}}));

    addRow("unquoted", "\"a,b\"\n", rows({{"\"a", "b\""}}), unquoted);
    addRow("unquoted line ends", "a\rb\r\n\rc\r", rows({{"a"}, {"b"}, {"c"}}), unquoted);
    addRow("tab, automatic quoting", "\"a\tb\"\n", rows({{"\"a", "b\""}}),
           with([](InputOptions &o) {
               o.delimiter = Delimiter::Tab;
               o.quoting = InputQuoting::Automatic;
           }));
    addRow("repeated", ",,a,,b,,", rows({{"a", "b", ""}}), runs);
    addRow("repeated around empty quotes", "a,\"\",b", rows({{"a", "b"}}), runs);
    addRow("repeated, unquoted", ",,a,,b,,", rows({{"", "a", "b", ""}}), unquotedRuns);

    addRow("unknown delimiter", "a,b", rows({{"a", "b"}}),
           with([](InputOptions &o) { o.delimiter = Delimiter(77); }));
    addRow("custom without a character", "a,b", rows({{"a", "b"}}), custom(""));
    addRow("two-byte delimiter", "a\u00e9\"b\u00e9\"\u00e9\u00e8\n",
           rows({{"a", "b\u00e9", "\u00e8"}}), custom("\u00e9"));
    addRow("four-byte delimiter", "a\U0001F600b\U0001F601", rows({{"a", "b\U0001F601"}}),
           custom("\U0001F600"));
    addRow("quote as delimiter", "a\"b\"\"", rows({{"a", "b", "", ""}}), custom("\""));
    addRow("line feed as delimiter", "a\nb\rc\r\nd", rows({{"a", "b"}, {"c", "d"}}), custom("\n"));
    addRow("carriage return as delimiter", "a\rb\nc\r\nd", rows({{"a", "b"}, {"c", ""}, {"d", ""}}),
           custom("\r"));

    addRow("leading rows", "x,y,z\n\na,b\n", rows({{"a", "b"}}),
           with([](InputOptions &o) { o.ignoredRows = 2; }));
    addRow("a quoted line end is no row", "\"x\ny\"\na\n", rows({{"a"}}),
           with([](InputOptions &o) { o.ignoredRows = 1; }));
    addRow("more leading rows than there are", "a\nb\n", {},
           with([](InputOptions &o) { o.ignoredRows = 5; }));
    addRow("empty rows dropped", "\na,b\n,\n\n", rows({{"a", "b"}}));
    addRow("empty rows kept", "\na,b\n", rows({{"", ""}, {"a", "b"}}), all);
    addRow("trimmed", " a\u00a0,\" b \"\n \t \n", rows({{"a", "b"}}),
           with([](InputOptions &o) { o.trim = true; }));
    addRow("simplified", " a \t b,\u2003c\u00a0 d\u2003,e f\n", rows({{"a b", "c d", "e f"}}),
           with([](InputOptions &o) { o.simplify = true; }));
    addRow("UTF-16",
           QByteArray("\xff\xfe"
                      "a\0,\0\xac\x20\n\0",
                      10),
           rows({{"a", "\u20ac"}}),
           with([](InputOptions &o) { o.encoding = QStringLiteral("Automatic"); }));
}

void TestDelimitedReader::cutsRows()
{
    QFETCH(QByteArray, bytes);
    QFETCH(InputOptions, options);
    QFETCH(Rows, expected);
    Messages messages;
    QCOMPARE(rowsOf(read(bytes, options, &messages)), expected);
    QVERIFY(!messages.failed);
}

void TestDelimitedReader::takesTheHeader_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("header");
    QTest::addColumn<Rows>("expected");
    QTest::newRow("plain") << QByteArray("a,b\n1,2\n")
                           << QStringList{QStringLiteral("a"), QStringLiteral("b")}
                           << rows({{"1", "2"}});
    QTest::newRow("first kept row")
        << QByteArray("skipped\n,\na,a\n1,2\n")
        << QStringList{QStringLiteral("a"), QStringLiteral("a")} << rows({{"1", "2"}});
    QTest::newRow("shorter than the rows")
        << QByteArray("skipped\na\n1,2\n") << QStringList{QStringLiteral("a"), QString()}
        << rows({{"1", "2"}});
    QTest::newRow("longer than the rows")
        << QByteArray("skipped\na,b\n1\n") << QStringList{QStringLiteral("a"), QStringLiteral("b")}
        << rows({{"1", ""}});
    QTest::newRow("alone") << QByteArray("skipped\na,b")
                           << QStringList{QStringLiteral("a"), QStringLiteral("b")} << Rows();
    QTest::newRow("none") << QByteArray("skipped\n") << QStringList() << Rows();
}

void TestDelimitedReader::takesTheHeader()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QStringList, header);
    QFETCH(Rows, expected);
    InputOptions options = plain();
    options.header = true;
    options.ignoredRows = bytes.startsWith("skipped") ? 1 : 0;
    Messages messages;
    const Dataset dataset = read(bytes, options, &messages);
    QCOMPARE(dataset.header(), header);
    QCOMPARE(dataset.columnCount().value(), header.size());
    QCOMPARE(rowsOf(dataset), expected);
    QVERIFY(!messages.failed);
}

void TestDelimitedReader::notesGuesses()
{
    Messages messages;
    read("a,b;c,d\n", InputOptions(), &messages);
    const QStringList expected{
        QStringLiteral("Encoding=Automatic guesses 'UTF-8'. Set 'Encoding' option to change.\n"),
        QStringLiteral("Delimiter=Automatic guesses 'Comma (,)'. Set 'Delimiter' option to "
                       "change.\nFirst 8 characters contain: 2 Comma (,), 1 Semi-colon (;), "
                       "0 Pipe (|), 0 Caret (^), 0 Tab (\\t), 0 Unit separator (0x1F)\n"),
        QStringLiteral("Quoting=Automatic guesses 'Quoted'. Set 'Quoting' option to change.\n")};
    QCOMPARE(messages.information, expected);
    QVERIFY(messages.warnings.isEmpty());

    messages.clear();
    read("a,b\n", plain(), &messages);
    QVERIFY(messages.information.isEmpty());
}

void TestDelimitedReader::guessesTheDelimiter_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("delimiter");
    const auto addRow = [](const char *name, const char *text, Delimiter delimiter) {
        QTest::newRow(name) << QString::fromUtf8(text) << int(delimiter);
    };
    addRow("nothing", "", Delimiter::Comma);
    addRow("comma before semi-colon", ";;;,,,", Delimiter::Comma);
    addRow("more semi-colons", ",;;", Delimiter::SemiColon);
    addRow("pipe before tab", "\t\t\t|||", Delimiter::Pipe);
    addRow("caret before tab", "\t^", Delimiter::Caret);
    addRow("tab before unit separator", "\x1f\t", Delimiter::Tab);
    addRow("unit separator",
           "a\x1f"
           "b",
           Delimiter::UnitSeparator);
    addRow("quotes do not matter", "\",,,\";;", Delimiter::Comma);
    addRow("colons and spaces never", "a:b:c d e", Delimiter::Comma);
}

void TestDelimitedReader::guessesTheDelimiter()
{
    QFETCH(QString, text);
    QFETCH(int, delimiter);
    QCOMPARE(int(guessDelimiter(text).delimiter), delimiter);
}

void TestDelimitedReader::looksAtTheFirstCharactersOnly()
{
    // Characters of one to four bytes: an emoji counts as two.
    const QString start = QString::fromUtf8("a\u00e9\u20ac\U0001F600|").repeated(700);
    const QByteArray bytes =
        (start.left(4095) + QLatin1String("^;;;;;;;") + start).toUtf8() + QByteArray(2000, ';');
    InputOptions options = plain();
    options.delimiter = Delimiter::Automatic;
    Messages messages;
    read(bytes, options, &messages);
    const auto expected =
        QStringLiteral("First 4,096 characters contain: 0 Comma (,), 0 Semi-colon (;), "
                       "%1 Pipe (|), 1 Caret (^), 0 Tab (\\t), 0 Unit separator (0x1F)\n")
            .arg(start.left(4095).count(QLatin1Char('|')));
    QVERIFY2(messages.information.join(QString()).contains(expected),
             qPrintable(messages.information.join(QString())));
}

void TestDelimitedReader::tellsRaggedAndEmptyRows()
{
    InputOptions options = plain();
    options.header = true;
    options.ignoredRows = 1;
    Messages messages;
    read("x\na,b\n\n1,2\n3\n4,5,6\n,,,,\n7,8,9\n10\n", options, &messages);
    QCOMPARE(messages.information, QStringList{QStringLiteral("2 empty row(s) ignored")});
    const QStringList expected{QStringLiteral("Number of values per row vary:"),
                               QStringLiteral("2 input rows have 1 value: E.g. input row 5"),
                               QStringLiteral("2 input rows have 2 values: E.g. input row 2"),
                               QStringLiteral("2 input rows have 3 values: E.g. input row 6")};
    QCOMPARE(messages.warnings, expected);

    messages.clear();
    options.ignoreEmptyRows = false;
    read("x\na,b\n\n", options, &messages);
    QCOMPARE(messages.warnings.value(1),
             QStringLiteral("1 input row has 1 value: E.g. input row 3"));
    QVERIFY(messages.information.isEmpty());

    messages.clear();
    options.ignoreEmptyRows = true;
    read(QByteArray(1501, '\n'), options, &messages);
    QCOMPARE(messages.information, QStringList{QStringLiteral("1,500 empty row(s) ignored")});
}

void TestDelimitedReader::dropsEmptyColumns()
{
    InputOptions options = plain();
    options.header = true;
    options.ignoreEmptyColumns = true;
    Messages messages;
    const Dataset dataset = read("a,b,c,d\n,1,,\n,,, \n", options, &messages);
    QCOMPARE(dataset.header(), QStringList({QStringLiteral("b"), QStringLiteral("d")}));
    QCOMPARE(rowsOf(dataset), rows({{"1", ""}, {"", " "}}));
    QCOMPARE(read("a,b\n", options, &messages).columnCount().value(), 2);
}

void TestDelimitedReader::countsValuesThatAreNotUtf8()
{
    InputOptions options = plain();
    options.ignoredRows = 1;
    Messages messages;
    const Dataset dataset =
        read("\xff\na\xc3,\xe2\x82\xac,\xff\xfe\n\"b\"\"\x80\",c,\xc3", options, &messages);
    QCOMPARE(rowsOf(dataset),
             rows({{"a\ufffd", "\u20ac", "\ufffd\ufffd"}, {"b\"\ufffd", "c", "\ufffd"}}));
    QCOMPARE(messages.warnings,
             QStringList{QString::fromUtf8("4 value(s) contain bytes that are not valid UTF-8; "
                                           "they were replaced by '\ufffd'.")});

    messages.clear();
    options.encoding = QStringLiteral("Shift_JIS");
    QCOMPARE(rowsOf(read("x\n\x82\xa0,\x82,a", options, &messages)),
             rows({{"\u3042", "\ufffd", "a"}}));
    QCOMPARE(messages.warnings.size(), 1);
    QVERIFY(messages.warnings.first().startsWith(QLatin1String("1 value(s)")));
    QVERIFY(messages.warnings.first().contains(QLatin1String("Shift_JIS")));
}

void TestDelimitedReader::readsLongLines()
{
    // Far longer than a block; the quote is never closed.
    const QByteArray piece = QByteArray(999, 'x') + ',';
    Messages messages;
    const Dataset quoted = read("a,\"" + piece.repeated(20000), plain(), &messages);
    QCOMPARE(quoted.rowCount(), 1);
    QCOMPARE(quoted.columnCount().value(), 2);
    QCOMPARE(quoted.utf8(RowIndex(0), ColIndex(1)).size(), size_t(20000) * 1000);

    const Dataset bare = read(QByteArray(20000000, 'y'), plain(), &messages);
    QCOMPARE(bare.utf8(RowIndex(0), ColIndex(0)).size(), size_t(20000000));
    QVERIFY(messages.warnings.isEmpty());
}

void TestDelimitedReader::readsWideRows()
{
    constexpr int columns = 100000;
    QByteArray header;
    QByteArray row;
    for (int i = 0; i < columns; ++i) {
        header += "c" + QByteArray::number(i) + (i + 1 < columns ? ',' : '\n');
        row += QByteArray::number(i % 7) + (i + 1 < columns ? ',' : '\n');
    }
    InputOptions options = plain();
    options.header = true;
    Messages messages;
    const Dataset dataset = read(header + row + row, options, &messages);
    QCOMPARE(dataset.columnCount().value(), columns);
    QCOMPARE(dataset.rowCount(), 2);
    QCOMPARE(dataset.header().last(), QStringLiteral("c99999"));
    QCOMPARE(dataset.cell(RowIndex(1), ColIndex(columns - 1)), QString::number((columns - 1) % 7));
}

void TestDelimitedReader::refusesEndlesslyWideRows()
{
    Messages messages;
    const Dataset dataset = read("a\n" + QByteArray(1 << 20, ','), plain(), &messages);
    QVERIFY(messages.failed);
    QCOMPARE(messages.warnings,
             QStringList{QStringLiteral("'in.csv' is too big for Tabweave to read.")});
    QVERIFY(dataset.isEmpty());
}

void TestDelimitedReader::readsTheClipboard()
{
    InputOptions options;
    options.medium = Medium::Clipboard;
    options.text = QString::fromUtf8("\ufeffa\tb\n\u00e9\t\"c\n");
    options.encoding = QStringLiteral("UTF-16");
    Messages messages;
    const Dataset dataset = readInput(options, QString(), &messages, Progress());
    QCOMPARE(dataset.header(), QStringList({QStringLiteral("a"), QStringLiteral("b")}));
    QCOMPARE(rowsOf(dataset), rows({{"\u00e9", "\"c"}}));
    QVERIFY(!messages.failed);
    QCOMPARE(messages.information.filter(QStringLiteral("Encoding")), QStringList());
}

void TestDelimitedReader::failsWithAClearText_data()
{
    QTest::addColumn<InputOptions>("options");
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("text");
    QTest::newRow("no path") << plain() << QString() << QStringLiteral("No input file is set.");
    QTest::newRow("missing") << plain() << QStringLiteral("none.csv")
                             << QStringLiteral("Can't open file '%1': ");
    QTest::newRow("folder") << plain() << QStringLiteral(".")
                            << QStringLiteral("Can't open file '%1': ");
}

void TestDelimitedReader::failsWithAClearText()
{
    QFETCH(InputOptions, options);
    QFETCH(QString, path);
    QFETCH(QString, text);
    QTemporaryDir folder;
    const QString absolute = path.isEmpty() ? QString() : folder.filePath(path);
    Messages messages;
    const Dataset dataset = readInput(options, absolute, &messages, Progress());
    QVERIFY(messages.failed);
    QVERIFY(dataset.isEmpty() && !dataset.hasColumns());
    QCOMPARE(messages.warnings.size(), 1);
    const QString start = text.contains(QLatin1String("%1")) ? text.arg(absolute) : text;
    const QString told = messages.warnings.first();
    QVERIFY2(told.contains(start) && told.endsWith(QLatin1Char('.')), qPrintable(told));
}

void TestDelimitedReader::failsWhenTheDiskDoes()
{
    auto device = std::make_unique<Trickle>("a,b\n1,2\n", 3, QStringLiteral("Input/output error"));
    const auto source = TextSource::fromDevice(std::move(device), QStringLiteral("UTF-8"));
    Messages messages;
    const Dataset dataset =
        readDelimitedText(plain(), QStringLiteral("in.csv"), source.get(), &messages, Progress());
    QVERIFY(messages.failed);
    QCOMPARE(messages.warnings,
             QStringList{QStringLiteral("Can't read file 'in.csv': Input/output error.")});
    QVERIFY(dataset.isEmpty());
}

void TestDelimitedReader::stopsWhenAsked()
{
    const QByteArray bytes = QByteArray("a,b\n").repeated(1000000);
    int reports = 0;
    Messages messages;
    const Dataset dataset = read(bytes, plain(), &messages, [&reports](double fraction) {
        Q_ASSERT(fraction >= 0 && fraction <= 1);
        return ++reports < 3;
    });
    QCOMPARE(reports, 3);
    QVERIFY(dataset.isEmpty());
    QVERIFY(!messages.failed);
}

void TestDelimitedReader::letsTheMemoryCeilingThrough()
{
    QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("in.csv"));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write("a,b\n") == 4);
    file.close();
    Messages messages;
    const Progress exceed = [](double) -> bool { throw MaxMemoryException(1, 2); };
    QVERIFY_EXCEPTION_THROWN(readInput(plain(), path, &messages, exceed), MaxMemoryException);
}

TW_TEST_CLASS(TestDelimitedReader)
#include "tst_delimitedreader.moc"

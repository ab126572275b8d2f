#include "messages.h"
#include "outputoptions.h"
#include "outputtesttools.h"
#include "testsupport.h"
#include "textoutput.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextCodec>

using namespace OutputTest;

Q_DECLARE_METATYPE(OutputOptions)
Q_DECLARE_METATYPE(OutputQuoting)

namespace {

OutputOptions optionsWith(OutputQuoting quoting, const QString &delimiter,
                          LineEnding lineEnding = LineEnding::Unix)
{
    OutputOptions options;
    options.quoting = quoting;
    options.delimiter = Delimiter::Custom;
    options.customDelimiter = delimiter;
    options.lineEnding = lineEnding;
    return options;
}

OutputOptions encodedWith(const QString &encoding, bool byteOrderMark)
{
    OutputOptions options;
    options.lineEnding = LineEnding::Windows;
    options.encoding = encoding;
    options.byteOrderMark = byteOrderMark;
    return options;
}

/// Reads quoted text back the plain way: a character at a time.
Rows parsed(const QString &text, const QString &delimiter, const QString &lineEnd)
{
    Rows rows;
    QStringList row;
    QString value;
    bool inQuotes = false;
    for (int i = 0; i < text.size();) {
        const QStringRef rest = text.midRef(i);
        if (rest.startsWith(QLatin1Char('"'))) {
            const bool isDoubled = inQuotes && rest.startsWith(QLatin1String("\"\""));
            if (isDoubled) {
                value += QLatin1Char('"');
            } else {
                inQuotes = !inQuotes;
            }
            i += isDoubled ? 2 : 1;
        } else if (!inQuotes && rest.startsWith(delimiter)) {
            row.append(value);
            value.clear();
            i += delimiter.size();
        } else if (!inQuotes && rest.startsWith(lineEnd)) {
            row.append(value);
            value.clear();
            rows.append(row);
            row.clear();
            i += lineEnd.size();
        } else {
            value += text.at(i);
            ++i;
        }
    }
    return rows;
}

QString randomText(QRandomGenerator *random, const QString &delimiter)
{
    static const QStringList pieces{
        QStringLiteral("\""),  QStringLiteral("\n"),         QStringLiteral("\r"),
        QStringLiteral("\t"),  QStringLiteral(","),          QStringLiteral(" "),
        QStringLiteral("é"),   QStringLiteral("€"),          QStringLiteral("한"),
        QStringLiteral("퟿"), QStringLiteral("\U0001F600"), QString(QChar(0)),
        QString(QChar(0xfeff))};
    static const int lengths[] = {0, 0, 1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 31, 32, 33, 100, 5000};
    const int length = lengths[random->bounded(int(std::size(lengths)))];
    const int specialEvery = random->bounded(2) == 0 ? 1000000 : 1 + random->bounded(20);
    QString text;
    while (text.size() < length) {
        if (random->bounded(specialEvery) != 0 || specialEvery == 1000000) {
            text += QLatin1Char(char('a' + random->bounded(26)));
        } else if (random->bounded(4) == 0) {
            text += delimiter;
        } else {
            text += pieces.at(random->bounded(pieces.size()));
        }
    }
    return text;
}

Rows randomRows(int count, const QString &delimiter, quint32 seed)
{
    QRandomGenerator random(seed);
    Rows rows;
    for (int row = 0; row < count; ++row) {
        QStringList values;
        for (int column = 0; column < 5; ++column) {
            values.append(randomText(&random, delimiter));
        }
        rows.append(values);
    }
    return rows;
}

QString lineOf(const QStringList &values, const QString &delimiter)
{
    return values.join(delimiter) + QLatin1Char('\n');
}

} // namespace

class TestDelimitedWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("a.csv"));
        m_messages.clear();
    }

    void formatsValues_data()
    {
        QTest::addColumn<OutputOptions>("options");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QString>("expected");
        const auto addRow = [](const char *tag, OutputQuoting quoting, const char *delimiter,
                               const char *value, const char *expected) {
            QTest::newRow(tag) << optionsWith(quoting, QString::fromUtf8(delimiter))
                               << QString::fromUtf8(value) << QString::fromUtf8(expected);
        };
        const OutputQuoting asNeeded = OutputQuoting::AsNeeded;
        const OutputQuoting always = OutputQuoting::Always;
        const OutputQuoting never = OutputQuoting::Never;
        addRow("letters", asNeeded, ",", "abc", "abc");
        addRow("empty", asNeeded, ",", "", "");
        addRow("quote", asNeeded, ",", "a\"b", "\"a\"\"b\"");
        addRow("only a quote", asNeeded, ",", "\"", "\"\"\"\"");
        addRow("delimiter", asNeeded, ",", "a,b", "\"a,b\"");
        addRow("another delimiter", asNeeded, ";", "a,b", "a,b");
        addRow("line feed", asNeeded, ",", "a\nb", "\"a\nb\"");
        addRow("carriage return", asNeeded, ",", "a\r", "\"a\r\"");
        addRow("space at the ends", asNeeded, ",", " a ", " a ");
        addRow("wide delimiter", asNeeded, "€", "a€b", "\"a€b\"");
        addRow("begins like the delimiter", asNeeded, "€", "a₭b", "a₭b");
        addRow("delimiter beyond 16 bits", asNeeded, "😀", "a😀", "\"a😀\"");
        addRow("late in a long value", asNeeded, ",", "aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa,",
               "\"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaaa,\"");
        addRow("always: letters", always, ",", "abc", "\"abc\"");
        addRow("always: empty", always, ",", "", "\"\"");
        addRow("always: quote", always, ",", "a\"", "\"a\"\"\"");
        addRow("never: quote", never, ",", "a\"b", "a\"b");
        addRow("never: delimiter", never, ",", "a,b,", "a b ");
        addRow("never: line end", never, ",", "a\r\nb", "a  b");
        addRow("never: other delimiter", never, ";", "a,b", "a,b");
        addRow("never: space as delimiter", never, " ", "a b\r\nc", "a_b__c");
        addRow("never: wide delimiter", never, "€", "a€€₭", "a  ₭");
    }

    void formatsValues()
    {
        QFETCH(OutputOptions, options);
        QFETCH(QString, value);
        QFETCH(QString, expected);
        const QStringList values{value, QStringLiteral("x"), value};
        const QString line =
            lineOf({expected, QStringLiteral("x"), expected}, options.customDelimiter)
                .replace(QLatin1String("x"), options.quoting == OutputQuoting::Always
                                                 ? QStringLiteral("\"x\"")
                                                 : QStringLiteral("x"));
        write(options, tableOf(values, {values}));
        QCOMPARE(QString::fromUtf8(contentOf(m_path)), line + line);
    }

    void countsWhatNeverReplaces()
    {
        const Rows rows{{QStringLiteral("a b"), QStringLiteral("c\r\n d")},
                        {QStringLiteral("ab"), QStringLiteral("\n")}};
        write(optionsWith(OutputQuoting::Never, QStringLiteral(" ")), tableOf({}, rows));
        QCOMPARE(m_messages.warnings,
                 QStringList{QStringLiteral(
                     "Delimiter, Line Feed or Carriage Return characters were found within 3 "
                     "unquoted data value(s). These have been replaced with '_'. You may want to "
                     "use a 'Replace' transform to replace these characters or output the file "
                     "with 'Quoting' set to 'As needed'.")});
        QVERIFY(!m_messages.failed);
    }

    void countsWhatStartsLikeFormula_data()
    {
        QTest::addColumn<QString>("value");
        QTest::addColumn<bool>("isFormula");
        for (const char *value : {"=1+1", "+A1", "-A1", "@SUM(A1)", "\tx", "\r=1", "-", "+44 20",
                                  "--5", "=", "-1.2.3"}) {
            QTest::newRow(qPrintable(QString::fromLatin1(value).toHtmlEscaped()))
                << QString::fromLatin1(value) << true;
        }
        for (const char *value : {"", "a=1", "-5", "+5", "-1,234.50", "-1e-5", " =1", "'=1"}) {
            QTest::newRow(value) << QString::fromLatin1(value) << false;
        }
    }

    void countsWhatStartsLikeFormula()
    {
        QFETCH(QString, value);
        QFETCH(bool, isFormula);
        write(optionsWith(OutputQuoting::AsNeeded, QStringLiteral(";")),
              tableOf({value}, {{value}, {QStringLiteral("x")}, {value}}));
        QCOMPARE(m_messages.information.join(QLatin1Char('|')),
                 isFormula ? QStringLiteral("3 value(s) start like a formula.") : QString());
        QVERIFY(contentOf(m_path).contains(value.toLatin1()));
    }

    void readsBackTheSame_data()
    {
        QTest::addColumn<OutputQuoting>("quoting");
        QTest::addColumn<QString>("delimiter");
        for (const OutputQuoting quoting :
             {OutputQuoting::AsNeeded, OutputQuoting::Always, OutputQuoting::Never}) {
            for (const char *delimiter : {",", "\t", " ", "\x1f", "€", "😀"}) {
                QTest::addRow("quoting %d, delimiter '%s'", int(quoting), delimiter)
                    << quoting << QString::fromUtf8(delimiter);
            }
        }
    }

    void readsBackTheSame()
    {
        QFETCH(OutputQuoting, quoting);
        QFETCH(QString, delimiter);
        Rows rows = randomRows(80, delimiter, 7);
        const Dataset table = tableOf({}, rows);
        if (quoting == OutputQuoting::Never) {
            const QString replacement =
                delimiter == QLatin1String(" ") ? QStringLiteral("_") : QStringLiteral(" ");
            for (QStringList &row : rows) {
                row.replaceInStrings(delimiter, replacement);
                row.replaceInStrings(QStringLiteral("\n"), replacement);
                row.replaceInStrings(QStringLiteral("\r"), replacement);
            }
        }
        for (const LineEnding ending : {LineEnding::Automatic, LineEnding::Unix, LineEnding::OldMac,
                                        LineEnding::RecordSeparator}) {
            write(optionsWith(quoting, delimiter, ending), table);
            const QByteArray bytes = contentOf(m_path);
            const QString text = QTextCodec::codecForName("UTF-8")->toUnicode(
                bytes.startsWith("\xef\xbb\xbf") ? "\xef\xbb\xbf" + bytes : bytes);
            if (quoting == OutputQuoting::Never) {
                QString expected;
                for (const QStringList &row : qAsConst(rows)) {
                    expected += row.join(delimiter) + lineEndingText(ending);
                }
                QCOMPARE(text, expected);
            } else {
                QCOMPARE(parsed(text, delimiter, lineEndingText(ending)), rows);
            }
        }
    }

    void encodes_data()
    {
        QTest::addColumn<OutputOptions>("options");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("expected");
        const auto addRow = [](const char *tag, const char *encoding, bool mark, const char *value,
                               const QByteArray &expected) {
            QTest::newRow(tag) << encodedWith(QString::fromLatin1(encoding), mark)
                               << QString::fromUtf8(value) << expected;
        };
        addRow("UTF-8", "UTF-8", false, "é€", "é€,\r\n");
        addRow("no name", "", false, "é€", "é€,\r\n");
        addRow("UTF-8, mark", "UTF-8", true, "é", "\xef\xbb\xbfé,\r\n");
        addRow("UTF-16LE", "UTF-16LE", false, "é😀",
               QByteArray("\xe9\0\x3d\xd8\x00\xde,\0\r\0\n\0", 12));
        addRow("UTF-16LE, mark", "UTF-16LE", true, "é",
               QByteArray("\xff\xfe\xe9\0,\0\r\0\n\0", 10));
        addRow("UTF-16BE, mark", "UTF-16BE", true, "é",
               QByteArray("\xfe\xff\0\xe9\0,\0\r\0\n", 10));
        addRow("ISO-8859-1", "ISO-8859-1", false, "é", "\xe9,\r\n");
        addRow("ISO-8859-1 has no mark", "ISO-8859-1", true, "é", "\xe9,\r\n");
        addRow("windows-1252", "windows-1252", false, "é€", "\xe9\x80,\r\n");
        addRow("quoted", "ISO-8859-1", false, "é\"", "\"\xe9\"\"\",\r\n");
        addRow("Shift_JIS", "Shift_JIS", false, "日", "\x93\xfa,\r\n");
    }

    void encodes()
    {
        QFETCH(OutputOptions, options);
        QFETCH(QString, value);
        QFETCH(QByteArray, expected);
        write(options, tableOf({}, {{value, QString()}}));
        QCOMPARE(contentOf(m_path), expected);
        QCOMPARE(m_messages.warnings, QStringList());
    }

    void encodesTheSameInBlocks_data()
    {
        QTest::addColumn<QString>("encoding");
        for (const char *encoding : {"UTF-16LE", "UTF-32BE", "GB18030"}) {
            QTest::newRow(encoding) << QString::fromLatin1(encoding);
        }
    }

    // Values that cross the encoder's blocks at any byte of a character.
    void encodesTheSameInBlocks()
    {
        QFETCH(QString, encoding);
        Rows rows;
        for (int i = 0; i < 30; ++i) {
            rows.append(
                {QString(i, QLatin1Char('x')), QStringLiteral("€\U0001F600é").repeated(9000)});
        }
        const Dataset table = tableOf({}, rows);
        write(encodedWith(QStringLiteral("UTF-8"), false), table);
        const QString expected = QString::fromUtf8(contentOf(m_path));
        write(encodedWith(encoding, false), table);
        QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
        const QByteArray bytes = contentOf(m_path);
        QVERIFY(QTextCodec::codecForName(encoding.toLatin1())
                    ->toUnicode(bytes.constData(), bytes.size(), &state) == expected);
        QCOMPARE(m_messages.warnings, QStringList());
    }

    void replacesWhatEncodingCannotHold_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QByteArray>("expected");
        QTest::addColumn<int>("values");
        QTest::newRow("UTF-8") << QStringLiteral("UTF-8") << QByteArray("é€,\"a,😀\",x?\nx,?,?\"y\n")
                               << 3;
        QTest::newRow("ISO-8859-1")
            << QStringLiteral("ISO-8859-1") << QByteArray("\xe9?,\"a,?\",x?\nx,?,?\"y\n") << 5;
        QTest::newRow("windows-1252")
            << QStringLiteral("windows-1252") << QByteArray("\xe9\x80,\"a,?\",x?\nx,?,?\"y\n") << 4;
    }

    void replacesWhatEncodingCannotHold()
    {
        QFETCH(QString, encoding);
        QFETCH(QByteArray, expected);
        QFETCH(int, values);
        const QString high(QChar(0xd83d));
        const QString low(QChar(0xde00));
        const Rows rows{
            {QStringLiteral("é€"), QStringLiteral("a,\U0001F600"), QStringLiteral("x") + low},
            {QStringLiteral("x"), high, low + QStringLiteral("\"y")}};
        OutputOptions options = encodedWith(encoding, false);
        options.lineEnding = LineEnding::Unix;
        write(options, tableOf({}, rows));
        expected.replace("?\"y", "\"?\"\"y\"");
        QCOMPARE(contentOf(m_path), expected);
        QCOMPARE(m_messages.warnings,
                 QStringList{QStringLiteral("%1 value(s) contain characters that encoding '%2' "
                                            "cannot hold.")
                                 .arg(QString::number(values), encoding)});
        QVERIFY(!m_messages.failed);
    }

    void refusesOptionsThatCannotWork_data()
    {
        QTest::addColumn<OutputOptions>("options");
        QTest::addColumn<QString>("reason");
        QTest::newRow("unknown encoding")
            << encodedWith(QStringLiteral("UTF-99"), true) << QStringLiteral("UTF-99");
        OutputOptions options = optionsWith(OutputQuoting::AsNeeded, QStringLiteral("€"));
        options.encoding = QStringLiteral("ISO-8859-1");
        QTest::newRow("delimiter outside the encoding") << options << QStringLiteral("'€'");
        options = optionsWith(OutputQuoting::AsNeeded, QString(QChar(0xd83d)));
        QTest::newRow("half a character as delimiter") << options << QStringLiteral("UTF-8");
    }

    void refusesOptionsThatCannotWork()
    {
        QFETCH(OutputOptions, options);
        QFETCH(QString, reason);
        makeFile(m_path, "old");
        QCOMPARE(int(writeTextFile(options, m_path, QString(), tableOf({}, {{QString()}}),
                                   &m_messages, Progress())),
                 int(WriteResult::Failed));
        QVERIFY(m_messages.failed);
        QVERIFY2(m_messages.warnings.value(0).contains(reason),
                 qPrintable(m_messages.warnings.value(0)));
        QCOMPARE(contentOf(m_path), QByteArray("old"));
    }

    void appends_data()
    {
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<bool>("mark");
        QTest::addColumn<bool>("onlyIfEmpty");
        QTest::addColumn<QByteArray>("expected");
        const auto addRow = [](const char *tag, const QByteArray &old, const char *encoding,
                               bool mark, bool onlyIfEmpty, const QByteArray &expected) {
            QTest::newRow(tag) << old << QString::fromLatin1(encoding) << mark << onlyIfEmpty
                               << expected;
        };
        addRow("after a line end", "x\n", "UTF-8", false, true, "x\n1\n");
        addRow("after a carriage return", "x\r", "UTF-8", false, true, "x\r1\n");
        addRow("after a record separator", "x\x1e", "UTF-8", false, true,
               "x\x1e"
               "1\n");
        addRow("after an open line", "x", "UTF-8", false, true, "x\n1\n");
        addRow("header each time", "x", "UTF-8", false, false, "x\nh\n1\n");
        addRow("to an empty file", "", "UTF-8", false, true, "h\n1\n");
        addRow("to an empty file, with mark", "", "UTF-8", true, true, "\xef\xbb\xbfh\n1\n");
        addRow("to a mark alone", "\xef\xbb\xbf", "UTF-8", true, true, "\xef\xbb\xbfh\n1\n");
        addRow("no mark in the middle", "\xef\xbb\xbfx\n", "UTF-8", true, true,
               "\xef\xbb\xbfx\n1\n");
        addRow("UTF-16LE", QByteArray("\xff\xfex\0\n\0", 6), "UTF-16LE", true, true,
               QByteArray("\xff\xfex\0\n\0001\0\n\0", 10));
        addRow("UTF-16LE, open line", QByteArray("\xff\xfex\0", 4), "UTF-16LE", true, true,
               QByteArray("\xff\xfex\0\n\0001\0\n\0", 10));
        addRow("UTF-16, open line", QByteArray("\xff\xfex\0", 4), "UTF-16", true, true,
               QByteArray("\xff\xfex\0\n\0001\0\n\0", 10));
    }

    void appends()
    {
        QFETCH(QByteArray, old);
        QFETCH(QString, encoding);
        QFETCH(bool, mark);
        QFETCH(bool, onlyIfEmpty);
        QFETCH(QByteArray, expected);
        makeFile(m_path, old);
        OutputOptions options = encodedWith(encoding, mark);
        options.lineEnding = LineEnding::Unix;
        options.writeMode = WriteMode::Append;
        options.headerOnlyIfEmpty = onlyIfEmpty;
        write(options, tableOf({QStringLiteral("h")}, {{QStringLiteral("1")}}));
        QCOMPARE(contentOf(m_path), expected);
    }

    void appendingNothingChangesNothing()
    {
        makeFile(m_path, "x");
        OutputOptions options;
        options.writeMode = WriteMode::Append;
        options.headerOnlyIfEmpty = true;
        write(options, tableOf({QStringLiteral("h")}, {}));
        QCOMPARE(contentOf(m_path), QByteArray("x"));
    }

    void writesHeader_data()
    {
        QTest::addColumn<QStringList>("header");
        QTest::addColumn<Rows>("rows");
        QTest::addColumn<bool>("writeHeader");
        QTest::addColumn<QByteArray>("expected");
        const QStringList names{QStringLiteral("a"), QStringLiteral("b,c")};
        const Rows rows{{QStringLiteral("1"), QStringLiteral("2")}};
        QTest::newRow("on") << names << rows << true << QByteArray("a,\"b,c\"\r\n1,2\r\n");
        QTest::newRow("off") << names << rows << false << QByteArray("1,2\r\n");
        QTest::newRow("none") << QStringList() << rows << true << QByteArray("1,2\r\n");
        QTest::newRow("no rows") << names << Rows() << true << QByteArray("a,\"b,c\"\r\n");
        QTest::newRow("nothing at all") << QStringList() << Rows() << true << QByteArray();
        QTest::newRow("one empty column")
            << QStringList() << Rows{{QString()}, {QString()}} << true << QByteArray("\r\n\r\n");
    }

    void writesHeader()
    {
        QFETCH(QStringList, header);
        QFETCH(Rows, rows);
        QFETCH(bool, writeHeader);
        QFETCH(QByteArray, expected);
        OutputOptions options;
        options.writeHeader = writeHeader;
        write(options, tableOf(header, rows));
        QCOMPARE(contentOf(m_path), expected);
    }

    void rowsWithoutColumnsWriteNothing()
    {
        Dataset table = tableOf({}, {{QStringLiteral("1")}});
        table.setColumnCount(ColIndex(0));
        write(OutputOptions(), table);
        QCOMPARE(contentOf(m_path), QByteArray());
    }

    void writesManyColumnsAndHugeValues()
    {
        QStringList wide;
        for (int i = 0; i < 20000; ++i) {
            wide.append(QString::number(i));
        }
        OutputOptions options;
        options.lineEnding = LineEnding::Unix;
        write(options, tableOf({}, {wide, wide}));
        const QByteArray line = lineOf(wide, QStringLiteral(",")).toLatin1();
        QCOMPARE(contentOf(m_path), line + line);

        const QString huge = QStringLiteral("é\"x").repeated(2000000);
        write(options, tableOf({}, {{huge}}));
        QVERIFY(contentOf(m_path) == "\"" + QByteArray("é\"\"x").repeated(2000000) + "\"\n");
    }

    void stoppingLeavesOldFile()
    {
        makeFile(m_path, "old");
        Rows rows;
        for (int i = 0; i < 3500; ++i) {
            rows.append({QString::number(i)});
        }
        QVector<double> reported;
        const Progress progress = [&](double fraction) {
            reported.append(fraction);
            return reported.size() < 3;
        };
        QCOMPARE(int(writeTextFile(OutputOptions(), m_path, QString(), tableOf({}, rows),
                                   &m_messages, progress)),
                 int(WriteResult::Stopped));
        QCOMPARE(reported, (QVector<double>{0, 1000.0 / 3500, 2000.0 / 3500}));
        QCOMPARE(contentOf(m_path), QByteArray("old"));
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
        QVERIFY(!m_messages.failed);
    }

private:
    void write(const OutputOptions &options, const Dataset &table)
    {
        const WriteResult result =
            writeTextFile(options, m_path, QString(), table, &m_messages, Progress());
        QVERIFY2(result == WriteResult::Written, qPrintable(m_messages.warnings.value(0)));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    Messages m_messages;
};

TW_TEST_CLASS(TestDelimitedWriter)
#include "tst_delimitedwriter.moc"

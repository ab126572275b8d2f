#include "messages.h"
#include "outputoptions.h"
#include "outputtesttools.h"
#include "testsupport.h"
#include "textoutput.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

using namespace OutputTest;

Q_DECLARE_METATYPE(LineEnding)

namespace {

QString utf8(const char *text)
{
    return QString::fromUtf8(text);
}

/// A table of one column.
Dataset columnOf(const QString &name, const QStringList &values)
{
    Rows rows;
    for (const QString &value : values) {
        rows.append({value});
    }
    return tableOf({name}, rows);
}

} // namespace

class TestJsonWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(QStringLiteral("a.json"));
        m_options = OutputOptions();
        m_options.fileType = FileType::Json;
        m_options.lineEnding = LineEnding::Unix;
        m_messages.clear();
    }

    void layout_data()
    {
        QTest::addColumn<QStringList>("header");
        QTest::addColumn<Rows>("rows");
        QTest::addColumn<bool>("removeEmpty");
        QTest::addColumn<QByteArray>("expected");
        const QStringList names{utf8("a"), utf8("b")};
        const Rows rows{{utf8("1"), utf8("x")}, {QString(), QString()}, {utf8("2"), QString()}};
        QTest::newRow("rows") << names << rows << false
                              << QByteArray("[\n  {\n    \"a\": 1,\n    \"b\": \"x\"\n  },\n"
                                            "  {\n    \"a\": null,\n    \"b\": null\n  },\n"
                                            "  {\n    \"a\": 2,\n    \"b\": null\n  }\n]\n");
        QTest::newRow("without empty values")
            << names << rows << true
            << QByteArray("[\n  {\n    \"a\": 1,\n    \"b\": \"x\"\n  },\n  {\n\n  },\n"
                          "  {\n    \"a\": 2\n  }\n]\n");
        QTest::newRow("no rows") << names << Rows() << false << QByteArray("[\n]\n");
        QTest::newRow("nothing at all") << QStringList() << Rows() << false << QByteArray("[\n]\n");
        QTest::newRow("no header") << QStringList() << Rows{{utf8("x")}} << false
                                   << QByteArray("[\n  {\n    \"Column 1\": \"x\"\n  }\n]\n");
        QTest::newRow("names to escape")
            << QStringList{utf8("a\"\\\n"), QString()} << Rows{{utf8("x"), utf8("y")}} << false
            << QByteArray("[\n  {\n    \"a\\\"\\\\\\n\": \"x\",\n    \"\": \"y\"\n  }\n]\n");
    }

    void layout()
    {
        QFETCH(QStringList, header);
        QFETCH(Rows, rows);
        QFETCH(bool, removeEmpty);
        QFETCH(QByteArray, expected);
        m_options.removeEmpty = removeEmpty;
        write(tableOf(header, rows));
        QCOMPARE(contentOf(m_path), expected);
        QCOMPARE(m_messages.warnings, QStringList());
    }

    void repeatedNamesAreToldApart()
    {
        write(tableOf({utf8("a"), utf8("a"), utf8("a_2"), utf8("a"), utf8("b"), utf8("a_2")},
                      {{utf8("1"), utf8("2"), utf8("3"), utf8("4"), utf8("5"), utf8("6")}}));
        const QJsonObject row = QJsonDocument::fromJson(contentOf(m_path)).array().at(0).toObject();
        QCOMPARE(row.keys().join(QLatin1Char(' ')), utf8("a a_2 a_2_2 a_3 a_4 b"));
        QCOMPARE(row.value(utf8("a_2")).toInt(), 3);
        QCOMPARE(m_messages.warnings,
                 QStringList{utf8("3 column name(s) are repeated. They are written with a number, "
                                  "as in 'a_3'.")});
    }

    void automaticTypes_data()
    {
        QTest::addColumn<QStringList>("values");
        QTest::addColumn<QString>("type");
        const auto addRow = [](const char *values, const char *type) {
            QTest::newRow(values) << utf8(values).split(QLatin1Char('|')) << utf8(type);
        };
        addRow("1|-2|3.50||0|1e5|1E-5|-0.5", "Number");
        addRow("007", "String");
        addRow("-0", "String");
        addRow("+5", "String");
        addRow(".5", "String");
        addRow("5.", "String");
        addRow("1,234", "String");
        addRow("1 ", "String");
        addRow("1|a", "String");
        addRow("1e", "String");
        addRow("1e400", "String");
        addRow("123456789012345", "Number");
        addRow("1234567890123456", "String");
        addRow("NaN", "String");
        addRow("true||false", "Boolean");
        addRow("true|TRUE", "String");
        addRow("true|1", "String");
        addRow("|", "String");
    }

    void automaticTypes()
    {
        QFETCH(QStringList, values);
        QFETCH(QString, type);
        write(columnOf(utf8("n"), values));
        QCOMPARE(m_messages.information,
                 QStringList{utf8("Value types=Automatic sets JSON column types as:\nn: %1\n"
                                  "Set 'Value types' option to change.\n")
                                 .arg(type)});
        const QJsonArray rows = QJsonDocument::fromJson(contentOf(m_path)).array();
        QCOMPARE(rows.size(), values.size());
        for (int i = 0; i < rows.size(); ++i) {
            const QJsonValue value = rows.at(i).toObject().value(utf8("n"));
            const QJsonValue::Type expected = values.at(i).isEmpty()    ? QJsonValue::Null
                                              : type == utf8("Number")  ? QJsonValue::Double
                                              : type == utf8("Boolean") ? QJsonValue::Bool
                                                                        : QJsonValue::String;
            QCOMPARE(value.type(), expected);
            QVERIFY(expected == QJsonValue::Null ||
                    contentOf(m_path).contains(": " + (expected == QJsonValue::String
                                                           ? '"' + values.at(i).toUtf8() + '"'
                                                           : values.at(i).toUtf8())));
        }
    }

    void noteListsTenColumns()
    {
        QStringList names;
        QStringList row;
        QString listed;
        for (int i = 0; i < 12; ++i) {
            names.append(utf8("c%1").arg(i));
            row.append(QString::number(i));
            listed += i < 10 ? utf8("c%1: Number\n").arg(i) : QString();
        }
        write(tableOf(names, {row}));
        QCOMPARE(m_messages.information.first(),
                 utf8("Value types=Automatic sets JSON column types as:\n") + listed +
                     utf8("+ 2 other JSON type columns\nSet 'Value types' option to change.\n"));
    }

    void manualTypes_data()
    {
        QTest::addColumn<QString>("type");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("expected");
        QTest::addColumn<bool>("fits");
        const auto addRow = [](const char *type, const char *value, const char *expected,
                               bool fits = true) {
            QTest::addRow("%s %s", type, value)
                << utf8(type) << utf8(value) << QByteArray(expected) << fits;
        };
        addRow("Boolean", "TRUE", "true");
        addRow("Boolean", " false", "false");
        addRow("Boolean", "yes", "\"yes\"", false);
        addRow("Boolean", "", "null");
        addRow("Number", "1.50", "1.50");
        addRow("Number", "007", "7");
        addRow("Number", "+1,234.5", "1234.5");
        addRow("Number", "12345678901234567890", "12345678901234567890");
        addRow("Number", "x\"", "\"x\\\"\"", false);
        addRow("Number", "NaN", "\"NaN\"", false);
        addRow("Number", "", "null");
        addRow("String", "1", "\"1\"");
        addRow("String", "", "null");
        addRow("Raw data", "{\"b\": [1, \"é\"]}", "{\"b\": [1, \"é\"]}");
        addRow("Raw data", "1 2", "1 2", false);
        addRow("Raw data", "", "null");
        addRow("Automatic", "1", "1");
        addRow("no such type", "1", "1");
    }

    void manualTypes()
    {
        QFETCH(QString, type);
        QFETCH(QString, value);
        QFETCH(QByteArray, expected);
        QFETCH(bool, fits);
        m_options.jsonTypes = 1;
        m_options.jsonManualColumnTypes = QStringList{type};
        write(columnOf(utf8("n"), {value, value}));
        const QByteArray row = "  {\n    \"n\": " + expected + "\n  }";
        QCOMPARE(contentOf(m_path), "[\n" + row + ",\n" + row + "\n]\n");
        QCOMPARE(m_messages.warnings.join(QLatin1Char('|')),
                 fits ? QString() : utf8("'%1' not of type %2 in column n.").arg(value, type));
        QVERIFY(!m_messages.failed);
    }

    void misfitsAreToldUpToAHundred()
    {
        m_options.jsonTypes = 1;
        m_options.jsonManualColumnTypes = QStringList{utf8("Number")};
        QStringList values;
        for (int i = 0; i < 150; ++i) {
            values.append(utf8("x%1").arg(i));
        }
        write(columnOf(utf8("n"), values));
        QCOMPARE(m_messages.warnings.size(), 101);
        QCOMPARE(m_messages.warnings.last(), utf8("50 more value(s) not of their column's type."));
    }

    void escapes_data()
    {
        QTest::addColumn<QString>("encoding");
        QTest::addColumn<QString>("value");
        QTest::addColumn<QByteArray>("expected");
        const QString high(QChar(0xd83d));
        QTest::newRow("syntax") << utf8("UTF-8") << utf8("a\"b\\c</script>")
                                << QByteArray("a\\\"b\\\\c</script>");
        QTest::newRow("controls") << utf8("UTF-8") << utf8("\b\f\n\r\t\x01\x1f\x7f") + QChar(0)
                                  << QByteArray("\\b\\f\\n\\r\\t\\u0001\\u001f\x7f\\u0000");
        QTest::newRow("control late in a long value")
            << utf8("UTF-8") << utf8("abcdefghijklmnopqrstuvwxyz\x1e")
            << QByteArray("abcdefghijklmnopqrstuvwxyz\\u001e");
        QTest::newRow("not ASCII") << utf8("UTF-8") << utf8("é€😀한") << QByteArray("é€😀한");
        QTest::newRow("half a character")
            << utf8("UTF-8") << high + utf8("x") << QByteArray("\\ud83dx");
        QTest::newRow("outside the encoding")
            << utf8("ISO-8859-1") << utf8("é€😀") << QByteArray("\xe9\\u20ac\\ud83d\\ude00");
    }

    void escapes()
    {
        QFETCH(QString, encoding);
        QFETCH(QString, value);
        QFETCH(QByteArray, expected);
        m_options.encoding = encoding;
        write(columnOf(value, {value}));
        QCOMPARE(contentOf(m_path),
                 "[\n  {\n    \"" + expected + "\": \"" + expected + "\"\n  }\n]\n");
        QCOMPARE(m_messages.warnings, QStringList());
    }

    void lineEndings_data()
    {
        QTest::addColumn<LineEnding>("ending");
        QTest::addColumn<QByteArray>("lineEnd");
        QTest::newRow("automatic") << LineEnding::Automatic << QByteArray("\r\n");
        QTest::newRow("CR") << LineEnding::OldMac << QByteArray("\r");
        QTest::newRow("not in JSON") << LineEnding::RecordSeparator << QByteArray("\n");
    }

    void lineEndings()
    {
        QFETCH(LineEnding, ending);
        QFETCH(QByteArray, lineEnd);
        m_options.lineEnding = ending;
        m_options.encoding = utf8("UTF-16BE");
        m_options.byteOrderMark = true;
        write(columnOf(utf8("n"), {utf8("é")}));
        const QByteArray text =
            QByteArray("\xef\xbb\xbf[\n  {\n    \"n\": \"é\"\n  }\n]\n").replace("\n", lineEnd);
        QByteArray expected;
        for (const QChar c : QString::fromUtf8("\xef\xbb\xbf" + text)) {
            expected += char(c.unicode() >> 8);
            expected += char(c.unicode() & 0xff);
        }
        QCOMPARE(contentOf(m_path), expected);
        QCOMPARE(m_messages.warnings.size(), ending == LineEnding::RecordSeparator ? 1 : 0);
    }

    void appends_data()
    {
        QTest::addColumn<QByteArray>("old");
        QTest::addColumn<QByteArray>("expected");
        const QByteArray row = "  {\n    \"n\": 1\n  }";
        const auto addRow = [](const char *tag, const QByteArray &old, const QByteArray &expected) {
            QTest::newRow(tag) << old << expected;
        };
        addRow("empty file", "", "[\n" + row + "\n]\n");
        addRow("byte-order mark", "\xef\xbb\xbf", "\xef\xbb\xbf[\n" + row + "\n]\n");
        addRow("rows", "[\n" + row + "\n]\n", "[\n" + row + ",\n" + row + "\n]\n");
        addRow("rows after a mark", "\xef\xbb\xbf[\n" + row + "\n]\n",
               "\xef\xbb\xbf[\n" + row + ",\n" + row + "\n]\n");
        addRow("no rows", "[\n]\n", "[\n" + row + "\n]\n");
        addRow("one line", " [{\"n\":2}] ", " [{\"n\":2},\n" + row + "] ");
        addRow("empty line", "[]", "[\n" + row + "]");
        addRow("object", "{\"a\": [{}]}", QByteArray());
        addRow("numbers", "[1]", QByteArray());
        addRow("arrays", "[[{}]]", QByteArray());
        addRow("text", "[{}] x", QByteArray());
        addRow("cut off", "[{", QByteArray());
    }

    void appends()
    {
        QFETCH(QByteArray, old);
        QFETCH(QByteArray, expected);
        makeFile(m_path, old);
        m_options.writeMode = WriteMode::Append;
        const WriteResult result = writeTextFile(m_options, m_path, QString(),
                                                 columnOf(utf8("n"), {utf8("1")}), &m_messages, {});
        QCOMPARE(result == WriteResult::Failed, expected.isEmpty());
        QCOMPARE(m_messages.failed, expected.isEmpty());
        QCOMPARE(contentOf(m_path), expected.isEmpty() ? old : expected);
        QCOMPARE(namesIn(m_folder->path()).size(), 1);
    }

    void appendsInTheFilesEncoding()
    {
        m_options.encoding = utf8("UTF-16LE");
        m_options.byteOrderMark = true;
        m_options.writeMode = WriteMode::Append;
        Rows rows;
        for (int i = 0; i < 9000; ++i) {
            rows.append({utf8("€%1").arg(i)});
        }
        write(tableOf({utf8("n")}, rows));
        const int single = contentOf(m_path).size();
        write(tableOf({utf8("n")}, rows));
        const QByteArray bytes = contentOf(m_path);
        const QString text = QString::fromUtf16(
            reinterpret_cast<const char16_t *>(bytes.constData()) + 1, bytes.size() / 2 - 1);
        QVERIFY(bytes.size() > 2 * single - 20);
        const QJsonArray array = QJsonDocument::fromJson(text.toUtf8()).array();
        QCOMPARE(array.size(), 18000);
        QCOMPARE(array.at(17999), array.at(8999));

        m_options.encoding = utf8("UTF-8");
        m_messages.clear();
        QCOMPARE(writeTextFile(m_options, m_path, QString(), tableOf({utf8("n")}, rows),
                               &m_messages, {}),
                 WriteResult::Failed);
        QCOMPARE(contentOf(m_path), bytes);
    }

    void manyColumnsAndHugeValues()
    {
        QStringList names;
        QStringList values;
        for (int i = 0; i < 20000; ++i) {
            names.append(utf8("name"));
            values.append(utf8("v%1").arg(i));
        }
        values[7] = utf8("é\"").repeated(1000000);
        write(tableOf(names, {values, values}));
        const QJsonArray rows = QJsonDocument::fromJson(contentOf(m_path)).array();
        QCOMPARE(rows.size(), 2);
        const QJsonObject row = rows.at(1).toObject();
        QCOMPARE(row.size(), 20000);
        QVERIFY(row.value(utf8("name_8")).toString() == values.at(7));
        QCOMPARE(row.value(utf8("name_20000")).toString(), utf8("v19999"));
    }

private:
    void write(const Dataset &table)
    {
        const WriteResult result =
            writeTextFile(m_options, m_path, utf8("title"), table, &m_messages, Progress());
        QVERIFY2(result == WriteResult::Written, qPrintable(m_messages.warnings.value(0)));
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_path;
    OutputOptions m_options;
    Messages m_messages;
};

TW_TEST_CLASS(TestJsonWriter)
#include "tst_jsonwriter.moc"

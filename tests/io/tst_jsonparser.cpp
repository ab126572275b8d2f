#include "jsonparser.h"
#include "testsupport.h"
#include "textarena.h"
#include "utf8.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <random>
#ifdef __SANITIZE_ADDRESS__
#include <sanitizer/lsan_interface.h>
#endif

namespace {

/// Builds the tree that the parser does without, to compare it.
class TreeBuilder final : public JsonHandler
{
public:
    bool beginObject() override { return open(); }
    bool key(std::string_view name) override
    {
        m_open.last().key = Utf8::decoded(name);
        return true;
    }
    bool endObject() override { return close(m_open.last().object); }
    bool beginArray() override { return open(); }
    bool endArray() override { return close(m_open.last().array); }
    bool value(std::string_view text) override { return add(Utf8::decoded(text)); }
    bool null() override { return add(QJsonValue()); }

    QJsonValue top;

private:
    struct Level
    {
        QJsonObject object;
        QJsonArray array;
        QString key;
    };
    bool open()
    {
        m_open.append(Level());
        return true;
    }
    bool close(const QJsonValue &value)
    {
        m_open.removeLast();
        return add(value);
    }
    bool add(const QJsonValue &value)
    {
        if (m_open.isEmpty()) {
            top = value;
        } else {
            m_open.last().array.append(value);
            m_open.last().object.insert(m_open.last().key, value);
        }
        return true;
    }
    QList<Level> m_open;
};

/// Qt's tree with the texts that the parser gives.
QJsonValue asTexts(const QJsonValue &value)
{
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue &element : value.toArray()) {
            array.append(asTexts(element));
        }
        return array;
    }
    if (value.isObject()) {
        QJsonObject object = value.toObject();
        for (auto member = object.begin(); member != object.end(); ++member) {
            *member = asTexts(*member);
        }
        return object;
    }
    if (value.isBool()) {
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    }
    return value.isDouble() ? QJsonValue(QString::number(value.toDouble())) : value;
}

/// Numbers as Qt writes them; the parser keeps their text.
QJsonValue withPlainNumbers(const QJsonValue &value)
{
    if (value.isArray()) {
        QJsonArray array;
        for (const QJsonValue &element : value.toArray()) {
            array.append(withPlainNumbers(element));
        }
        return array;
    }
    if (value.isObject()) {
        QJsonObject object = value.toObject();
        for (auto member = object.begin(); member != object.end(); ++member) {
            *member = withPlainNumbers(*member);
        }
        return object;
    }
    bool isNumber = false;
    const double number = value.toString().toDouble(&isNumber);
    return isNumber ? QJsonValue(QString::number(number)) : value;
}

/// What differs between the parser and Qt on a text; empty when nothing does.
QString difference(const QByteArray &text)
{
    TreeBuilder builder;
    TextArena arena;
    JsonParser parser({text.constData(), size_t(text.size())}, &builder, &arena);
    const JsonParser::Outcome outcome = parser.parse();
#ifdef __SANITIZE_ADDRESS__
    const __lsan::ScopedDisabler qtLeaksOnSomeDamagedTexts;
#endif
    QJsonParseError expected{};
    const QJsonDocument document = QJsonDocument::fromJson(text, &expected);
    const bool done = outcome == JsonParser::Outcome::Done;
    if (expected.error == QJsonParseError::IllegalNumber && done) {
        return QString(); // too big for Qt
    }
    if (expected.error != parser.errorCode() ||
        (expected.error != QJsonParseError::NoError && expected.offset != parser.position())) {
        return QStringLiteral("%1 at %2, Qt says %3 at %4")
            .arg(QString::number(int(parser.errorCode())), QString::number(parser.position()),
                 QString::number(int(expected.error)), QString::number(expected.offset));
    }
    if (!done) {
        return expected.errorString() == parser.errorText() ? QString()
                                                            : QStringLiteral("other text");
    }
    const QJsonValue tree =
        document.isArray() ? QJsonValue(document.array()) : QJsonValue(document.object());
    return withPlainNumbers(builder.top) == withPlainNumbers(asTexts(tree))
               ? QString()
               : QStringLiteral("another tree");
}

} // namespace

class TestJsonParser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void agreesWithQt_data();
    void agreesWithQt();
    void agreesWithQtOnDamagedTexts();
};

void TestJsonParser::agreesWithQt_data()
{
    QTest::addColumn<QByteArray>("text");
    const QList<QByteArray> texts = {"",
                                     " ",
                                     "5",
                                     "\"a\"",
                                     "true",
                                     "[",
                                     "{",
                                     "]",
                                     "[1",
                                     "[1,",
                                     "[1,]",
                                     "[,1]",
                                     "[1 2]",
                                     "[1]x",
                                     "[01]",
                                     "[-]",
                                     "[.5]",
                                     "[5.]",
                                     "[-.5e1]",
                                     "[1e]",
                                     "[+1]",
                                     "[1.5E+3, -0]",
                                     "[nul]",
                                     "[nulL]",
                                     "[null",
                                     "[true",
                                     "[false ",
                                     "[truex]",
                                     "{\"a\"",
                                     "{\"a\":",
                                     "{\"a\":1",
                                     "{\"a\":1,",
                                     "{\"a\":1,}",
                                     "{\"a\":,}",
                                     "{\"a\" 1}",
                                     "{1:2}",
                                     "{\"a\":1 \"b\":2}",
                                     "[\"abc",
                                     "[\"abc\"",
                                     "[\"a\\",
                                     "[\"a\\\"",
                                     "[\"\\u12\"]",
                                     "[\"\\u12",
                                     "[\"\\u00e4\\n\\/\\b\\f\\r\\t\\\\\"]",
                                     "[\"\\q\"]",
                                     "[\"\\\xc3\xa4\"]",
                                     "[\"\\ud83d\\ude00\"]",
                                     "[\"\\ud83dx\\ude00\"]",
                                     "[\"\\ud83d\\ud83d\\ude00\"]",
                                     "[\"\\ud800\"]",
                                     "[\"\\ud83d\\u12",
                                     "[\"a\tb\nc\"]",
                                     "[\"a\\u0000b\"]",
                                     "\xef\xbb\xbf[1]",
                                     "[]\xef\xbb\xbf",
                                     "{\"a\":1,\"a\":2}",
                                     "[{},[]]",
                                     "{\"\":{\"\":[]}}",
                                     "[1]\n[2]",
                                     QByteArray(1024, '[') + QByteArray(1024, ']'),
                                     QByteArray(1025, '['),
                                     QByteArray(20000, '['),
                                     "[\"" + QByteArray(70000, 'x') + "\\n\"]"};
    for (const QByteArray &text : texts) {
        QTest::newRow(text.left(40).constData()) << text;
    }
}

void TestJsonParser::agreesWithQt()
{
    QFETCH(QByteArray, text);
    QCOMPARE(difference(text), QString());
}

void TestJsonParser::agreesWithQtOnDamagedTexts()
{
    const QByteArray sound =
        "{\"a\": [1, -2.50, 3e5, true, null, \"x\\u00e4\\n\\ud83d\\ude00\"],\r\n"
        " \"b\\\"\": {\"c\": false, \"d\": [], \"e\": {}}, \"f\": [[\"\"], {}]}";
    const QByteArray pieces = "[]{},:\"\\ua0e.-+ntf1 5\n";
    std::mt19937 random(4711);
    const auto below = [&random](int limit) { return int(random() % uint(limit)); };
    for (int i = 0; i < 40000; ++i) {
        QByteArray text = sound;
        for (int change = below(4); change >= 0; --change) {
            const int at = below(text.size());
            switch (below(3)) {
            case 0:
                text[at] = pieces.at(below(pieces.size()));
                break;
            case 1:
                text.insert(at, pieces.at(below(pieces.size())));
                break;
            default:
                text.remove(at, 1 + below(3));
            }
        }
        if (below(4) == 0) {
            text.truncate(below(text.size()));
        }
        const QString found = difference(text);
        QVERIFY2(found.isEmpty(), qPrintable(found + ": " + QString::fromUtf8(text)));
    }
}

TW_TEST_CLASS(TestJsonParser)
#include "tst_jsonparser.moc"

#include "testsupport.h"
#include "textdecoder.h"
#include "trickle.h"
#include "utf8.h"

#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QTextCodec>
#include <array>

namespace {

struct Read
{
    QString text;
    bool clean = true;
};

Read readAll(TextSource *source)
{
    std::string bytes;
    Read result;
    std::array<char, 16> block;
    while (true) {
        const qint64 count = source->read(block.data(), block.size());
        if (count <= 0) {
            break;
        }
        bytes.append(block.data(), size_t(count));
        result.clean = result.clean && source->isClean();
    }
    result.text = Utf8::decoded(source->mended(bytes).value_or(bytes));
    return result;
}

Read decoded(const QByteArray &bytes, const QString &encoding, int most)
{
    return readAll(TextSource::fromDevice(std::make_unique<Trickle>(bytes, most), encoding).get());
}

/// The text with a byte-order mark, in "UTF-16LE", "UTF-16BE", "UTF-32LE" or "UTF-32BE".
QByteArray withMark(const char *encoding, const QString &text)
{
    const bool wide = encoding[4] == '3';
    const bool littleEnd = encoding[6] == 'L';
    QVector<uint> units{QChar::ByteOrderMark};
    if (wide) {
        units += text.toUcs4();
    } else {
        std::transform(text.begin(), text.end(), std::back_inserter(units),
                       [](QChar c) { return uint(c.unicode()); });
    }
    QByteArray bytes;
    for (const uint unit : qAsConst(units)) {
        const int size = wide ? 4 : 2;
        for (int i = 0; i < size; ++i) {
            bytes.append(char(unit >> 8 * (littleEnd ? i : size - 1 - i)));
        }
    }
    return bytes;
}

const QString automatic = QStringLiteral("Automatic");
const QString smiley = QString::fromUtf8("a\u00e9\U0001F600,\n\u20ac");

} // namespace

class TestTextDecoder : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void decodes_data();
    void decodes();
    void replacesWhatIsNotUtf8AsTheCodecDoes();
    void keepsUnpairedSurrogatesOfTheClipboard();
    void tellsFailures();
};

void TestTextDecoder::decodes_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("encoding");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("clean");
    const auto addRow = [](const char *name, const QByteArray &bytes, const char *encoding,
                           const QString &text, bool clean = true) {
        QTest::newRow(name) << bytes << QString::fromLatin1(encoding) << text << clean;
    };
    const QString bad = QString(QChar(QChar::ReplacementCharacter));
    const QString mark = QString(QChar(QChar::ByteOrderMark));
    const QByteArray utf8 = smiley.toUtf8();
    addRow("nothing", "", "Automatic", QString());
    addRow("only a mark", "\xef\xbb\xbf", "Automatic", QString());
    addRow("half a mark", "\xef\xbb", "Automatic", bad + bad, false);
    addRow("UTF-8", utf8, "Automatic", smiley);
    addRow("no encoding", utf8, "", smiley);
    addRow("UTF-8 with mark", "\xef\xbb\xbf" + utf8, "Automatic", smiley);
    addRow("explicit UTF-8 with mark", "\xef\xbb\xbf" + utf8, "UTF-8", smiley);
    addRow("unknown encoding", utf8, "no such", smiley);
    for (const char *codec : {"UTF-16LE", "UTF-16BE", "UTF-32LE", "UTF-32BE"}) {
        addRow(codec, withMark(codec, smiley), "Automatic", smiley);
        QTest::newRow(qPrintable(QLatin1String("explicit ") + QLatin1String(codec)))
            << withMark(codec, smiley) << QString::fromLatin1(codec) << smiley << true;
        QTest::newRow(qPrintable(QLatin1String("without mark ") + QLatin1String(codec)))
            << withMark(codec, smiley).mid(codec[4] == '1' ? 2 : 4) << QString::fromLatin1(codec)
            << smiley << true;
    }
    addRow("explicit UTF-16, big end first", withMark("UTF-16BE", smiley), "UTF-16", smiley);
    addRow("a mark inside", withMark("UTF-16LE", QLatin1Char('a') + mark), "Automatic",
           QLatin1Char('a') + mark);
    addRow("UTF-16 without mark is UTF-8", QByteArray("a\0,\0", 4), "Automatic",
           QString::fromLatin1("a\0,\0", 4));
    addRow("UTF-16 mark, UTF-8 asked",
           "\xff\xfe"
           "a",
           "UTF-8", bad + bad + QLatin1Char('a'), false);
    addRow("UTF-16 cut", withMark("UTF-16LE", QStringLiteral("ab")) + "c", "Automatic",
           QStringLiteral("ab") + bad, false);
    addRow("UTF-16 with U+FFFD of its own", withMark("UTF-16LE", bad), "Automatic", bad);
    addRow("UTF-16 with half a pair", withMark("UTF-16LE", QString()) + QByteArray("\0\xd8", 2),
           "Automatic", QString(QChar(0xd800)));
    addRow("UTF-8 cut", "a\xf0\x9f\x98", "Automatic", QLatin1Char('a') + bad + bad + bad, false);
    addRow("Latin 1", "\xe9\xff", "ISO-8859-1", QString::fromUtf8("\u00e9\u00ff"));
    addRow("Shift JIS",
           "\x82\xa0"
           "a",
           "Shift_JIS", QString::fromUtf8("\u3042a"));
    addRow("Shift JIS damaged", "\x82,a", "Shift_JIS", bad + QStringLiteral(",a"), false);
    addRow("Shift JIS cut", "a\x82", "Shift_JIS", QLatin1Char('a') + bad, false);
    addRow("EUC cut",
           "\xa4\xa2"
           "a\xa4",
           "EUC-JP", QString::fromUtf8("\u3042a") + bad, false);
    addRow("not ASCII", "a\xff", "US-ASCII", QLatin1Char('a') + bad, false);
}

void TestTextDecoder::decodes()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, encoding);
    QFETCH(QString, text);
    QFETCH(bool, clean);
    for (const int most : {1, 2, 3, 5, 1000}) {
        const Read read = decoded(bytes, encoding, most);
        QCOMPARE(read.text, text);
        QCOMPARE(read.clean, clean);
    }
}

void TestTextDecoder::replacesWhatIsNotUtf8AsTheCodecDoes()
{
    QRandomGenerator random(4711);
    const QByteArray alphabet("a,\n\x80\xbf\xc0\xc3\xa9\xe0\xe2\x82\xac\xed\xa0\xef\xbb\xbf\xbe"
                              "\xf0\x9f\x98\x80\xf4\x90\xf8\xff");
    for (int i = 0; i < 20000; ++i) {
        QByteArray bytes("x");
        for (int left = random.bounded(24); left > 0; --left) {
            bytes.append(alphabet.at(random.bounded(alphabet.size())));
        }
        const QString expected = QTextCodec::codecForName("UTF-8")->toUnicode(bytes);
        const Read read = decoded(bytes, automatic, 1 + random.bounded(20));
        QCOMPARE(read.text, expected);
        QCOMPARE(read.clean, !expected.contains(QChar(QChar::ReplacementCharacter)));
    }
}

void TestTextDecoder::keepsUnpairedSurrogatesOfTheClipboard()
{
    const QString text = QStringLiteral("a") + QChar(0xdc00) + QChar(0xd83d);
    const Read read = readAll(TextSource::fromText(QChar(QChar::ByteOrderMark) + text).get());
    QCOMPARE(read.text, text);
    QVERIFY(read.clean);
}

void TestTextDecoder::tellsFailures()
{
    QTemporaryDir folder;
    QString error;
    QVERIFY(!TextSource::fromFile(folder.filePath(QStringLiteral("none")), automatic, &error));
    QVERIFY(!error.isEmpty());
    error.clear();
    QVERIFY(!TextSource::fromFile(folder.path(), automatic, &error));
    QVERIFY(!error.isEmpty());

    const QString failure = QStringLiteral("the disk is on fire");
    const auto source = TextSource::fromDevice(
        std::make_unique<Trickle>(QByteArray(20, 'x'), 16, failure), automatic);
    std::array<char, 32> block;
    QVERIFY(source->read(block.data(), block.size()) > 0);
    while (source->read(block.data(), block.size()) > 0) {
    }
    QCOMPARE(source->read(block.data(), block.size()), qint64(-1));
    QCOMPARE(source->errorText(), failure);
}

TW_TEST_CLASS(TestTextDecoder)
#include "tst_textdecoder.moc"

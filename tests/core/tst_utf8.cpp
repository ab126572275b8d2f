#include "testsupport.h"
#include "utf8.h"

#include <QRandomGenerator>
#include <QTextCodec>

class TestUtf8 : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Random bytes, many of them damaged sequences, against Qt's own decoder.
    void agreesWithTheTextCodec()
    {
        static const uchar interesting[] = {'a',  ' ',  0,    0x7f, 0x80, 0xbf, 0xc0, 0xc2,
                                            0xc3, 0xe0, 0xa0, 0xed, 0x9f, 0xef, 0xbb, 0xf0,
                                            0x90, 0xf4, 0x8f, 0xf5, 0xff, 0xe2, 0x82, 0xac};
        QRandomGenerator random(3);
        QTextCodec *const codec = QTextCodec::codecForName("UTF-8");
        for (int i = 0; i < 100000; ++i) {
            std::string bytes;
            const int length = int(random.bounded(12));
            for (int k = 0; k < length; ++k) {
                bytes.push_back(char(interesting[random.bounded(quint32(sizeof interesting))]));
            }
            QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
            const QString reference = codec->toUnicode(bytes.data(), int(bytes.size()), &state);
            const bool valid = state.invalidChars == 0 && state.remainingChars == 0;
            QCOMPARE(Utf8::isValid(bytes), valid);
            const std::string repaired = Utf8::repaired(bytes);
            QVERIFY(Utf8::isValid(repaired));
            if (valid) {
                QCOMPARE(Utf8::decoded(bytes), reference);
                QCOMPARE(repaired, bytes);
            } else if (state.remainingChars == 0) {
                QCOMPARE(Utf8::decoded(repaired), reference);
            }
        }
    }

    void everyTextSurvives()
    {
        QRandomGenerator random(5);
        for (int i = 0; i < 50000; ++i) {
            QString text;
            const int length = int(random.bounded(8));
            for (int k = 0; k < length; ++k) {
                const uint top[] = {0x7f, 0x7ff, 0xffff, 0xffff};
                const uint c = random.bounded(top[random.bounded(4)] + 1);
                text.append(random.bounded(4) ? QChar(c) : QChar(0xd7f0 + random.bounded(0x820)));
            }
            const std::string bytes = Utf8::encoded(text);
            QCOMPARE(Utf8::decoded(bytes), text);
            QCOMPARE(Utf8::isValid(bytes), !Utf8::hasSurrogates(bytes));
            QCOMPARE(Utf8::decoded(Utf8::trimmed(bytes)), text.trimmed());
        }
    }

    void incompleteTail_data()
    {
        QTest::addColumn<QByteArray>("bytes");
        QTest::addColumn<int>("tail");
        QTest::newRow("empty") << QByteArray() << 0;
        QTest::newRow("ascii") << QByteArray("abc") << 0;
        QTest::newRow("lead of two") << QByteArray("a\xc3") << 1;
        QTest::newRow("whole of two") << QByteArray("a\xc3\xa9") << 0;
        QTest::newRow("two of three") << QByteArray("a\xe2\x82") << 2;
        QTest::newRow("three of four") << QByteArray("\xf0\x9f\x98") << 3;
        QTest::newRow("whole of four") << QByteArray("\xf0\x9f\x98\x80") << 0;
        QTest::newRow("stray continuation") << QByteArray("a\x80") << 0;
        QTest::newRow("impossible lead") << QByteArray("a\xff") << 0;
    }

    void incompleteTail()
    {
        QFETCH(QByteArray, bytes);
        QFETCH(int, tail);
        QCOMPARE(Utf8::incompleteTail({bytes.constData(), size_t(bytes.size())}), tail);
    }
};

TW_TEST_CLASS(TestUtf8)
#include "tst_utf8.moc"

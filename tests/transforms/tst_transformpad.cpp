#include "transformpad.h"

#include "testsupport.h"
#include "transformrun.h"

class TestTransformPad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void pads_data();
    void pads();
    void countsCells();
};

void TestTransformPad::pads_data()
{
    QTest::addColumn<OptionTexts>("options");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    const auto addRow = [](const char *tag, const char *side, const char *length, const char *with,
                           const char *before, const char *after, bool truncate = false,
                           bool ignoreEmpty = false) {
        const auto flag = [](bool on) { return on ? QStringLiteral("1") : QStringLiteral("0"); };
        QTest::newRow(tag) << OptionTexts{{"Side", QString::fromUtf8(side)},
                                          {"Length", QString::fromUtf8(length)},
                                          {"Character", QString::fromUtf8(with)},
                                          {"Truncate", flag(truncate)},
                                          {"Ignore_Empty", flag(ignoreEmpty)}}
                           << QString::fromUtf8(before) << QString::fromUtf8(after);
    };
    addRow("left", "Left", "3", "0", "7", "007");
    addRow("right", "Right", "3", " ", "7", "7  ");
    addRow("both, odd", "Both sides", "5", "*", "ab", "*ab**");
    addRow("longer kept", "Left", "3", "0", "abcd", "abcd");
    addRow("longer cut, left", "Left", "3", "0", "abcd", "bcd", true);
    addRow("longer cut, right", "Right", "3", "0", "abcd", "abc", true);
    addRow("longer cut, both", "Both sides", "2", "0", "abcde", "bc", true);
    addRow("exact", "Left", "3", "0", "abc", "abc", true);
    addRow("empty", "Left", "2", "0", "", "00");
    addRow("empty ignored", "Left", "2", "0", "", "", false, true);
    addRow("pairs count as one", "Left", "3", "\U0001F600", "\U0001F601x", "\U0001F600\U0001F601x");
    addRow("pairs are not cut", "Left", "1", "0", "x\U0001F601", "\U0001F601", true);
    addRow("pairs are not cut, right", "Right", "1", "0", "\U0001F601x", "\U0001F601", true);
    addRow("no character", "Left", "3", "", "7", "7");
}

void TestTransformPad::pads()
{
    QFETCH(OptionTexts, options);
    QFETCH(QString, before);
    QFETCH(QString, after);
    options.append({"Columns", QStringLiteral("1")});
    const auto transform = transformWith<TransformPad>(options);
    QCOMPARE(columnOf(transform->execute({table({}, {{before}})}), 0), QStringList{after});
}

void TestTransformPad::countsCells()
{
    const auto transform = transformWith<TransformPad>(
        {{"Columns", QStringLiteral("1|2")}, {"Length", QStringLiteral("2")}});
    const Dataset output = transform->execute({table(cells("A|B"), rowsOf("1|10;1|1"))});
    QCOMPARE(output, table(cells("A|B"), rowsOf(" 1|10; 1| 1")));
    QCOMPARE(transform->status(), QStringLiteral("3 changed, 1 unchanged"));
}

TW_TEST_CLASS(TestTransformPad)
#include "tst_transformpad.moc"

#include "transformcase.h"

#include "testsupport.h"
#include "transformrun.h"

#include <QLocale>

class TestTransformCase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void changesCase_data();
    void changesCase();
    void followsTheLocale();
    void changesTheChosenColumnsOnly();
    void leavesTablesAsTheyAre_data();
    void leavesTablesAsTheyAre();
};

void TestTransformCase::changesCase_data()
{
    QTest::addColumn<QString>("textCase");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    const auto addRow = [](const char *textCase, const char *before, const char *after) {
        QTest::newRow(qPrintable(
            QStringLiteral("%1 of %2").arg(QString::fromUtf8(textCase), QString::fromUtf8(before))))
            << QString::fromUtf8(textCase) << QString::fromUtf8(before) << QString::fromUtf8(after);
    };
    addRow("lower case", "ÄB c", "äb c");
    addRow("UPPER CASE", "straße", "STRASSE");
    addRow("Title Case", "o'NEIL mcdonald", "O'neil Mcdonald");
    addRow("Title Case", "o’neil-SMITH 3RD 'tis", "O’neil-Smith 3rd 'Tis");
    addRow("Title Case", "e\u0301te\u0301 rue", "E\u0301te\u0301 Rue");
    addRow("Sentence case", "HELLO. who's THERE? i! no.dot", "Hello. Who's there? I! No.dot");
    addRow("Sentence case", " \"quoted\". \"again\". 3 apples", " \"Quoted\". \"Again\". 3 apples");
    addRow("iNVERTED cASE", "Hello World 1ß", "hELLO wORLD 1SS");
    addRow("camelCase", "Hello wide-World", "helloWideWorld");
    addRow("PascalCase", "hello wide_world", "HelloWideWorld");
    addRow("snake_case", "HelloWorld x2", "hello_world_x2");
    addRow("snake_case", "--XMLHttp  (v2Beta)", "xmlhttp_v2beta");
    addRow("snake_case", "---", "");
    addRow("kebab-case", "HelloWorld x2", "hello-world-x2");
    addRow("CONSTANT_CASE", "helloWorld x2", "HELLO_WORLD_X2");
    // Deseret: capitals beyond the first plane.
    addRow("lower case", "\U00010400a", "\U00010428a");
    addRow("PascalCase", "\U00010428\U00010428", "\U00010400\U00010428");
    for (const char *const each : {"Title Case", "Sentence case", "camelCase", "PascalCase",
                                   "snake_case", "kebab-case", "CONSTANT_CASE"}) {
        addRow(each, "0123", "0123");
        addRow(each, "", "");
    }
}

void TestTransformCase::changesCase()
{
    QFETCH(QString, textCase);
    QFETCH(QString, before);
    QFETCH(QString, after);
    const auto transform =
        transformWith<TransformCase>({{"Columns", QStringLiteral("1")}, {"Case", textCase}});
    const Dataset output = transform->execute({columnTable(QStringLiteral("A"), {before})});
    QCOMPARE(columnOf(output, 0), QStringList{after});
    QCOMPARE(transform->status(), before == after ? QStringLiteral("No changes")
                                                  : QStringLiteral("1 changed, 0 unchanged"));
}

void TestTransformCase::followsTheLocale()
{
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Turkish, QLocale::Turkey));
    const auto transform = transformWith<TransformCase>(
        {{"Columns", QStringLiteral("1")}, {"Case", QStringLiteral("UPPER CASE")}});
    const Dataset output = transform->execute({table({}, {{QStringLiteral("izmir")}})});
    QLocale::setDefault(before);
    QCOMPARE(columnOf(output, 0), QStringList{QStringLiteral("İZMİR")});
}

void TestTransformCase::changesTheChosenColumnsOnly()
{
    const Dataset input = table(cells("A|B|C"), rowsOf("x|x|x;Y|Y|Y;x||z"));
    const auto transform = transformWith<TransformCase>(
        {{"Columns", QStringLiteral("3|1")}, {"Case", QStringLiteral("UPPER CASE")}});
    QCOMPARE(transform->execute({input}), table(cells("A|B|C"), rowsOf("X|x|X;Y|Y|Y;X||Z")));
    QCOMPARE(transform->status(), QStringLiteral("4 changed, 2 unchanged"));
    transform->setProgress([](double) { return false; });
    QVERIFY(!transform->execute({input}).hasColumns());
    QVERIFY(transform->isStopped());
}

void TestTransformCase::leavesTablesAsTheyAre_data()
{
    QTest::addColumn<QString>("columns");
    QTest::addColumn<Dataset>("input");
    QTest::newRow("no column chosen") << QString() << table(cells("A"), rowsOf("x"));
    QTest::newRow("column beyond the table")
        << QStringLiteral("7") << table(cells("A"), rowsOf("x"));
    QTest::newRow("no rows") << QStringLiteral("1") << table(cells("A|B"), {});
    QTest::newRow("no columns") << QStringLiteral("1") << Dataset();
}

void TestTransformCase::leavesTablesAsTheyAre()
{
    QFETCH(QString, columns);
    QFETCH(Dataset, input);
    const auto transform = transformWith<TransformCase>(
        {{"Columns", columns}, {"Case", QStringLiteral("UPPER CASE")}});
    QCOMPARE(transform->execute({input}), input);
    QCOMPARE(transform->status(), QStringLiteral("No changes"));
}

TW_TEST_CLASS(TestTransformCase)
#include "tst_transformcase.moc"

#include "transformreplacemulti.h"

#include "parametervalues.h"
#include "testsupport.h"
#include "transformrun.h"

using Kind = ReplaceTerm::Kind;
using Terms = QList<ReplaceTerm>;
Q_DECLARE_METATYPE(Terms)

namespace {

ReplaceTerm term(const char *find, const char *replace, Kind kind = Kind::Text)
{
    return {QString::fromUtf8(find), QString::fromUtf8(replace), kind};
}

std::unique_ptr<TransformReplaceMulti> replaceOf(const Terms &terms, bool caseSensitive = true,
                                                 const char *columns = "1")
{
    auto transform = transformWith<TransformReplaceMulti>(
        {{"Columns", QString::fromUtf8(columns)},
         {"Case_Sensitive", caseSensitive ? QStringLiteral("1") : QStringLiteral("0")}});
    transform->parameter(QStringLiteral("Terms"))->value = QVariant::fromValue(terms);
    return transform;
}

} // namespace

class TestTransformReplaceMulti : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void replaces_data();
    void replaces();
    void readsVariablesFromTheInput();
    void countsAndReports();
    void refusesInvalidRegex();
    void survivesCatastrophicRegex();
};

void TestTransformReplaceMulti::replaces_data()
{
    QTest::addColumn<Terms>("terms");
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<bool>("caseSensitive");
    const auto addRow = [](const char *tag, const Terms &terms, const char *before,
                           const char *after, bool caseSensitive = true) {
        QTest::newRow(tag) << terms << QString::fromUtf8(before) << QString::fromUtf8(after)
                           << caseSensitive;
    };
    addRow("one after the other", {term("a", "b"), term("b", "c")}, "ab", "cc");
    addRow("all occurrences, not again", {term("aa", "a")}, "aaaaa", "aaa");
    addRow("no terms", {}, "ab", "ab");
    addRow("case counts", {term("A", "x")}, "aA", "ax");
    addRow("case ignored", {term("É", "x")}, "éÉe", "xxe", false);
    addRow("backslashes are plain", {term("a", "\\1\\n")}, "a", "\\1\\n");
    addRow("empty find", {term("", "x"), term("", "x", Kind::Word), term("", "x", Kind::Regex)},
           "ab", "ab");
    addRow("whole word", {term("cat", "dog", Kind::Word)}, "cat, cats-cat_ cat",
           "dog, cats-cat_ dog");
    addRow("whole word beside an accent", {term("cat", "dog", Kind::Word)}, "écat cat2 (cat)",
           "écat cat2 (dog)");
    addRow("whole word beside a far letter", {term("a", "b", Kind::Word)},
           "\U00010400a a\U00010400", "\U00010400a a\U00010400");
    addRow("whole word, overlapping start", {term("aa", "b", Kind::Word)}, "aaa aa", "aaa b");
    addRow("whole cell", {term("n/a", "", Kind::Cell)}, "n/a", "");
    addRow("whole cell, more text", {term("n/a", "", Kind::Cell)}, "n/a ", "n/a ");
    addRow("whole cell, case ignored", {term("N/A", "-", Kind::Cell)}, "n/a", "-", false);
    addRow("whole cell, empty", {term("", "n/a", Kind::Cell)}, "", "n/a");
    addRow("whole cell, not empty", {term("", "n/a", Kind::Cell)}, " ", " ");
    addRow("regex", {term("(\\d+)", "<\\1>", Kind::Regex)}, "a1b22", "a<1>b<22>");
    addRow("regex escapes", {term("(a)(b)?", "\\0\\2\\t\\\\1\\9\\x", Kind::Regex)}, "a",
           "a\t\\1\\x");
    addRow("regex, case ignored", {term("^A", "x", Kind::Regex)}, "ab", "xb", false);
    addRow("regex without width", {term("^|$", "\"", Kind::Regex)}, "a", "\"a\"");
    addRow("regex knows letters", {term("\\w+", "x", Kind::Regex)}, "é-ж", "x-x");
    addRow("variable", {term("a", "$(B)")}, "aa", "\\1$(1)\\1$(1)");
    addRow("variable in a regex", {term("(a)", "\\1$(2)", Kind::Regex)}, "a", "a\\1$(1)");
    addRow("unknown variable", {term("a", "$(9)")}, "a", "$(9)");
}

void TestTransformReplaceMulti::replaces()
{
    QFETCH(Terms, terms);
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(bool, caseSensitive);
    const auto transform = replaceOf(terms, caseSensitive);
    // The second column's text would do harm if it were looked through again.
    const Dataset output =
        transform->execute({table(cells("A|B"), {{before, QStringLiteral("\\1$(1)")}})});
    QCOMPARE(output.cell(RowIndex(0), ColIndex(0)), after);
    QCOMPARE(transform->status() == QStringLiteral("No changes"), before == after);
}

void TestTransformReplaceMulti::readsVariablesFromTheInput()
{
    const auto transform = replaceOf({term("x", "$(1)"), term("y", "z")}, true, "1|2");
    const Dataset input = table(cells("A|B"), rowsOf("y|x;1|x;y|3"));
    QCOMPARE(transform->execute({input}), table(cells("A|B"), rowsOf("z|z;1|1;z|3")));
    QCOMPARE(transform->status(), QStringLiteral("4 changed, 2 unchanged"));
}

void TestTransformReplaceMulti::countsAndReports()
{
    const Dataset input = table(cells("A|B"), rowsOf("a|a;b|a;a|b"));
    const auto transform = replaceOf({term("a", "b"), term("c", "d"), term("a", "e")});
    QCOMPARE(transform->execute({input}), table(cells("A|B"), rowsOf("b|a;b|a;b|b")));
    QCOMPARE(transform->status(), QStringLiteral("2 changed, 1 unchanged"));
    QCOMPARE(transform->messages().information,
             (QStringList{QStringLiteral("Term 'c' not found."),
                          QStringLiteral("Term 'a' not found.")}));
}

void TestTransformReplaceMulti::refusesInvalidRegex()
{
    const Dataset input = columnTable(QStringLiteral("A"), cells("a"));
    const auto transform = replaceOf({term("a", "b"), term("(", "", Kind::Regex)});
    QCOMPARE(transform->execute({input}), input);
    QCOMPARE(transform->status(), QStringLiteral("No changes"));
    QCOMPARE(transform->messages().warnings.size(), 1);
    QVERIFY(!transform->messages().failed);
}

void TestTransformReplaceMulti::survivesCatastrophicRegex()
{
    const QString evil = QString(40, QLatin1Char('a')) + QLatin1Char('!');
    const Dataset input = columnTable(QStringLiteral("A"), {evil, QStringLiteral("aa")});
    const auto transform = replaceOf({term("^(a|a)*$", "x", Kind::Regex)});
    QCOMPARE(columnOf(transform->execute({input}), 0), (QStringList{evil, QStringLiteral("x")}));
    QCOMPARE(transform->messages().warnings.size(), 1);
    QVERIFY(transform->messages().warnings.first().contains(QStringLiteral("1 value(s)")));
}

TW_TEST_CLASS(TestTransformReplaceMulti)
#include "tst_transformreplacemulti.moc"

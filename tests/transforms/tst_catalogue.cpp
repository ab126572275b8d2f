#include "parametervalues.h"
#include "tables.h"
#include "testsupport.h"
#include "transform.h"
#include "transformcatalogue.h"
#include "transformfacts.h"
#include "transformparameter.h"

#include <algorithm>

namespace {

QString text(const char *utf8)
{
    return QString::fromUtf8(utf8);
}

QList<QVariant> valuesOf(const Transform &transform)
{
    QList<QVariant> values;
    const auto parameters = transform.parameters();
    for (const TransformParameter *parameter : parameters) {
        values.append(parameter->valueText());
    }
    return values;
}

/// As many inputs as the type needs at least.
QList<Dataset> inputsFor(const Transform &transform, const Dataset &dataset)
{
    QList<Dataset> inputs;
    for (int i = 0; i < transform.minimumInputs(); ++i) {
        inputs.append(dataset);
    }
    return inputs;
}

} // namespace

/// What has to hold for every type, built or not.
class TestCatalogue : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void listsEveryTypeOnce();
    void findsTypesByWords_data();
    void findsTypesByWords();
    void saysHowManyInputs_data();
    void saysHowManyInputs();
    void answersKeyQueries();
    void fitsEveryType_data();
    void fitsEveryType();
    void keepsItsOptions_data();
    void keepsItsOptions();
    void clonesIndependently_data();
    void clonesIndependently();
    void runsOnAwkwardTables_data();
    void runsOnAwkwardTables();
    void keepsUnknownParameters_data();
    void keepsUnknownParameters();
    void setsValuesAgainByKey();
    void countsUnsetOptions();
    void replacesParameters();

private:
    void addTypes(bool builtOnly = false);
    const Transform &type(const char *typeName) const;
    std::unique_ptr<Transform> made(const QString &typeName) const;

    TransformCatalogue m_catalogue;
};

void TestCatalogue::addTypes(bool builtOnly)
{
    QTest::addColumn<QString>("typeName");
    const QList<const Transform *> types = m_catalogue.types();
    for (const Transform *each : types) {
        if (each->isBuilt() || !builtOnly) {
            QTest::newRow(qPrintable(each->typeName())) << each->typeName();
        }
    }
}

const Transform &TestCatalogue::type(const char *typeName) const
{
    const QList<const Transform *> types = m_catalogue.types();
    const auto found = std::find_if(types.begin(), types.end(), [typeName](const Transform *each) {
        return each->typeName() == QLatin1String(typeName);
    });
    Q_ASSERT(found != types.end());
    return **found;
}

std::unique_ptr<Transform> TestCatalogue::made(const QString &typeName) const
{
    auto transform = m_catalogue.create(typeName);
    transform->defineParameters({});
    return transform;
}

void TestCatalogue::listsEveryTypeOnce()
{
    const QList<const Transform *> types = m_catalogue.types();
    QCOMPARE(types.size(), 67);
    QSet<int> ids;
    QSet<QString> names;
    QSet<QString> typeNames;
    QSet<QString> classNames;
    for (int i = 0; i < types.size(); ++i) {
        ids.insert(types[i]->typeId());
        names.insert(types[i]->name());
        typeNames.insert(types[i]->typeName());
        classNames.insert(QString::fromLatin1(types[i]->facts().className));
        QVERIFY(i == 0 || types[i - 1]->name() < types[i]->name());
        QVERIFY(types[i]->typeId() >= 0 && types[i]->typeId() < 70);
    }
    QCOMPARE(ids.size(), types.size());
    QCOMPARE(names.size(), types.size());
    QCOMPARE(typeNames.size(), types.size());
    QCOMPARE(classNames.size(), types.size());
    QVERIFY(!ids.intersects({41, 44, 64}));
    QVERIFY(!m_catalogue.create(text("filter")));
    QVERIFY(!m_catalogue.create(QString()));
}

void TestCatalogue::findsTypesByWords_data()
{
    QTest::addColumn<QString>("word");
    QTest::addColumn<QStringList>("found");
    QTest::newRow("one word") << text("snake") << QStringList{text("Case")};
    QTest::newRow("category") << text("blends")
                              << QStringList{text("Cross"),     text("Interpolate"),
                                             text("Intersect"), text("Join"),
                                             text("Lookup"),    text("Stack"),
                                             text("Subtract")};
    QTest::newRow("name") << text("cols")
                          << QStringList{text("Compare Cols"), text("Concat Cols"),
                                         text("Copy Cols"),    text("Remove Cols"),
                                         text("Rename Cols"),  text("Reorder Cols")};
    QTest::newRow("regex") << text("regex")
                           << QStringList{text("Extract"), text("Filter"), text("If"),
                                          text("Replace")};
    QTest::newRow("hyphen") << text("z-score") << QStringList{text("Scale")};
    QTest::newRow("upper case") << text("Filter") << QStringList();
}

void TestCatalogue::findsTypesByWords()
{
    QFETCH(QString, word);
    QFETCH(QStringList, found);
    QStringList names;
    const QList<const Transform *> types = m_catalogue.types();
    for (const Transform *each : types) {
        if (each->keywords().contains(word)) {
            names.append(each->name());
        }
    }
    QCOMPARE(names, found);
}

void TestCatalogue::saysHowManyInputs_data()
{
    QTest::addColumn<QString>("typeName");
    QTest::addColumn<QString>("items");
    QTest::newRow("one") << text("Filter") << text("1 input/transform item");
    QTest::newRow("two") << text("Join") << text("2 input/transform items");
    QTest::newRow("from one") << text("Stack") << text("1 or more input/transform items");
    QTest::newRow("from two") << text("Cross") << text("2 or more input/transform items");
}

void TestCatalogue::saysHowManyInputs()
{
    QFETCH(QString, typeName);
    QFETCH(QString, items);
    QCOMPARE(m_catalogue.create(typeName)->inputsText(),
             text("Select %1 in the Center pane\nand then click this button to perform this "
                  "transform.")
                 .arg(items));
}

void TestCatalogue::answersKeyQueries()
{
    const Transform &join = type("Join");
    QCOMPARE(join.parameterKey(ParameterRole::TopKeys), text("Column_1"));
    QCOMPARE(join.parameterKey(ParameterRole::BottomKeys), text("Column_2"));
    QCOMPARE(join.parameterKey(ParameterRole::CaseSensitive), text("Case_Sensitive"));
    QVERIFY(join.parameterKey(ParameterRole::Keep).isEmpty());
    QVERIFY(join.hasKeys() && join.inputOrderMatters() && !join.findsDuplicates());
    const Transform &dedupe = type("Dedupe");
    QCOMPARE(dedupe.parameterKey(ParameterRole::IgnoreAccents), text("Ignore_Accents"));
    QVERIFY(dedupe.findsDuplicates() && !dedupe.hasKeys() && !dedupe.inputOrderMatters());
    QVERIFY(!type("Cross").hasKeys());
    QVERIFY(type("Verify").isVerification() && type("Verify").isAdvanced());
    QVERIFY(type("Filter").dependsOnDateFormats() && !type("Filter").isAdvanced());
}

void TestCatalogue::fitsEveryType_data()
{
    addTypes();
}

void TestCatalogue::fitsEveryType()
{
    QFETCH(QString, typeName);
    const auto transform = made(typeName);
    QVERIFY(transform->category() >= 1 && transform->category() <= 6);
    QVERIFY(transform->minimumInputs() >= 1);
    QVERIFY(transform->maximumInputs() >= transform->minimumInputs());
    QVERIFY(!transform->description().isEmpty());
    QVERIFY(!transform->inputsText().isEmpty());
    QVERIFY(!transform->isDeprecated());
    QCOMPARE(transform->inputOrderMatters(),
             transform->category() == int(TransformCategory::Merge));
    QSet<QString> keys;
    const auto parameters = transform->parameters();
    for (const TransformParameter *parameter : parameters) {
        keys.insert(parameter->key);
        QVERIFY2(!parameter->label.isEmpty() && !parameter->help.isEmpty(),
                 qPrintable(parameter->key));
    }
    QCOMPARE(keys.size(), parameters.size());
    QCOMPARE(parameters.isEmpty(), !transform->isBuilt());
    for (int role = 0; role < 9 && transform->isBuilt(); ++role) {
        const QString key = transform->parameterKey(ParameterRole(role));
        QVERIFY2(key.isEmpty() || keys.contains(key), qPrintable(key));
    }
}

void TestCatalogue::keepsItsOptions_data()
{
    addTypes(true);
}

void TestCatalogue::keepsItsOptions()
{
    QFETCH(QString, typeName);
    const auto original = made(typeName);
    const auto loaded = made(typeName);
    const auto stored = original->storedParameters();
    for (const StoredParameter &each : stored) {
        QVERIFY2(loaded->setStoredParameter(each), qPrintable(each.key));
    }
    QCOMPARE(loaded->storedParameters(), stored);
    QCOMPARE(valuesOf(*loaded), valuesOf(*original));
    // What does not fit leaves the default.
    for (StoredParameter each : stored) {
        each.type = 20;
        each.value = text("damaged\x1F");
        QVERIFY(!loaded->setStoredParameter(each));
    }
    QCOMPARE(loaded->storedParameters(), stored);
}

void TestCatalogue::clonesIndependently_data()
{
    addTypes();
}

void TestCatalogue::clonesIndependently()
{
    QFETCH(QString, typeName);
    const auto original = made(typeName);
    original->setStoredParameter({text("Kept_Option"), 7, text("kept"), {}});
    const auto copy = original->clone();
    QCOMPARE(copy->typeId(), original->typeId());
    QCOMPARE(copy->storedParameters(), original->storedParameters());
    const auto before = original->storedParameters();
    const auto parameters = copy->parameters();
    for (TransformParameter *parameter : parameters) {
        QVERIFY(parameter != original->parameter(parameter->key));
        parameter->value = text("changed");
    }
    copy->setStoredParameter({text("Another_Option"), 7, text("new"), {}});
    QCOMPARE(original->storedParameters(), before);
}

void TestCatalogue::runsOnAwkwardTables_data()
{
    addTypes();
}

void TestCatalogue::runsOnAwkwardTables()
{
    QFETCH(QString, typeName);
    const auto transform = made(typeName);
    const QList<Dataset> tables = {
        Dataset(), table({text("A"), text("B")}, {}),
        table({}, {{text("1"), QString()}, {QString(), QString()}}),
        table({text("A"), QString(), text("A")},
              {{text("1"), text("x"), text("2024-01-31")}, {text("1"), text(" "), QString()}})};
    for (const Dataset &each : tables) {
        const QList<Dataset> inputs = inputsFor(*transform, each);
        transform->resetRun();
        const Dataset first = transform->execute(inputs);
        for (const Dataset &input : inputs) {
            QCOMPARE(input, each);
        }
        QCOMPARE(transform->messages().failed, !transform->isBuilt());
        const QString status = transform->status();
        transform->resetRun();
        QVERIFY(transform->status().isEmpty() && transform->messages().warnings.isEmpty());
        QCOMPARE(transform->execute(inputs), first);
        QCOMPARE(transform->status(), status);
    }
    QVERIFY(!transform->execute({}).hasColumns());
    if (transform->maximumInputs() == transform->minimumInputs()) {
        QList<Dataset> tooMany = inputsFor(*transform, tables.last());
        tooMany.append(tables.last());
        QVERIFY(!transform->execute(tooMany).hasColumns());
    }
    if (!transform->isBuilt()) {
        QVERIFY(transform->messages().warnings.last().contains(transform->name()));
    }
}

void TestCatalogue::keepsUnknownParameters_data()
{
    addTypes();
}

void TestCatalogue::keepsUnknownParameters()
{
    QFETCH(QString, typeName);
    const auto transform = made(typeName);
    const QList<StoredParameter> stored = {
        {text("Zeta"), 3, text("not a\x1F filter"), {}},
        {text("Alpha"), 77, QString(), {text("A"), text("B")}},
        {text("Zeta"), -1, text("again"), {}},
    };
    for (const StoredParameter &each : stored) {
        QVERIFY(transform->setStoredParameter(each));
    }
    FakeItem item({text("A")});
    transform->redefineParameters({&item});
    transform->resetRun();
    transform->execute({});
    const auto lastOf = [&](const Transform &each) {
        const auto all = each.storedParameters();
        return all.mid(all.size() - stored.size());
    };
    QCOMPARE(lastOf(*transform), stored);
    QCOMPARE(lastOf(*transform->clone()), stored);
    const auto parameters = transform->parameters();
    const auto isStored = [](const TransformParameter *each) { return each->isStored(); };
    QCOMPARE(transform->storedParameters().size(),
             stored.size() + int(std::count_if(parameters.begin(), parameters.end(), isStored)));
}

void TestCatalogue::setsValuesAgainByKey()
{
    const auto filter = m_catalogue.create(text("Filter"));
    // Read before the records exist, as when a document is loaded.
    QVERIFY(filter->setStoredParameter({text("Disable"), 5, text("1"), {}}));
    FakeItem item({text("A")});
    filter->redefineParameters({&item});
    QCOMPARE(filter->parameter(text("Disable"))->value, QVariant(true));
    QCOMPARE(filter->parameterForInput(&item), filter->parameter(text("Columns")));
    filter->parameter(text("Case_Sensitive"))->value = false;
    filter->redefineParameters({});
    QCOMPARE(filter->parameter(text("Case_Sensitive"))->value, QVariant(false));
    QCOMPARE(filter->parameter(text("Disable"))->value, QVariant(true));
    QVERIFY(!filter->parameterForInput(&item));
    QCOMPARE(filter->storedParameters().size(), 3);
}

void TestCatalogue::countsUnsetOptions()
{
    const auto filter = m_catalogue.create(text("Filter"));
    filter->defineParameters({});
    filter->checkOptions();
    QCOMPARE(filter->messages().information, QStringList{text("1 option not set")});
    filter->parameter(text("Columns"))->value = QVariant::fromValue(
        FilterSpec{true, true, {{QString(), ComparisonOperator::IsEmpty, QString()}}});
    filter->resetRun();
    filter->checkOptions();
    QVERIFY(filter->messages().information.isEmpty());
    QList<TransformParameter *> more;
    for (const char *key : {"A", "B"}) {
        more.append(new TransformParameter(ParameterType::SingleColumn, text(key), text(key),
                                           static_cast<const UpstreamItem *>(nullptr)));
    }
    filter->setParameters(more);
    filter->checkOptions();
    QCOMPARE(filter->messages().information, QStringList{text("2 options not set")});
}

void TestCatalogue::replacesParameters()
{
    const auto filter = m_catalogue.create(text("Filter"));
    filter->defineParameters({});
    const QList<TransformParameter *> all = filter->parameters();
    filter->setParameters(all);
    QCOMPARE(filter->parameters(), all);
    filter->setParameters({all[2], all[0]});
    QCOMPARE(filter->parameters(), (QList<TransformParameter *>{all[2], all[0]}));
}

TW_TEST_CLASS(TestCatalogue)
#include "tst_catalogue.moc"

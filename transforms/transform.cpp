#include "transform.h"

#include "texts.h"
#include "transformfacts.h"
#include "transformparameter.h"

#include <algorithm>

namespace {

bool has(const TransformFacts &facts, TransformFacts::Property property)
{
    return (facts.properties & property) != 0;
}

QStringList wordsOf(const QString &text)
{
    return text.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

void addWords(const QStringList &words, QSet<QString> *set)
{
    for (const QString &word : words) {
        set->insert(word);
    }
}

bool readStored(const StoredParameter &stored, TransformParameter *parameter)
{
    if (!isParameterType(stored.type) || !parameter->setValueText(stored.value)) {
        return false;
    }
    if (!stored.columns.isEmpty()) {
        parameter->setColumnNames(stored.columns);
    }
    return true;
}

} // namespace

Transform::Transform(const TransformFacts &facts)
    : m_facts(facts)
{
}

Transform::~Transform() = default;

int Transform::typeId() const
{
    return m_facts.id;
}

int Transform::category() const
{
    return int(m_facts.category);
}

QString Transform::name() const
{
    return QString::fromLatin1(m_facts.name);
}

QString Transform::typeName() const
{
    return QString::fromLatin1(m_facts.typeName);
}

QString Transform::description() const
{
    return tr(m_facts.description);
}

int Transform::minimumInputs() const
{
    return m_facts.minimumInputs;
}

int Transform::maximumInputs() const
{
    return m_facts.maximumInputs;
}

QSet<QString> Transform::keywords() const
{
    QSet<QString> words;
    addWords(wordsOf(name()), &words);
    addWords(TransformCategories::searchWords(m_facts.category), &words);
    addWords(wordsOf(QString::fromLatin1(m_facts.searchWords)), &words);
    return words;
}

QString Transform::inputsText() const
{
    const int least = minimumInputs();
    const int most = maximumInputs();
    QString items;
    if (least == 1 && most == 1) {
        items = tr("1 input/transform item");
    } else if (least == most) {
        items = tr("%1 input/transform items").arg(most);
    } else if (most == TransformFacts::noLimit) {
        items = tr("%1 or more input/transform items").arg(least);
    } else if (most > least) {
        items = tr("%1 to %2 input/transform items").arg(least).arg(most);
    } else {
        return QString();
    }
    return tr("Select %1 in the Center pane\nand then click this button to perform this transform.")
        .arg(items);
}

QString Transform::iconHtml(const QString &image) const
{
    return QStringLiteral("<img src=':/images/%1'>").arg(image);
}

bool Transform::isAdvanced() const
{
    return has(m_facts, TransformFacts::Advanced);
}

bool Transform::editsInPlace() const
{
    return has(m_facts, TransformFacts::EditsInPlace);
}

bool Transform::hasDrillDown() const
{
    return has(m_facts, TransformFacts::HasDrillDown);
}

bool Transform::isVerification() const
{
    return has(m_facts, TransformFacts::Verification);
}

bool Transform::isDeprecated() const
{
    return has(m_facts, TransformFacts::Deprecated);
}

bool Transform::hasDependentParameters() const
{
    return has(m_facts, TransformFacts::DependentParameters);
}

bool Transform::dependsOnDateFormats() const
{
    return has(m_facts, TransformFacts::DateFormats);
}

bool Transform::inputOrderMatters() const
{
    return maximumInputs() > 1;
}

QString Transform::inputOrderText() const
{
    return *m_facts.inputOrderText ? tr(m_facts.inputOrderText) : QString();
}

bool Transform::hasKeys() const
{
    return !parameterKey(ParameterRole::TopKeys).isEmpty();
}

bool Transform::findsDuplicates() const
{
    return !parameterKey(ParameterRole::CompareColumns).isEmpty();
}

QString Transform::parameterKey(ParameterRole role) const
{
    return QString::fromLatin1(m_facts.parameterKeys[size_t(role)]);
}

void Transform::defineParameters(const QList<const UpstreamItem *> &)
{
    m_parameters.clear();
}

void Transform::redefineParameters(const QList<const UpstreamItem *> &inputs)
{
    const auto earlier = std::move(m_parameters);
    m_parameters.clear();
    defineParameters(inputs);
    for (const auto &old : earlier) {
        TransformParameter *const present = parameter(old->key);
        if (present && present->type == old->type) {
            present->value = old->value;
        }
    }
    const QList<StoredParameter> unknown = std::exchange(m_unknownParameters, {});
    for (const StoredParameter &stored : unknown) {
        setStoredParameter(stored);
    }
    resolveColumns();
}

void Transform::resolveColumns()
{
    for (const auto &each : m_parameters) {
        each->resolveColumns(&m_messages);
    }
}

QList<TransformParameter *> Transform::parameters() const
{
    QList<TransformParameter *> list;
    for (const auto &each : m_parameters) {
        list.append(each.get());
    }
    return list;
}

TransformParameter *Transform::parameter(const QString &key) const
{
    for (const auto &each : m_parameters) {
        if (each->key == key) {
            return each.get();
        }
    }
    return nullptr;
}

TransformParameter *Transform::parameterForInput(const UpstreamItem *input) const
{
    return parametersForInput(input).value(0, nullptr);
}

QList<TransformParameter *> Transform::parametersForInput(const UpstreamItem *input) const
{
    QList<TransformParameter *> list;
    for (const auto &each : m_parameters) {
        if (each->input == input) {
            list.append(each.get());
        }
    }
    return list;
}

void Transform::setParameters(const QList<TransformParameter *> &list)
{
    if (list == parameters()) {
        return;
    }
    std::vector<std::unique_ptr<TransformParameter>> replaced;
    for (TransformParameter *const given : list) {
        const auto kept = std::find_if(m_parameters.begin(), m_parameters.end(),
                                       [given](const auto &each) { return each.get() == given; });
        if (kept == m_parameters.end()) {
            replaced.emplace_back(given);
        } else {
            replaced.push_back(std::move(*kept));
        }
    }
    m_parameters = std::move(replaced);
}

bool Transform::isParameterShown(const TransformParameter &) const
{
    return true;
}

QList<StoredParameter> Transform::storedParameters() const
{
    QList<StoredParameter> list;
    for (const auto &each : m_parameters) {
        if (each->isStored()) {
            list.append({each->key, int(each->type), each->valueText(), each->columnNames()});
        }
    }
    return list + m_unknownParameters;
}

bool Transform::setStoredParameter(const StoredParameter &stored)
{
    TransformParameter *const known = parameter(stored.key);
    if (known) {
        return readStored(stored, known);
    }
    m_unknownParameters.append(stored);
    return true;
}

void Transform::resetRun()
{
    m_messages.clear();
    m_status.clear();
    m_stopped = false;
}

QList<QPair<QString, int>> Transform::optionalParameters() const
{
    return {};
}

void Transform::checkOptions()
{
    QSet<QString> excused;
    const auto optional = optionalParameters();
    for (const auto &[key, flag] : optional) {
        if (flag == 0) {
            excused.insert(key);
        }
    }
    const auto unset = std::count_if(m_parameters.begin(), m_parameters.end(), [&](const auto &p) {
        return !p->isSet() && !excused.contains(p->key) && isParameterShown(*p);
    });
    if (unset == 1) {
        m_messages.note(tr("1 option not set"));
    } else if (unset > 1) {
        m_messages.note(tr("%1 options not set").arg(Texts::count(unset)));
    }
}

QString Transform::summary() const
{
    QStringList parts;
    for (const auto &each : m_parameters) {
        const QString part = each->isSet() && isParameterShown(*each) ? each->summary() : QString();
        if (!part.isEmpty()) {
            parts.append(part);
        }
    }
    return parts.join(QStringLiteral(", "));
}

TransformParameter *Transform::append(std::unique_ptr<TransformParameter> parameter)
{
    m_parameters.push_back(std::move(parameter));
    return m_parameters.back().get();
}

bool Transform::report(double fraction)
{
    Q_EMIT processed(fraction);
    if (!reportProgress(m_progress, fraction)) {
        m_stopped = true;
    }
    return !m_stopped;
}

void Transform::copyParametersTo(Transform *other) const
{
    other->m_parameters.clear();
    for (const auto &each : m_parameters) {
        other->m_parameters.push_back(std::make_unique<TransformParameter>(*each));
    }
    other->m_unknownParameters = m_unknownParameters;
}

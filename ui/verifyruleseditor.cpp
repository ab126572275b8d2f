#include "verifyruleseditor.h"

#include "rowstable.h"
#include "verifyrules.h"

#include <QRegularExpression>
#include <QVBoxLayout>

namespace {

enum Field { Column, Rule, Value };

std::optional<VerifyCheck> checkOf(const QStringList &row)
{
    return VerifyRules::fromNumber(row.value(Rule).toInt());
}

bool takesWholeNumber(VerifyCheck check)
{
    switch (check) {
    case VerifyCheck::LengthAtLeast:
    case VerifyCheck::LengthAtMost:
    case VerifyCheck::LengthEqual:
    case VerifyCheck::RowsAtLeast:
    case VerifyCheck::RowsAtMost:
    case VerifyCheck::ColumnsEqual:
        return true;
    default:
        return false;
    }
}

QVector<Choice> ruleChoices()
{
    QVector<Choice> choices;
    for (int i = 0; i < VerifyRules::count; ++i) {
        choices.append({QString::number(i), VerifyRules::label(VerifyCheck(i))});
    }
    return choices;
}

bool isUsed(const QStringList &row, int field)
{
    const auto check = checkOf(row);
    if (!check || field == Rule) {
        return true;
    }
    return field == Value ? VerifyRules::takesValue(*check)
                          : VerifyRules::scope(*check) != VerifyRules::Scope::Table;
}

QString problemOf(const QStringList &row, int field)
{
    using Editor = VerifyRulesParameterWidget;
    const auto check = checkOf(row);
    if (!check) {
        return field == Rule ? Editor::tr("This rule is not known.") : QString();
    }
    const QString value = row.value(Value);
    if (field != Value || !VerifyRules::takesValue(*check)) {
        return {};
    }
    if (value.isEmpty()) {
        return Editor::tr("'%1' needs a value.").arg(VerifyRules::label(*check));
    }
    if (VerifyRules::isRegex(*check)) {
        const QRegularExpression regex(value);
        return regex.isValid() ? QString()
                               : Editor::tr("Regular expression '%1' is invalid: %2.")
                                     .arg(value, regex.errorString());
    }
    return takesWholeNumber(*check) && !VerifyRules::wholeValue(value)
               ? Editor::tr("'%1' needs a whole number.").arg(VerifyRules::label(*check))
               : QString();
}

} // namespace

VerifyRulesParameterWidget::VerifyRulesParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_table(new RowsTable({tr("Rules"), tr("Add a rule. (%1)"), tr("Remove selected rules. (%1)"),
                             tr("Remove all rules."), tr("Move selected rules up."),
                             tr("Move selected rules down.")}))
{
    contents()->addWidget(m_table);
    setMainField(m_table->view());
    m_table->model()->setIsUsed(isUsed);
    m_table->model()->setProblem(
        [](const QStringList &row, int, int field) { return problemOf(row, field); });
    m_table->setNewRow([this](int current) {
        return current < 0
                   ? QStringList{QString(), QStringLiteral("0"), QString()}
                   : m_table->model()->rows()[current].mid(0, Value) + QStringList(QString());
    });
    connect(m_table, &RowsTable::edited, this, &VerifyRulesParameterWidget::tell);
}

void VerifyRulesParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    QStringList used;
    RowsModel::Rows rows;
    const auto rules = value<QList<VerifyRule>>();
    for (const VerifyRule &rule : rules) {
        used.append(rule.column);
        rows.append({rule.column, QString::number(rule.rule), rule.value});
    }
    m_table->setFields({{RowField::Kind::Choice, tr("Column"), columns().choicesByName(used), 4},
                        {RowField::Kind::Choice, tr("Rule"), ruleChoices(), 5},
                        {RowField::Kind::Text, tr("Value"), {}, 3}});
    m_table->model()->setRows(rows);
    showNotice(m_table->model()->firstProblem(), true);
}

void VerifyRulesParameterWidget::tell()
{
    QList<VerifyRule> rules;
    for (const QStringList &row : m_table->model()->rows()) {
        rules.append({row.value(Column), row.value(Rule).toInt(), row.value(Value)});
    }
    choose(QVariant::fromValue(rules));
    showNotice(m_table->model()->firstProblem(), true);
}

#include "uniqueeditor.h"

#include "columnsearch.h"
#include "parametersummary.h"
#include "rowstable.h"
#include "uniqueaggregates.h"

#include <QLabel>
#include <QVBoxLayout>

namespace {

enum Field { Column, Action };

/// The action of columns that are not listed in the value.
const QString &usualAction()
{
    static const QString name = UniqueOperations::names()[int(UniqueOperation::First)];
    return name;
}

QVector<Choice> actionChoices()
{
    QVector<Choice> choices;
    for (const QString &name : UniqueOperations::names()) {
        choices.append({name, name});
    }
    return choices;
}

} // namespace

UniqueParameterWidget::UniqueParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_search(makeColumnSearch())
    , m_table(new RowsTable({tr("Actions")}))
    , m_action(new ChoiceBox)
{
    m_action->setChoices(QVector<Choice>{{QString(), tr("Choose")}} + actionChoices());
    m_action->setAccessibleName(tr("Set selected columns to"));
    auto *const label = new QLabel(tr("Set selected columns to"));
    label->setBuddy(m_action);
    contents()->addWidget(m_search);
    contents()->addWidget(m_table);
    contents()->addWidget(label);
    contents()->addWidget(m_action);
    setMainField(m_table->view());
    m_table->model()->setDisplay([this](const QStringList &row, int, int) {
        return columns().shownName(columns().fromKey(row.value(Column)));
    });
    m_table->model()->setProblem([this](const QStringList &row, int, int field) {
        const ColumnRef column = columns().fromKey(row.value(Column));
        return field == Column && columns().isMissing(column)
                   ? ParameterColumns::notFoundText(nameOf(column))
                   : QString();
    });
    m_table->setFields({{RowField::Kind::Label, tr("Column"), {}, 1},
                        {RowField::Kind::Choice, tr("Action"), actionChoices(), 1}});
    connect(m_table, &RowsTable::edited, this, &UniqueParameterWidget::tell);
    connect(m_action, QOverload<int>::of(&ChoiceBox::activated), this,
            &UniqueParameterWidget::setAction);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_table->filter([this, &text](int row) {
            const QStringList &cells = m_table->model()->rows()[row];
            return (columns().shownName(columns().fromKey(cells.value(Column))) +
                    QLatin1Char('\n') + cells.value(Action))
                .contains(text, Qt::CaseInsensitive);
        });
    });
}

void UniqueParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    RowsModel::Rows rows;
    for (int i = 0; i < columns().count(); ++i) {
        rows.append({columns().key(columns().column(i)), usualAction()});
    }
    const auto chosen = value<QList<UniqueAction>>();
    for (const UniqueAction &each : chosen) {
        const int number = columns().find(each.column);
        if (number >= 0) {
            rows[number][Action] = each.action;
        } else {
            rows.append({columns().key(each.column), each.action});
        }
    }
    m_table->model()->setRows(rows);
    const QString wrong = m_table->model()->firstProblem();
    showNotice(rows.isEmpty() ? ParameterColumns::unknownText() : wrong, !wrong.isEmpty());
}

void UniqueParameterWidget::tell()
{
    QList<UniqueAction> chosen;
    for (const QStringList &row : m_table->model()->rows()) {
        if (row.value(Action) != usualAction()) {
            chosen.append({columns().fromKey(row.value(Column)), row.value(Action)});
        }
    }
    choose(QVariant::fromValue(chosen));
}

void UniqueParameterWidget::setAction()
{
    const QString action = m_action->stored();
    const QList<int> selected = m_table->selectedRows();
    m_action->setStored({});
    if (action.isEmpty() || selected.isEmpty()) {
        return;
    }
    RowsModel::Rows rows = m_table->model()->rows();
    for (const int row : selected) {
        rows[row][Action] = action;
    }
    m_table->model()->setRows(rows);
    tell();
}

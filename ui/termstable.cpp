#include "termstable.h"

#include "columnlist.h"
#include "comparison.h"
#include "rowstable.h"
#include "termclipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QToolButton>
#include <QVBoxLayout>

namespace {

enum Field { Column, Operator, Value };

QStringList rowOf(const FilterTerm &term)
{
    return {term.column, QString::number(int(term.op)), term.value};
}

FilterTerm termOf(const QStringList &row)
{
    return {row.value(Column), Comparison::fromNumber(row.value(Operator).toInt()),
            row.value(Value)};
}

QVector<Choice> operators()
{
    QVector<Choice> choices;
    for (int i = 0; i < Comparison::operatorCount; ++i) {
        const ComparisonOperator op = Comparison::fromNumber(i);
        choices.append({QString::number(i), Comparison::label(op), Comparison::symbol(op)});
    }
    return choices;
}

QString valueProblem(const FilterTerm &term)
{
    if (term.op != ComparisonOperator::MatchesRegex &&
        term.op != ComparisonOperator::NotMatchesRegex) {
        return {};
    }
    const QRegularExpression regex(term.value);
    return regex.isValid() ? QString()
                           : TermsTable::tr("Regular expression '%1' is invalid: %2.")
                                 .arg(term.value, regex.errorString());
}

} // namespace

TermsTable::TermsTable(const QString &name, QWidget *parent)
    : QWidget(parent)
    , m_table(new RowsTable({name, tr("Add a term. (%1)"), tr("Remove selected terms. (%1)"),
                             tr("Remove all terms."), tr("Move selected terms up."),
                             tr("Move selected terms down.")}))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_table);
    m_copy =
        m_table->addButton(QStringLiteral("edit-copy"), tr("Copy filter terms to the clipboard."));
    QToolButton *const paste = m_table->addButton(QStringLiteral("edit-paste"),
                                                  tr("Paste in filter terms from the clipboard. "
                                                     "Click the ? button for details."));
    QToolButton *const help = makeTextButton(QStringLiteral("?"), tr("What can be pasted"));
    m_table->addButton(help);

    m_table->model()->setIsUsed([](const QStringList &row, int field) {
        return field != Value || Comparison::takesValue(termOf(row).op);
    });
    m_table->model()->setProblem([](const QStringList &row, int, int field) {
        return field == Value ? valueProblem(termOf(row)) : QString();
    });
    // A new term is like the current one, for another value.
    m_table->setNewRow([this](int current) {
        FilterTerm term = current < 0 ? FilterTerm() : termOf(m_table->model()->rows()[current]);
        term.value.clear();
        return rowOf(term);
    });
    connect(m_table, &RowsTable::edited, this, &TermsTable::edited);
    connect(m_copy, &QToolButton::clicked, this, &TermsTable::copy);
    connect(paste, &QToolButton::clicked, this, [this] { this->paste(); });
    connect(help, &QToolButton::clicked, this,
            [this] { Q_EMIT helpWanted(TermClipboard::help()); });
    setFields();
}

void TermsTable::setFields()
{
    QStringList used;
    for (const QStringList &row : m_table->model()->rows()) {
        used.append(row.value(Column));
    }
    m_table->setFields({{RowField::Kind::Choice, tr("Column"), m_columns.choicesByName(used), 3},
                        {RowField::Kind::Choice, tr("Test"), operators(), 0},
                        {RowField::Kind::Text, tr("Value"), {}, 3}});
    m_copy->setEnabled(!used.isEmpty());
}

void TermsTable::setColumns(const ParameterColumns &columns)
{
    m_columns = columns;
    setFields();
}

void TermsTable::setTerms(const QList<FilterTerm> &terms)
{
    RowsModel::Rows rows;
    for (const FilterTerm &term : terms) {
        rows.append(rowOf(term));
    }
    m_table->model()->setRows(rows);
    setFields();
}

QList<FilterTerm> TermsTable::terms() const
{
    QList<FilterTerm> terms;
    for (const QStringList &row : m_table->model()->rows()) {
        terms.append(termOf(row));
    }
    return terms;
}

QString TermsTable::problem() const
{
    return m_table->model()->firstProblem();
}

void TermsTable::copy() const
{
    QGuiApplication::clipboard()->setText(TermClipboard::write(terms()));
}

bool TermsTable::paste()
{
    const int current = m_table->currentRow();
    const FilterTerm pattern =
        current < 0 ? FilterTerm{{}, ComparisonOperator::Equal, {}} : terms()[current];
    const QList<FilterTerm> pasted =
        TermClipboard::read(QGuiApplication::clipboard()->text(), pattern);
    if (pasted.isEmpty()) {
        return false;
    }
    setTerms(terms() + pasted);
    Q_EMIT edited();
    return true;
}

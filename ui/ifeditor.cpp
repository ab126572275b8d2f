#include "ifeditor.h"

#include "parametercodec.h"
#include "rowstable.h"
#include "termstable.h"
#include "transformfilter.h"

#include <QLabel>
#include <QLineEdit>
#include <QVBoxLayout>

namespace {

// The terms of a branch are in its row as a stored filter.
enum Field { Number, Terms, Then };

QList<FilterTerm> termsOf(const QStringList &row)
{
    FilterSpec spec;
    ParameterCodec::read(row.value(Terms), &spec);
    return spec.terms;
}

QString written(const QList<FilterTerm> &terms)
{
    return ParameterCodec::write(FilterSpec{true, true, terms});
}

QString shownTerms(const QStringList &row)
{
    const QList<FilterTerm> terms = termsOf(row);
    return terms.isEmpty() ? IfParameterWidget::tr("No terms: never holds")
                           : TransformFilter::termsText({true, true, terms}, {});
}

QString branchName(int row)
{
    return row == 0 ? IfParameterWidget::tr("IF") : IfParameterWidget::tr("ELSE IF");
}

} // namespace

IfParameterWidget::IfParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_branches(
          new RowsTable({tr("Branches"), tr("Add an IF or ELSE IF. (%1)"),
                         tr("Remove selected branches. (%1)"), tr("Remove all branches."),
                         tr("Move selected branches up."), tr("Move selected branches down.")}))
    , m_termsLabel(new QLabel)
    , m_terms(new TermsTable(tr("Tests of the branch")))
    , m_else(new QLineEdit)
{
    auto *const elseLabel = new QLabel(tr("ELSE"));
    elseLabel->setBuddy(m_else);
    m_else->setAccessibleName(tr("ELSE"));
    m_termsLabel->setBuddy(m_terms->table()->view());
    m_termsLabel->setWordWrap(true);
    contents()->addWidget(m_branches);
    contents()->addWidget(m_termsLabel);
    contents()->addWidget(m_terms);
    contents()->addWidget(elseLabel);
    contents()->addWidget(m_else);
    setMainField(m_branches->view());

    m_branches->model()->setDisplay([](const QStringList &row, int number, int field) {
        return field == Number ? branchName(number) : shownTerms(row);
    });
    m_branches->setNewRow([](int) { return QStringList{QString(), written({}), QString()}; });
    m_branches->setFields({{RowField::Kind::Label, QString(), {}, 0},
                           {RowField::Kind::Label, tr("Tests"), {}, 1},
                           {RowField::Kind::Text, tr("THEN"), {}, 1}});
    connect(m_branches, &RowsTable::edited, this, &IfParameterWidget::tell);
    connect(m_branches, &RowsTable::currentRowChanged, this, &IfParameterWidget::showTerms);
    connect(m_terms, &TermsTable::edited, this, &IfParameterWidget::takeTerms);
    connect(m_terms, &TermsTable::helpWanted, this, &ParameterEditor::helpWanted);
    connect(m_else, &QLineEdit::textEdited, this, &IfParameterWidget::tell);
    showTerms(-1);
}

void IfParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    const auto spec = value<IfSpec>();
    RowsModel::Rows rows;
    for (const IfBranch &branch : spec.branches) {
        rows.append({QString(), written(branch.terms), branch.thenValue});
    }
    m_branches->model()->setRows(rows);
    if (m_else->text() != spec.elseValue) {
        m_else->setText(spec.elseValue);
    }
    m_terms->setColumns(columns());
    if (m_branches->currentRow() < 0 && !rows.isEmpty()) {
        m_branches->setCurrentRow(0);
    }
    showTerms(m_branches->currentRow());
}

IfSpec IfParameterWidget::spec() const
{
    IfSpec spec;
    for (const QStringList &row : m_branches->model()->rows()) {
        spec.branches.append({termsOf(row), row.value(Then)});
    }
    spec.elseValue = m_else->text();
    return spec;
}

void IfParameterWidget::tell()
{
    choose(QVariant::fromValue(spec()));
    showTerms(m_branches->currentRow());
}

void IfParameterWidget::showTerms(int row)
{
    const RowsModel::Rows &rows = m_branches->model()->rows();
    const bool isBranch = row >= 0 && row < rows.size();
    m_terms->setVisible(isBranch);
    m_termsLabel->setVisible(isBranch);
    m_terms->setTerms(isBranch ? termsOf(rows[row]) : QList<FilterTerm>());
    m_termsLabel->setText(tr("Tests of branch %1 (%2): all have to hold")
                              .arg(QString::number(row + 1), branchName(row)));
    showNotice(m_terms->problem(), true);
}

void IfParameterWidget::takeTerms()
{
    const int row = m_branches->currentRow();
    RowsModel::Rows rows = m_branches->model()->rows();
    if (row < 0 || row >= rows.size()) {
        return;
    }
    rows[row][Terms] = written(m_terms->terms());
    m_branches->model()->setRows(rows);
    choose(QVariant::fromValue(spec()));
    showNotice(m_terms->problem(), true);
}

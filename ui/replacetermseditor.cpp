#include "replacetermseditor.h"

#include "parametervalues.h"
#include "rowstable.h"

#include <QRegularExpression>
#include <QVBoxLayout>

namespace {

enum Field { Find, Replace, Kind };

using Editor = ReplaceTermsParameterWidget;

ReplaceTerm termOf(const QStringList &row)
{
    return {row.value(Find), row.value(Replace), ReplaceTerm::Kind(row.value(Kind).toInt())};
}

QStringList rowOf(const ReplaceTerm &term)
{
    return {term.find, term.replace, QString::number(int(term.kind))};
}

QVector<Choice> kinds()
{
    const auto choice = [](ReplaceTerm::Kind kind, const QString &text) {
        return Choice{QString::number(int(kind)), text};
    };
    return {choice(ReplaceTerm::Kind::Text, Editor::tr("Text")),
            choice(ReplaceTerm::Kind::Word, Editor::tr("Whole word")),
            choice(ReplaceTerm::Kind::Cell, Editor::tr("Whole cell")),
            choice(ReplaceTerm::Kind::Regex, Editor::tr("Regex"))};
}

QString problemOf(const QStringList &row, int field)
{
    const ReplaceTerm term = termOf(row);
    if (field != Find) {
        return {};
    }
    if (term.find.isEmpty() && term.kind != ReplaceTerm::Kind::Cell) {
        return Editor::tr("There is nothing to find.");
    }
    const QRegularExpression regex(term.find);
    return term.kind != ReplaceTerm::Kind::Regex || regex.isValid()
               ? QString()
               : Editor::tr("Regular expression '%1' is invalid: %2.")
                     .arg(term.find, regex.errorString());
}

} // namespace

ReplaceTermsParameterWidget::ReplaceTermsParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_table(new RowsTable({tr("Terms"), tr("Add a term. (%1)"), tr("Remove selected terms. (%1)"),
                             tr("Remove all terms."), tr("Move selected terms up."),
                             tr("Move selected terms down.")}))
{
    contents()->addWidget(m_table);
    setMainField(m_table->view());
    m_table->setFields({{RowField::Kind::Text, tr("Find"), {}, 4},
                        {RowField::Kind::Text, tr("Replace with"), {}, 6},
                        {RowField::Kind::Choice, tr("Match"), kinds(), 4}});
    m_table->model()->setProblem(
        [](const QStringList &row, int, int field) { return problemOf(row, field); });
    m_table->setNewRow([this](int current) {
        ReplaceTerm term;
        if (current >= 0) {
            term.kind = termOf(m_table->model()->rows()[current]).kind;
        }
        return rowOf(term);
    });
    connect(m_table, &RowsTable::edited, this, &ReplaceTermsParameterWidget::tell);
}

void ReplaceTermsParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    RowsModel::Rows rows;
    const auto terms = value<QList<ReplaceTerm>>();
    for (const ReplaceTerm &term : terms) {
        rows.append(rowOf(term));
    }
    m_table->model()->setRows(rows);
    showNotice(m_table->model()->firstProblem(), true);
}

void ReplaceTermsParameterWidget::tell()
{
    QList<ReplaceTerm> terms;
    for (const QStringList &row : m_table->model()->rows()) {
        terms.append(termOf(row));
    }
    choose(QVariant::fromValue(terms));
    showNotice(m_table->model()->firstProblem(), true);
}

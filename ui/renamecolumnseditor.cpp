#include "renamecolumnseditor.h"

#include "columnsearch.h"
#include "parametersummary.h"
#include "rowstable.h"

#include <QToolButton>
#include <QVBoxLayout>

namespace {

enum Field { Column, NewName };

const QChar renamedMark = QLatin1Char('=');

} // namespace

RenameColumnsParameterWidget::RenameColumnsParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_search(makeColumnSearch())
    , m_table(new RowsTable({tr("New names")}))
{
    contents()->addWidget(m_search);
    contents()->addWidget(m_table);
    setMainField(m_table->view());
    m_table->model()->setDisplay([this](const QStringList &row, int, int field) {
        const ColumnRef column = columns().fromKey(row.value(Column));
        return field == Column ? columns().shownName(column) : nameOf(column);
    });
    m_table->model()->setProblem([this](const QStringList &row, int, int field) {
        const ColumnRef column = columns().fromKey(row.value(Column));
        return field == Column && columns().isMissing(column)
                   ? ParameterColumns::notFoundText(nameOf(column))
                   : QString();
    });
    m_table->setFields({{RowField::Kind::Label, tr("Column"), {}, 1},
                        {RowField::Kind::CheckedText, tr("New name"), {}, 1}});
    connect(m_table->addButton(QStringLiteral("edit-undo"), tr("Keep selected old names.")),
            &QToolButton::clicked, this, [this] { keepOldNames(false); });
    connect(m_table->addButton(QStringLiteral("edit-delete"), tr("Keep all old names.")),
            &QToolButton::clicked, this, [this] { keepOldNames(true); });
    connect(m_table, &RowsTable::edited, this, &RenameColumnsParameterWidget::tell);
    connect(m_search, &QLineEdit::textChanged, this, [this](const QString &text) {
        m_table->filter([this, &text](int row) {
            const QStringList &cells = m_table->model()->rows()[row];
            return (columns().shownName(columns().fromKey(cells.value(Column))) +
                    QLatin1Char('\n') + cells.value(NewName))
                .contains(text, Qt::CaseInsensitive);
        });
    });
}

void RenameColumnsParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    RowsModel::Rows rows;
    for (int i = 0; i < columns().count(); ++i) {
        rows.append({columns().key(columns().column(i)), QString()});
    }
    const auto renames = value<QList<ColumnRename>>();
    for (const ColumnRename &rename : renames) {
        const int number = columns().find(rename.column);
        const QString name = rename.renamed ? renamedMark + rename.newName : QString();
        if (number >= 0) {
            rows[number][NewName] = name;
        } else if (rename.renamed || !columns().isKnown()) {
            rows.append({columns().key(rename.column), name});
        }
    }
    m_table->model()->setRows(rows);
    const QString wrong = m_table->model()->firstProblem();
    showNotice(rows.isEmpty() ? ParameterColumns::unknownText() : wrong, !wrong.isEmpty());
}

void RenameColumnsParameterWidget::tell()
{
    QList<ColumnRename> renames;
    for (const QStringList &row : m_table->model()->rows()) {
        ColumnRename rename;
        rename.column = columns().fromKey(row.value(Column));
        rename.renamed = !row.value(NewName).isEmpty();
        rename.newName = row.value(NewName).mid(1);
        // A column that is gone is listed only for its new name.
        if (rename.renamed || !rename.column.missing) {
            renames.append(rename);
        }
    }
    choose(QVariant::fromValue(renames));
}

void RenameColumnsParameterWidget::keepOldNames(bool ofAll)
{
    const QList<int> selected = m_table->selectedRows();
    RowsModel::Rows rows = m_table->model()->rows();
    for (int row = 0; row < rows.size(); ++row) {
        if (ofAll || selected.contains(row)) {
            rows[row][NewName].clear();
        }
    }
    m_table->model()->setRows(rows);
    tell();
}

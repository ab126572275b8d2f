#include "sortcolumnseditor.h"

#include "noticelabel.h"
#include "rowstable.h"

#include <QVBoxLayout>

namespace {

enum Field { Column, Order };

constexpr QRgb emptyColor = 0xfc3300;

const QString ascending = QStringLiteral("1");
const QString descending = QStringLiteral("0");

} // namespace

SortColumnsParameterWidget::SortColumnsParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_empty(new NoticeLabel)
    , m_table(new RowsTable({tr("Sort levels"), tr("Add a sort level. (%1)"),
                             tr("Remove selected sort levels. (%1)"), tr("Remove all sort levels."),
                             tr("Move selected sort levels up."),
                             tr("Move selected sort levels down.")}))
{
    m_empty->setColor(QColor(emptyColor));
    contents()->addWidget(m_table);
    contents()->addWidget(m_empty);
    setMainField(m_table->view());
    // A new level sorts by the first column that no level has.
    m_table->setNewRow([this](int) {
        QStringList used;
        for (const QStringList &row : m_table->model()->rows()) {
            used.append(row.value(Column));
        }
        QString key;
        for (int i = columns().count() - 1; i >= 0; --i) {
            const QString each = columns().key(columns().column(i));
            key = used.contains(each) ? key : each;
        }
        return QStringList{key, ascending};
    });
    connect(m_table, &RowsTable::edited, this, &SortColumnsParameterWidget::takeRows);
}

void SortColumnsParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    QList<ColumnRef> used;
    RowsModel::Rows rows;
    const auto keys = value<QList<SortKey>>();
    for (const SortKey &key : keys) {
        used.append(key.column);
        rows.append({columns().key(key.column), key.ascending ? ascending : descending});
    }
    m_table->setFields({{RowField::Kind::Choice, tr("Column"), columns().choices(used), 3},
                        {RowField::Kind::Choice,
                         tr("Order"),
                         {{ascending, tr("Ascending")}, {descending, tr("Descending")}},
                         2}});
    m_table->model()->setRows(rows);
    showRows();
}

void SortColumnsParameterWidget::takeRows()
{
    QList<SortKey> keys;
    for (const QStringList &row : m_table->model()->rows()) {
        if (!row.value(Column).isEmpty()) {
            keys.append({columns().fromKey(row[Column]), row.value(Order) == ascending});
        }
    }
    choose(QVariant::fromValue(keys));
    showRows();
}

void SortColumnsParameterWidget::showRows()
{
    const bool isEmpty = m_table->model()->rows().isEmpty();
    m_empty->setNotice(NoticeLabel::Kind::Warning, isEmpty ? tr("Add sort columns") : QString());
    const QString wrong = m_table->model()->firstProblem();
    showNotice(!wrong.isEmpty()      ? wrong
               : columns().isKnown() ? QString()
                                     : ParameterColumns::unknownText(),
               !wrong.isEmpty());
}

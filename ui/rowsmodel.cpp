#include "rowsmodel.h"

#include "icons.h"
#include "theme.h"

#include <algorithm>

namespace {

const QChar checkedMark = QLatin1Char('=');

} // namespace

RowsModel::RowsModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

void RowsModel::setFields(const QVector<RowField> &fields)
{
    const bool sameShape = fields.size() == m_fields.size();
    if (!sameShape) {
        beginResetModel();
    }
    m_fields = fields;
    if (!sameShape) {
        endResetModel();
    } else if (!m_rows.isEmpty()) {
        Q_EMIT dataChanged(index(0, 0), index(m_rows.size() - 1, m_fields.size() - 1));
    }
}

void RowsModel::setRows(const Rows &rows)
{
    if (rows == m_rows) {
        return;
    }
    // A reset closes the field that is being edited.
    if (rows.size() != m_rows.size()) {
        beginResetModel();
        m_rows = rows;
        endResetModel();
        return;
    }
    m_rows = rows;
    Q_EMIT dataChanged(index(0, 0), index(m_rows.size() - 1, m_fields.size() - 1));
}

QString RowsModel::firstProblem() const
{
    for (int row = 0; row < m_rows.size(); ++row) {
        for (int field = 0; field < m_fields.size(); ++field) {
            const QString text = problem(row, field);
            if (!text.isEmpty()) {
                return text;
            }
        }
    }
    return {};
}

void RowsModel::insertRowAt(int row, const QStringList &cells)
{
    beginInsertRows({}, row, row);
    m_rows.insert(row, cells);
    endInsertRows();
    Q_EMIT edited();
}

void RowsModel::removeRowsAt(const QList<int> &rows)
{
    QList<int> descending = rows;
    std::sort(descending.begin(), descending.end(), std::greater<>());
    for (const int row : std::as_const(descending)) {
        beginRemoveRows({}, row, row);
        m_rows.removeAt(row);
        endRemoveRows();
    }
    if (!rows.isEmpty()) {
        Q_EMIT edited();
    }
}

QList<int> RowsModel::moveRowsAt(const QList<int> &rows, int by)
{
    QList<int> ordered = rows;
    std::sort(ordered.begin(), ordered.end());
    if (ordered.isEmpty() || ordered.first() + by < 0 || ordered.last() + by >= m_rows.size()) {
        return rows;
    }
    if (by > 0) {
        std::reverse(ordered.begin(), ordered.end());
    }
    for (int &row : ordered) {
        beginMoveRows({}, row, row, {}, by > 0 ? row + 2 : row - 1);
        m_rows.move(row, row + by);
        endMoveRows();
        row += by;
    }
    // Labels may depend on the row's number.
    Q_EMIT dataChanged(index(0, 0), index(m_rows.size() - 1, m_fields.size() - 1));
    Q_EMIT edited();
    return ordered;
}

int RowsModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows.size();
}

int RowsModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_fields.size();
}

QString RowsModel::problem(int row, int field) const
{
    if (!isUsed(row, field)) {
        return {};
    }
    const Choice *const chosen = choice(row, field);
    if (chosen && !chosen->problem.isEmpty()) {
        return chosen->problem;
    }
    return m_problem ? m_problem(m_rows[row], row, field) : QString();
}

const Choice *RowsModel::choice(int row, int field) const
{
    const QString stored = cell(row, field);
    const QVector<Choice> &choices = m_fields[field].choices;
    const auto found = std::find_if(choices.begin(), choices.end(),
                                    [&](const Choice &each) { return each.stored == stored; });
    return found == choices.end() ? nullptr : &*found;
}

QString RowsModel::shown(int row, int field) const
{
    const QString text = cell(row, field);
    switch (m_fields[field].kind) {
    case RowField::Kind::Choice: {
        const Choice *const chosen = choice(row, field);
        return !chosen ? text : chosen->shortText.isEmpty() ? chosen->text : chosen->shortText;
    }
    case RowField::Kind::CheckedText:
        return text.isEmpty() ? m_display(m_rows[row], row, field) : text.mid(1);
    case RowField::Kind::Label:
        return m_display(m_rows[row], row, field);
    case RowField::Kind::Text:
        break;
    }
    return text;
}

QVariant RowsModel::data(const QModelIndex &index, int role) const
{
    const int row = index.row();
    const int field = index.column();
    const bool isChecked = !cell(row, field).isEmpty();
    const bool isCheckedText = m_fields[field].kind == RowField::Kind::CheckedText;
    if (!isUsed(row, field)) {
        return {};
    }
    switch (role) {
    case Qt::DisplayRole:
        return shown(row, field);
    case Qt::EditRole:
        return isCheckedText ? shown(row, field) : cell(row, field);
    case Qt::ToolTipRole: {
        const QString wrong = problem(row, field);
        const Choice *const chosen = choice(row, field);
        return !wrong.isEmpty() ? wrong : chosen ? chosen->text : shown(row, field);
    }
    case Qt::CheckStateRole:
        return isCheckedText ? QVariant(isChecked ? Qt::Checked : Qt::Unchecked) : QVariant();
    case Qt::DecorationRole:
        return problem(row, field).isEmpty()
                   ? QVariant()
                   : Icons::colored(QStringLiteral("notice-warning"), Theme::current().warning);
    case Qt::ForegroundRole:
        return isCheckedText && !isChecked ? QVariant(Theme::current().secondaryText) : QVariant();
    case Qt::AccessibleTextRole:
        return QStringLiteral("%1: %2").arg(m_fields[field].title, shown(row, field));
    default:
        return {};
    }
}

void RowsModel::store(int row, int field, const QString &text)
{
    QStringList &cells = m_rows[row];
    while (cells.size() <= field) {
        cells.append(QString());
    }
    if (cells[field] == text) {
        return;
    }
    cells[field] = text;
    // Other cells of the row may depend on this one.
    Q_EMIT dataChanged(index(row, 0), index(row, m_fields.size() - 1));
    Q_EMIT edited();
}

bool RowsModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    const int row = index.row();
    const int field = index.column();
    const QString text = value.toString();
    const bool isCheckedText = m_fields[field].kind == RowField::Kind::CheckedText;
    if (role == Qt::CheckStateRole && isCheckedText) {
        const bool isOn = value.toInt() == Qt::Checked;
        store(row, field, isOn ? checkedMark + shown(row, field) : QString());
        return true;
    }
    if (role != Qt::EditRole) {
        return false;
    }
    store(row, field, isCheckedText && !text.isEmpty() ? checkedMark + text : text);
    return true;
}

QVariant RowsModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical) {
        return role == Qt::DisplayRole ? QVariant(section + 1) : QVariant();
    }
    if (role == Qt::DisplayRole || role == Qt::ToolTipRole) {
        return m_fields[section].title;
    }
    if (role == Qt::TextAlignmentRole) {
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    }
    return {};
}

Qt::ItemFlags RowsModel::flags(const QModelIndex &index) const
{
    Qt::ItemFlags flags = Qt::ItemIsSelectable | Qt::ItemIsEnabled;
    const RowField::Kind kind = m_fields[index.column()].kind;
    flags.setFlag(Qt::ItemIsEditable,
                  kind != RowField::Kind::Label && isUsed(index.row(), index.column()));
    flags.setFlag(Qt::ItemIsUserCheckable, kind == RowField::Kind::CheckedText);
    return flags;
}

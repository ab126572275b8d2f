#include "columnchoices.h"

#include "optionform.h"

#include <QAbstractTableModel>
#include <QComboBox>
#include <QHeaderView>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTimer>
#include <QVBoxLayout>

namespace {

enum Column { Name = 0, Choice = 1 };

constexpr int mostShownRows = 7;

} // namespace

class ColumnChoiceModel final : public QAbstractTableModel
{
public:
    ColumnChoiceModel(const QString &title, const QStringList &choices, QObject *parent)
        : QAbstractTableModel(parent)
        , m_title(title)
        , m_choices(choices)
    {
    }

    const QStringList &choices() const { return m_choices; }
    const QVector<int> &chosen() const { return m_chosen; }

    void setColumns(const QStringList &names, QVector<int> chosen)
    {
        chosen.resize(qMax(names.size(), chosen.size()));
        if (names == m_names && chosen.size() == m_chosen.size()) {
            // Keeps the selection.
            m_chosen = chosen;
            if (!chosen.isEmpty()) {
                Q_EMIT dataChanged(index(0, Choice), index(chosen.size() - 1, Choice));
            }
            return;
        }
        beginResetModel();
        m_names = names;
        m_chosen = chosen;
        endResetModel();
    }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : m_chosen.size();
    }
    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : 2;
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        const int choice = m_chosen.value(index.row());
        if (role == Qt::EditRole && index.column() == Choice) {
            return choice;
        }
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole) {
            return {};
        }
        if (index.column() == Choice) {
            return m_choices.value(choice);
        }
        return index.row() < m_names.size() ? m_names.at(index.row())
                                            : ColumnChoices::tr("Column %1").arg(index.row() + 1);
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (role != Qt::DisplayRole || orientation != Qt::Horizontal) {
            return {};
        }
        return section == Name ? ColumnChoices::tr("Column") : m_title;
    }
    Qt::ItemFlags flags(const QModelIndex &index) const override
    {
        const Qt::ItemFlags flags = QAbstractTableModel::flags(index);
        return index.column() == Choice ? flags | Qt::ItemIsEditable : flags;
    }
    bool setData(const QModelIndex &index, const QVariant &value, int role) override
    {
        if (role != Qt::EditRole || index.column() != Choice ||
            m_chosen.value(index.row()) == value.toInt()) {
            return false;
        }
        m_chosen[index.row()] = value.toInt();
        Q_EMIT dataChanged(index, index);
        return true;
    }

private:
    QString m_title;
    QStringList m_choices;
    QStringList m_names;
    QVector<int> m_chosen;
};

namespace {

/// Edits a choice in a box, which opens at once.
class ChoiceDelegate final : public QStyledItemDelegate
{
public:
    ChoiceDelegate(const QStringList &choices, QObject *parent)
        : QStyledItemDelegate(parent)
        , m_choices(choices)
    {
    }

    std::function<void(int choice)> chosen;

    /// As a cell with an arrow, so that it is seen that there is a choice.
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyledItemDelegate::paint(painter, option, index);
        const QWidget *view = option.widget;
        QStyleOption arrow;
        arrow.palette = option.palette;
        arrow.state = QStyle::State_Enabled;
        const int size = option.fontMetrics.height() / 2;
        arrow.rect =
            QRect(option.rect.right() - size - 6, option.rect.center().y() - size / 2, size, size);
        view->style()->drawPrimitive(QStyle::PE_IndicatorArrowDown, &arrow, painter, view);
    }
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &,
                          const QModelIndex &index) const override
    {
        QComboBox *box = makeBox(parent);
        box->addItems(m_choices);
        box->setAccessibleName(index.siblingAtColumn(Name).data().toString());
        connect(box, qOverload<int>(&QComboBox::activated), this, [this, box](int choice) {
            if (chosen) {
                chosen(choice);
            }
            Q_EMIT const_cast<ChoiceDelegate *>(this)->closeEditor(box);
        });
        QTimer::singleShot(0, box, [box] { box->showPopup(); });
        return box;
    }
    void setEditorData(QWidget *editor, const QModelIndex &index) const override
    {
        static_cast<QComboBox *>(editor)->setCurrentIndex(index.data(Qt::EditRole).toInt());
    }
    /// The choice has been made already.
    void setModelData(QWidget *, QAbstractItemModel *, const QModelIndex &) const override {}

private:
    QStringList m_choices;
};

} // namespace

ColumnChoices::ColumnChoices(const QString &choiceTitle, const QStringList &choices,
                             QWidget *parent)
    : QWidget(parent)
    , m_view(new QTableView(this))
    , m_model(new ColumnChoiceModel(choiceTitle, choices, this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_view);
    setFocusProxy(m_view);
    m_view->setModel(m_model);
    m_view->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view->setTabKeyNavigation(false);
    m_view->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::AnyKeyPressed);
    m_view->setWordWrap(false);
    m_view->verticalHeader()->hide();
    m_view->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_view->horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    m_view->horizontalHeader()->setHighlightSections(false);
    m_view->verticalHeader()->setDefaultSectionSize(fontMetrics().height() + 10);

    auto *delegate = new ChoiceDelegate(choices, this);
    m_view->setItemDelegateForColumn(Choice, delegate);
    delegate->chosen = [this](int choice) {
        bool anyChanged = false;
        QModelIndexList rows = m_view->selectionModel()->selectedRows();
        rows.append(m_view->currentIndex());
        for (const QModelIndex &row : qAsConst(rows)) {
            anyChanged |= m_model->setData(row.siblingAtColumn(Choice), choice, Qt::EditRole);
        }
        if (anyChanged) {
            Q_EMIT edited();
        }
    };
    connect(m_view, &QTableView::clicked, this, [this](const QModelIndex &index) {
        if (index.column() == Choice) {
            m_view->edit(index);
        }
    });
}

void ColumnChoices::setColumns(const QStringList &names, const QVector<int> &chosen)
{
    m_model->setColumns(names, chosen);
    const int rows = qBound(1, m_model->rowCount(), mostShownRows);
    const int rowHeight = m_view->verticalHeader()->defaultSectionSize();
    m_view->setFixedHeight(m_view->horizontalHeader()->sizeHint().height() + rows * rowHeight +
                           2 * m_view->frameWidth());
}

QVector<int> ColumnChoices::chosen() const
{
    return m_model->chosen();
}

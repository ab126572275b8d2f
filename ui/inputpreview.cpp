#include "inputpreview.h"

#include "inputexcerpt.h"
#include "inputreader.h"
#include "texts.h"
#include "theme.h"

#include <QAbstractTableModel>
#include <QHeaderView>
#include <QLabel>
#include <QTableView>
#include <QToolButton>
#include <QVBoxLayout>
#include <limits>

namespace {

constexpr int mostRows = 20;
constexpr int mostColumns = 100;
// Of the table, with its header and scroll bar.
constexpr int fewestLines = 5;
constexpr int mostLines = 9;
constexpr int longestValue = 200;
constexpr int delayMilliseconds = 300;

class PreviewModel final : public QAbstractTableModel
{
public:
    explicit PreviewModel(const Dataset &dataset, QObject *parent)
        : QAbstractTableModel(parent)
        , m_dataset(dataset)
    {
    }

    int rowCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : qMin(m_dataset.rowCount(), mostRows);
    }
    int columnCount(const QModelIndex &parent = {}) const override
    {
        return parent.isValid() ? 0 : qMin(m_dataset.columnCount().value(), mostColumns);
    }
    QVariant data(const QModelIndex &index, int role) const override
    {
        return role == Qt::DisplayRole || role == Qt::ToolTipRole
                   ? m_dataset.cell(RowIndex(index.row()), ColIndex(index.column()))
                         .left(longestValue)
                   : QVariant();
    }
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override
    {
        if (role != Qt::DisplayRole && role != Qt::ToolTipRole) {
            return {};
        }
        return orientation == Qt::Horizontal ? m_dataset.columnName(ColIndex(section))
                                             : Texts::count(section + 1);
    }

private:
    Dataset m_dataset;
};

} // namespace

InputPreview::InputPreview(QWidget *parent)
    : QWidget(parent)
    , m_title(new QToolButton(this))
    , m_table(new QTableView(this))
    , m_message(new QLabel(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 4, 8, 8);
    layout->setSpacing(4);
    m_title->setText(tr("Preview"));
    m_title->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_title->setAutoRaise(true);
    m_title->setFocusPolicy(Qt::StrongFocus);
    layout->addWidget(m_title);

    m_table->setAccessibleName(tr("First rows of the input"));
    m_table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_table->setTabKeyNavigation(false);
    m_table->setWordWrap(false);
    m_table->setAlternatingRowColors(true);
    m_table->setFont(Theme::hintFont(font()));
    m_table->horizontalHeader()->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    m_table->horizontalHeader()->setMaximumSectionSize(fontMetrics().averageCharWidth() * 24);
    m_table->verticalHeader()->setDefaultSectionSize(m_table->fontMetrics().height() + 4);
    m_table->verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
    limitTable(std::numeric_limits<int>::max());
    layout->addWidget(m_table);

    m_message->setWordWrap(true);
    m_message->setTextFormat(Qt::PlainText);
    m_message->setFont(Theme::hintFont(font()));
    layout->addWidget(m_message);

    m_timer.setSingleShot(true);
    m_timer.setInterval(delayMilliseconds);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        if (isVisible()) {
            refresh();
        }
    });
    connect(m_title, &QToolButton::clicked, this, [this] { setOpen(!m_open); });
    setOpen(true);
}

void InputPreview::setInput(const InputOptions &options, const QString &path)
{
    m_options = options;
    m_path = path;
    m_timer.start();
}

void InputPreview::limitTable(int height)
{
    const int line = fontMetrics().lineSpacing();
    m_table->setFixedHeight(qBound(line * fewestLines, height, line * mostLines));
}

void InputPreview::setOpen(bool open)
{
    m_open = open;
    m_title->setAccessibleDescription(open ? tr("open") : tr("closed"));
    m_title->setArrowType(open ? Qt::DownArrow : Qt::RightArrow);
    m_table->hide();
    m_message->hide();
    if (open) {
        m_timer.start();
    }
}

void InputPreview::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    m_timer.start();
}

void InputPreview::tell(const QString &text, bool isProblem)
{
    m_message->setForegroundRole(isProblem ? QPalette::BrightText : QPalette::PlaceholderText);
    m_message->setText(text);
    m_message->setVisible(!text.isEmpty());
}

void InputPreview::refresh()
{
    m_timer.stop();
    if (!m_open) {
        return;
    }
    const InputExcerpt excerpt = inputExcerpt(m_options, m_path);
    Messages messages;
    m_dataset = excerpt.problem.isEmpty()
                    ? readInput(excerpt.options, excerpt.path, &messages, Progress())
                    : Dataset();
    const std::unique_ptr<QAbstractItemModel> old(m_table->model());
    const std::unique_ptr<QItemSelectionModel> oldSelection(m_table->selectionModel());
    m_table->setModel(new PreviewModel(m_dataset, m_table));
    m_table->resizeColumnsToContents();
    m_table->setVisible(m_dataset.hasColumns());

    if (!excerpt.problem.isEmpty()) {
        tell(excerpt.problem, false);
    } else if (messages.failed) {
        tell(messages.warnings.join(QLatin1Char('\n')), true);
    } else if (m_dataset.isEmpty()) {
        tell(tr("There are no rows to read with these options."), false);
    } else if (excerpt.isCut || m_dataset.rowCount() > mostRows) {
        tell(excerpt.isCut ? tr("From the beginning of the file only.")
                           : tr("The first %1 of %2 rows.")
                                 .arg(Texts::count(mostRows), Texts::count(m_dataset.rowCount())),
             false);
    } else {
        tell(QString(), false);
    }
}

#include "columnvalues.h"

#include "celltext.h"
#include "columnstatistics.h"
#include "icons.h"
#include "numbertext.h"
#include "texts.h"
#include "theme.h"
#include "utf8.h"
#include "valuecharts.h"

#include <QDate>
#include <QEvent>
#include <QFormLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLocale>
#include <QMenu>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>
#include <QTreeWidget>
#include <QVBoxLayout>

namespace {

constexpr int valueRole = Qt::UserRole + 1;
constexpr int charactersShown = 300;

QScrollArea *makeScrollArea(QWidget *content)
{
    auto *const area = new QScrollArea;
    area->setWidgetResizable(true);
    area->setFrameShape(QFrame::NoFrame);
    area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    area->setFocusPolicy(Qt::NoFocus);
    area->setWidget(content);
    return area;
}

/// The text of a place between two ends, of numbers or of dates.
QString placeText(double place, bool isDate)
{
    if (isDate) {
        return QLocale().toString(QDate::fromJulianDay(qint64(place)), QLocale::ShortFormat);
    }
    return QLocale().toString(place, 'g', 4);
}

QStringList binLabels(const ColumnStatistics::Spread &spread, bool isDate)
{
    const auto count = double(spread.bins.size());
    QStringList labels;
    for (size_t i = 0; i < spread.bins.size(); ++i) {
        const auto at = [&](double part) {
            return spread.smallest * (1 - part / count) + spread.largest * (part / count);
        };
        labels.append(ColumnValues::tr("%1 to %2: %3")
                          .arg(placeText(at(double(i)), isDate),
                               placeText(at(double(i) + 1), isDate), Texts::count(spread.bins[i])));
    }
    return labels;
}

} // namespace

ColumnValues::ColumnValues(QWidget *parent)
    : QWidget(parent)
{
    setAccessibleName(tr("Column values"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(12, 8, 8, 8);
    layout->setSpacing(8);
    makeHeader(layout);
    makeContent(layout);
    m_filter = new QPushButton(tr("Filter by this value"), this);
    m_filter->setToolTip(tr("Keep only the rows that hold the value chosen in the list"));
    layout->addWidget(m_filter);
    connect(m_filter, &QPushButton::clicked, this, &ColumnValues::filterByCurrent);
    connect(&m_work, &IdleWork::advanced, this, &ColumnValues::showProgress);
    connect(&m_work, &IdleWork::ended, this, &ColumnValues::showResult);
    updateIcons();
    clear();
}

ColumnValues::~ColumnValues() = default;

void ColumnValues::makeHeader(QVBoxLayout *layout)
{
    auto *const row = new QHBoxLayout;
    m_title = new QLabel(this);
    m_title->setTextFormat(Qt::PlainText);
    m_title->setWordWrap(true);
    m_close = new QToolButton(this);
    m_close->setAutoRaise(true);
    m_close->setToolTip(tr("Close"));
    m_close->setAccessibleName(tr("Close column values"));
    connect(m_close, &QToolButton::clicked, this, &ColumnValues::closeWanted);
    row->addWidget(m_title, 1);
    row->addWidget(m_close, 0, Qt::AlignTop);
    layout->addLayout(row);
    m_progress = new QLabel(this);
    layout->addWidget(m_progress);
}

void ColumnValues::makeContent(QVBoxLayout *layout)
{
    m_content = new QWidget;
    auto *const content = new QVBoxLayout(m_content);
    content->setContentsMargins(0, 0, 4, 0);
    content->setSpacing(12);
    m_kinds = new KindBars(m_content);
    m_kinds->setAccessibleName(tr("Kinds of value"));
    content->addWidget(m_kinds);
    m_facts = new QFormLayout;
    m_facts->setHorizontalSpacing(12);
    m_facts->setVerticalSpacing(4);
    content->addLayout(m_facts);
    m_histogram = new Histogram(m_content);
    content->addWidget(m_histogram);
    m_listTitle = new QLabel(m_content);
    makeList();
    m_listTitle->setBuddy(m_list);
    content->addWidget(m_listTitle);
    content->addWidget(m_list);
    content->addStretch(1);
    layout->addWidget(makeScrollArea(m_content), 1);
}

void ColumnValues::makeList()
{
    m_list = new QTreeWidget(m_content);
    m_list->setAccessibleName(tr("Most frequent values"));
    m_list->setRootIsDecorated(false);
    m_list->setUniformRowHeights(true);
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setContextMenuPolicy(Qt::CustomContextMenu);
    m_list->setHeaderLabels({tr("Value"), tr("Cells"), tr("Share")});
    m_list->headerItem()->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
    m_list->headerItem()->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
    m_list->header()->setStretchLastSection(false);
    m_list->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
    m_list->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    m_list->header()->setSectionResizeMode(2, QHeaderView::Fixed);
    m_list->header()->resizeSection(2, fontMetrics().averageCharWidth() * 12);
    m_list->header()->setSectionsClickable(false);
    m_list->setItemDelegate(new ShareDelegate(m_list));
    m_list->viewport()->installEventFilter(this);
    connect(m_list, &QTreeWidget::customContextMenuRequested, this, &ColumnValues::showListMenu);
    connect(m_list, &QTreeWidget::itemActivated, this, &ColumnValues::filterByCurrent);
    connect(m_list, &QTreeWidget::currentItemChanged, this, [this](QTreeWidgetItem *item) {
        m_filter->setEnabled(item != nullptr);
        auto *const area = qobject_cast<QScrollArea *>(m_content->parentWidget()->parentWidget());
        if (item && area) {
            const QRect place = m_list->visualItemRect(item);
            const QPoint at = m_list->viewport()->mapTo(m_content, place.center());
            area->ensureVisible(0, at.y(), 0, place.height() * 2);
        }
    });
}

/// The list is as long as its lines, and the panel around it scrolls: it takes no wheel.
bool ColumnValues::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Wheel && watched == m_list->viewport()) {
        event->ignore();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

void ColumnValues::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        updateIcons();
        fitList();
    }
}

void ColumnValues::updateIcons()
{
    if (m_close) {
        m_close->setIcon(Icons::colored(QStringLiteral("close"), Theme::current().secondaryText));
        m_title->setFont(Theme::titleFont(font()));
    }
}

void ColumnValues::showColumn(const Dataset &table, ColIndex column)
{
    m_data = table;
    m_column = column;
    m_columnName = table.columnName(column);
    m_title->setText(m_columnName.left(charactersShown));
    start();
}

void ColumnValues::clear()
{
    m_work.stop();
    m_statistics.reset();
    m_data = Dataset();
    m_column = ColIndex();
    m_columnName.clear();
    m_title->clear();
    m_progress->hide();
    m_content->hide();
    m_list->clear();
    m_filter->setEnabled(false);
}

void ColumnValues::setDateFormats(const QStringList &patterns)
{
    if (patterns == m_dateFormats) {
        return;
    }
    m_dateFormats = patterns;
    if (m_column.isValid()) {
        start();
    }
}

void ColumnValues::start()
{
    m_statistics = std::make_unique<ColumnStatistics>(m_data, m_column, m_dateFormats);
    m_content->setEnabled(false); // what is still there belongs to another table
    m_filter->setEnabled(false);
    m_work.start([this] { return m_statistics->step(); });
}

void ColumnValues::showProgress()
{
    m_progress->setText(tr("Counting: %1").arg(shareText(m_statistics->fractionDone())));
    m_progress->show();
}

void ColumnValues::showResult()
{
    m_progress->setVisible(m_data.isEmpty());
    m_progress->setText(tr("This column has no rows."));
    m_content->setVisible(!m_data.isEmpty());
    m_content->setEnabled(true);
    m_kinds->setCounts(m_statistics->kinds());
    showFacts();
    showHistogram();
    showFrequent();
}

void ColumnValues::addFact(const QString &name, const QString &value, const QString &tip)
{
    auto *const label = new QLabel(name, m_content);
    auto *const text = new ElidedLabel(value, m_content);
    const QString shown = tip.isEmpty() ? value : tip;
    text->setToolTip(QStringLiteral("<p>%1</p>").arg(shown.toHtmlEscaped()));
    m_facts->addRow(label, text);
}

void ColumnValues::showFacts()
{
    while (m_facts->rowCount() > 0) {
        m_facts->removeRow(0);
    }
    const ColumnStatistics &facts = *m_statistics;
    addFact(tr("Distinct"), Texts::count(facts.distinctCount()),
            tr("Different values; empty cells do not count."));
    const auto addLength = [this](const QString &name, std::string_view value, int length) {
        const QString text = firstCharacters(value, charactersShown);
        addFact(name, length == 1 ? tr("1 character: %1").arg(text)
                                  : tr("%1 characters: %2").arg(Texts::count(length), text));
    };
    if (!facts.longest().empty()) {
        addLength(tr("Shortest"), facts.shortest(), facts.shortestLength());
        addLength(tr("Longest"), facts.longest(), facts.longestLength());
    }
    if (facts.numbers().count > 0) {
        addFact(tr("Smallest"), Utf8::decoded(facts.numbers().smallestValue));
        addFact(tr("Largest"), Utf8::decoded(facts.numbers().largestValue));
    }
    if (facts.dates().count > 0) {
        addFact(tr("Earliest"), Utf8::decoded(facts.dates().smallestValue));
        addFact(tr("Latest"), Utf8::decoded(facts.dates().largestValue));
    }
}

void ColumnValues::showHistogram()
{
    const bool isDate = m_statistics->dates().count > m_statistics->numbers().count;
    const ColumnStatistics::Spread &spread =
        isDate ? m_statistics->dates() : m_statistics->numbers();
    // One value has no distribution.
    m_histogram->setVisible(spread.count > 0 && spread.smallest < spread.largest);
    if (spread.count > 0) {
        m_histogram->setBins(spread.bins, Utf8::decoded(spread.smallestValue),
                             Utf8::decoded(spread.largestValue), binLabels(spread, isDate));
    }
}

void ColumnValues::showFrequent()
{
    m_list->clear();
    const double total = double(qMax(1, m_data.rowCount()));
    const qint64 values =
        m_statistics->distinctCount() + (m_statistics->kinds().of(ValueKind::Empty) > 0 ? 1 : 0);
    m_listTitle->setText(
        values > ColumnStatistics::mostFrequent
            ? tr("The %1 most frequent values").arg(Texts::count(ColumnStatistics::mostFrequent))
            : tr("All values"));
    for (const ValueCount &each : m_statistics->frequent()) {
        auto *const item = new QTreeWidgetItem(m_list);
        const double share = double(each.count) / total;
        const QString text = firstCharacters(each.value, charactersShown);
        item->setText(0, each.value.empty() ? tr("(empty)") : text.simplified());
        if (each.value.empty()) {
            QFont italic = m_list->font();
            italic.setItalic(true);
            item->setFont(0, italic);
        }
        item->setToolTip(
            0,
            QStringLiteral("<p style=\"white-space:pre-wrap\">%1</p>").arg(text.toHtmlEscaped()));
        item->setData(0, valueRole, Utf8::decoded(each.value));
        item->setText(1, Texts::count(each.count));
        item->setTextAlignment(1, Qt::AlignRight | Qt::AlignVCenter);
        item->setText(2, shareText(share));
        item->setTextAlignment(2, Qt::AlignRight | Qt::AlignVCenter);
        item->setData(2, Qt::UserRole, share);
    }
    fitList();
}

void ColumnValues::fitList()
{
    if (!m_list) {
        return;
    }
    const int lines = m_list->topLevelItemCount();
    const int line = lines > 0 ? m_list->visualItemRect(m_list->topLevelItem(0)).height() : 0;
    m_list->setFixedHeight(m_list->header()->sizeHint().height() + lines * line + 4);
}

void ColumnValues::filterByCurrent()
{
    const QTreeWidgetItem *const item = m_list->currentItem();
    if (item) {
        Q_EMIT filterWanted(m_columnName, item->data(0, valueRole).toString());
    }
}

void ColumnValues::showListMenu(const QPoint &position)
{
    QTreeWidgetItem *const item = m_list->itemAt(position);
    if (!item) {
        return;
    }
    m_list->setCurrentItem(item);
    QMenu menu;
    menu.addAction(tr("Filter by this value"), this, &ColumnValues::filterByCurrent);
    menu.exec(m_list->viewport()->mapToGlobal(position));
}

#include "datapane.h"

#include "columnvalues.h"
#include "datatablemodel.h"
#include "datatableview.h"
#include "icons.h"
#include "tablefind.h"
#include "texts.h"
#include "theme.h"
#include "valuecharts.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QSplitter>
#include <QToolButton>
#include <QVBoxLayout>

DataPane::DataPane(QWidget *parent)
    : QWidget(parent)
    , m_model(new DataTableModel(this))
    , m_find(new TableFind(m_model, this))
    , m_view(new DataTableView(m_model, m_find))
{
    setAccessibleName(tr("Data"));
    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(makeToolBar());
    layout->addWidget(makeNoteBar());
    m_values = new ColumnValues;
    m_values->setMinimumWidth(220);
    m_values->hide();
    m_splitter = new QSplitter(Qt::Horizontal);
    m_splitter->addWidget(m_view);
    m_splitter->addWidget(m_values);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 0);
    m_splitter->setChildrenCollapsible(false);
    layout->addWidget(m_splitter, 1);
    setFocusProxy(m_view);
    connectParts();
    updateIcons();
    updateCaption();
    updateNote();
    updateFindState();
}

QToolButton *DataPane::makeButton(const QString &text, const QString &tip)
{
    auto *const button = new QToolButton(this);
    button->setText(text);
    button->setToolTip(tip);
    button->setAccessibleName(text);
    button->setAutoRaise(true);
    button->setFocusPolicy(Qt::TabFocus);
    return button;
}

QWidget *DataPane::makeToolBar()
{
    auto *const bar = new QWidget(this);
    auto *const row = new QHBoxLayout(bar);
    row->setContentsMargins(8, 4, 8, 4);
    row->setSpacing(4);
    m_caption = new ElidedLabel(QString(), bar);
    m_caption->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    row->addWidget(m_caption);
    row->addStretch(1);
    makeFindBox();
    m_copy = makeButton(tr("Copy"), tr("Copy the selected cells"));
    m_copy->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    m_blanks = makeButton(tr("Show blanks"), tr("Show blanks: spaces as dots, tabs as arrows"));
    m_blanks->setCheckable(true);
    row->addWidget(m_findState);
    row->addSpacing(4);
    row->addWidget(m_findEdit);
    row->addWidget(m_previous);
    row->addWidget(m_next);
    row->addSpacing(8);
    row->addWidget(m_copy);
    row->addWidget(m_blanks);
    return bar;
}

void DataPane::makeFindBox()
{
    m_findEdit = new QLineEdit(this);
    m_findEdit->setPlaceholderText(tr("Find in table"));
    m_findEdit->setAccessibleName(tr("Find in table"));
    m_findEdit->setClearButtonEnabled(true);
    m_findEdit->setMinimumWidth(fontMetrics().averageCharWidth() * 10);
    m_findEdit->setMaximumWidth(fontMetrics().averageCharWidth() * 26);
    m_findEdit->installEventFilter(this);
    m_findState = new QLabel(this);
    m_previous = makeButton(tr("Previous match"), tr("Previous match (Shift+F3)"));
    m_next = makeButton(tr("Next match"), tr("Next match (F3)"));
    m_previous->setToolButtonStyle(Qt::ToolButtonIconOnly);
    m_next->setToolButtonStyle(Qt::ToolButtonIconOnly);
}

QWidget *DataPane::makeNoteBar()
{
    m_noteBar = new QWidget(this);
    auto *const row = new QHBoxLayout(m_noteBar);
    row->setContentsMargins(8, 0, 8, 4);
    m_note = new QLabel(m_noteBar);
    m_note->setTextFormat(Qt::PlainText);
    m_note->setWordWrap(true);
    m_noteButton = makeButton(QString(), QString());
    m_noteButton->setAutoRaise(false);
    row->addWidget(m_note, 1);
    row->addWidget(m_noteButton);
    return m_noteBar;
}

void DataPane::connectParts()
{
    connect(m_copy, &QToolButton::clicked, this, [this] { m_view->copy(false); });
    connect(m_blanks, &QToolButton::toggled, m_view, &DataTableView::setShowBlanks);
    connect(m_findEdit, &QLineEdit::textChanged, this, &DataPane::startFind);
    connect(m_next, &QToolButton::clicked, this, [this] { findNext(true); });
    connect(m_previous, &QToolButton::clicked, this, [this] { findNext(false); });
    connect(m_find, &TableFind::countChanged, this, &DataPane::updateFindState);
    connect(m_find, &TableFind::found, this, [this](CellPlace place, bool wrapped) {
        m_wrapped = wrapped;
        m_view->setCurrent(place);
        updateFindState();
    });
    connect(m_view, &DataTableView::findWanted, this, &DataPane::showFind);
    connect(m_view, &DataTableView::findNextWanted, this, &DataPane::findNext);
    connect(m_view, &DataTableView::filterWanted, this, &DataPane::filterWanted);
    connect(m_view, &DataTableView::columnValuesWanted, this, &DataPane::showColumnValues);
    connect(m_view, &DataTableView::noted, this, [this](const QString &text) {
        m_passingNote = text;
        updateNote();
    });
    connect(m_values, &ColumnValues::filterWanted, this, &DataPane::filterWanted);
    connect(m_values, &ColumnValues::closeWanted, this, [this] {
        m_values->hide();
        m_values->clear();
        m_valuesColumn.clear();
        m_view->setFocus();
    });
    connect(m_model, &DataTableModel::sortChanged, this, &DataPane::updateNote);
    connect(m_noteButton, &QToolButton::clicked, this, [this] {
        if (m_passingNote.isEmpty()) {
            m_model->endSort();
        }
        m_passingNote.clear();
        updateNote();
    });
}

void DataPane::updateIcons()
{
    m_copy->setIcon(Icons::action(QStringLiteral("edit-copy")));
    m_previous->setIcon(Icons::action(QStringLiteral("go-up")));
    m_next->setIcon(Icons::action(QStringLiteral("go-down")));
    m_caption->setFont(Theme::titleFont(font()));
    updateCaptionWidth();
}

void DataPane::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (m_values &&
        (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange)) {
        updateIcons();
    }
}

/// In a narrow pane the buttons give up their words, then the search its length, then the caption.
void DataPane::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    constexpr int charactersWide = 95;
    const bool isNarrow = width() < fontMetrics().averageCharWidth() * charactersWide;
    m_copy->setToolButtonStyle(isNarrow ? Qt::ToolButtonIconOnly : Qt::ToolButtonTextBesideIcon);
    m_blanks->setText(isNarrow ? QString(QChar(0x00B6)) : m_blanks->accessibleName());
}

void DataPane::updateCaptionWidth()
{
    constexpr int charactersKept = 34;
    m_caption->setMinimumWidth(
        qMin(m_caption->sizeHint().width(), fontMetrics().averageCharWidth() * charactersKept));
}

void DataPane::showData(const Dataset &table, const Dataset &input, const QString &emptyText)
{
    m_passingNote.clear();
    m_wrapped = false;
    m_view->setEmptyText(emptyText);
    m_model->setData(table, input);
    updateCaption();
    m_copy->setEnabled(table.hasRows());
    // The panel stays wanted while another table is shown that has no such column.
    const ColIndex column =
        m_valuesColumn.isEmpty() ? ColIndex() : table.columnIndex(m_valuesColumn);
    if (column.isValid()) {
        m_values->showColumn(table, column);
    } else {
        m_values->clear();
    }
    m_values->setVisible(column.isValid());
}

void DataPane::setOutdated(bool outdated)
{
    m_view->setOutdated(outdated);
    updateCaption();
}

void DataPane::setDateFormats(const QStringList &patterns)
{
    m_model->setDateFormats(patterns);
    m_values->setDateFormats(patterns);
}

void DataPane::focusTable()
{
    m_view->setFocus(Qt::ShortcutFocusReason);
}

void DataPane::showFind()
{
    m_findEdit->setFocus(Qt::ShortcutFocusReason);
    m_findEdit->selectAll();
}

void DataPane::updateCaption()
{
    if (!m_model->data().hasColumns()) {
        m_caption->setText(tr("No data"));
        updateCaptionWidth();
        return;
    }
    const int rows = m_model->rowCount();
    const int columns = m_model->columnCount();
    const QString size = tr("%1 %2 x %3 %4")
                             .arg(Texts::count(rows), Texts::rows(rows), Texts::count(columns),
                                  Texts::columns(columns));
    m_caption->setText(m_view->isOutdated() ? tr("%1, being updated").arg(size) : size);
    updateCaptionWidth();
}

void DataPane::updateNote()
{
    QString note = m_passingNote;
    QString button = tr("Close");
    if (note.isEmpty() && m_model->sortColumn() >= 0 && m_model->rowCount() > 0) {
        const QString name = m_model->columnName(m_model->sortColumn()).left(80);
        note = m_model->isSorting() ? tr("Sorting by \"%1\" for viewing...").arg(name)
                                    : tr("Sorted by \"%1\" for viewing only: the data, and what "
                                         "follows from it, keep their order.")
                                          .arg(name);
        button = tr("Show as in the data");
    }
    m_note->setText(note);
    m_noteButton->setText(button);
    m_noteButton->setAccessibleName(button);
    m_noteBar->setVisible(!note.isEmpty());
}

void DataPane::startFind()
{
    m_wrapped = false;
    m_find->setText(m_findEdit->text());
    m_find->search(m_view->current(), true, true);
    updateFindState();
}

void DataPane::findNext(bool forward)
{
    if (m_findEdit->text().isEmpty()) {
        showFind();
        return;
    }
    m_find->search(m_view->current(), forward);
}

void DataPane::updateFindState()
{
    const bool isOn = !m_find->text().isEmpty();
    QString text;
    if (isOn && m_find->count() == 0) {
        text = m_find->isCounting() ? tr("Looking...") : tr("Not found");
    } else if (isOn) {
        const QString count = Texts::count(m_find->count());
        text = m_find->isCounting()   ? tr("%1 or more cells").arg(count)
               : m_find->count() == 1 ? tr("1 cell")
                                      : tr("%1 cells").arg(count);
        if (m_wrapped) {
            text = tr("%1, went round the end").arg(text);
        }
    }
    m_findState->setText(text);
    m_previous->setEnabled(isOn);
    m_next->setEnabled(isOn);
}

bool DataPane::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_findEdit || event->type() != QEvent::KeyPress) {
        return QWidget::eventFilter(watched, event);
    }
    const auto *const key = static_cast<QKeyEvent *>(event);
    switch (key->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_F3:
        findNext((key->modifiers() & Qt::ShiftModifier) == 0);
        break;
    case Qt::Key_Escape:
        m_findEdit->clear();
        focusTable();
        break;
    case Qt::Key_Down:
        focusTable();
        break;
    default:
        return false;
    }
    return true;
}

void DataPane::showColumnValues(int column)
{
    m_valuesColumn = m_model->columnName(column);
    const bool wasHidden = m_values->isHidden();
    m_values->showColumn(m_model->data(), ColIndex(column));
    m_values->show();
    if (wasHidden) {
        const int wanted = qMax(m_values->minimumWidth(), fontMetrics().averageCharWidth() * 44);
        const int panel = qMin(wanted, m_splitter->width() / 2);
        m_splitter->setSizes({m_splitter->width() - panel, panel});
    }
}

#include "choicebox.h"

#include "hintdelegate.h"
#include "optionfield.h"

#include <QApplication>
#include <QFrame>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListView>
#include <QScreen>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QStylePainter>
#include <QVBoxLayout>

namespace {

constexpr int mostShown = 12;
constexpr int widest = 420;
/// Shorter lists are not searched.
constexpr int fewestSearched = 5;

bool movesInList(int key)
{
    return key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp ||
           key == Qt::Key_PageDown;
}

} // namespace

ChoiceBox::ChoiceBox(QWidget *parent)
    : QComboBox(parent)
{
    ignoreWheelUnlessFocused(this);
    setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    setMinimumContentsLength(4);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ChoiceBox::setChoices(const QVector<Choice> &choices)
{
    if (choices == m_choices && count() == choices.size()) {
        return;
    }
    m_choices = choices;
    const QString before = stored();
    const QSignalBlocker blocker(this);
    clear();
    for (const Choice &choice : choices) {
        addItem(choice.text, choice.stored);
        setItemData(count() - 1, choice.hint, hintRole);
        setItemData(count() - 1, choice.problem, Qt::ToolTipRole);
    }
    setStored(before);
}

void ChoiceBox::setStored(const QString &stored)
{
    setCurrentIndex(findData(stored));
    setToolTip(currentText());
}

void ChoiceBox::makePopup()
{
    m_popup = new QFrame(this, Qt::Popup);
    m_popup->setFrameShape(QFrame::StyledPanel);
    m_search = new QLineEdit;
    m_search->setPlaceholderText(tr("Search"));
    m_search->setAccessibleName(tr("Search"));
    m_search->setClearButtonEnabled(true);
    m_list = new QListView;
    m_list->setAccessibleName(tr("Choices"));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setUniformItemSizes(true);
    m_list->setMouseTracking(true);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->setItemDelegate(new HintDelegate(hintRole, m_list));
    m_found = new QSortFilterProxyModel(m_popup);
    m_found->setFilterCaseSensitivity(Qt::CaseInsensitive);
    m_found->setSourceModel(model());
    m_list->setModel(m_found);

    auto *layout = new QVBoxLayout(m_popup);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->setSpacing(2);
    layout->addWidget(m_search);
    layout->addWidget(m_list);

    m_search->installEventFilter(this);
    m_list->installEventFilter(this);
    m_popup->installEventFilter(this);
    connect(m_search, &QLineEdit::textChanged, this, &ChoiceBox::filter);
    connect(m_list, &QListView::clicked, this, &ChoiceBox::choose);
}

void ChoiceBox::placePopup()
{
    const int rows = qBound(1, count(), mostShown);
    const int rowHeight = qMax(1, m_list->sizeHintForRow(0));
    const int content =
        m_list->sizeHintForColumn(0) + m_list->verticalScrollBar()->sizeHint().width() + 8;
    m_list->setFixedHeight(rows * rowHeight + 2);
    const int listWidth = qMax(width(), qMin(content, widest));
    QSize size(listWidth, m_popup->sizeHint().height());
    const QRect screen = window()->screen()->availableGeometry();
    QPoint place = mapToGlobal(rect().bottomLeft());
    if (place.y() + size.height() > screen.bottom()) {
        place.setY(qMax(screen.top(), mapToGlobal(QPoint(0, 0)).y() - size.height()));
    }
    place.setX(qBound(screen.left(), place.x(), qMax(screen.left(), screen.right() - listWidth)));
    m_popup->setGeometry(QRect(place, size));
}

void ChoiceBox::showPopup()
{
    if (count() == 0) {
        return;
    }
    if (!m_popup) {
        makePopup();
    }
    m_search->clear();
    m_search->setVisible(count() >= fewestSearched);
    const QModelIndex current = m_found->mapFromSource(model()->index(currentIndex(), 0));
    m_list->setCurrentIndex(current.isValid() ? current : m_found->index(0, 0));
    placePopup();
    m_popup->show();
    m_list->scrollTo(m_list->currentIndex());
    if (m_search->isVisibleTo(m_popup)) {
        m_search->setFocus(Qt::PopupFocusReason);
    } else {
        m_list->setFocus(Qt::PopupFocusReason);
    }
}

void ChoiceBox::hidePopup()
{
    if (m_popup) {
        m_popup->hide();
    }
    QComboBox::hidePopup();
}

void ChoiceBox::filter(const QString &text)
{
    m_found->setFilterFixedString(text);
    // What begins with the text is meant rather than what holds it somewhere.
    int best = 0;
    for (int row = m_found->rowCount() - 1; row >= 0; --row) {
        const QString found = m_found->index(row, 0).data().toString();
        best = found.startsWith(text, Qt::CaseInsensitive) ? row : best;
    }
    m_list->setCurrentIndex(m_found->index(best, 0));
}

void ChoiceBox::choose(const QModelIndex &index)
{
    if (!index.isValid()) {
        return;
    }
    const int row = m_found->mapToSource(index).row();
    hidePopup();
    setCurrentIndex(row);
    setToolTip(currentText());
    Q_EMIT activated(row);
}

bool ChoiceBox::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        auto *key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter ||
            key->key() == Qt::Key_Tab) {
            choose(m_list->currentIndex());
            return true;
        }
        if (key->key() == Qt::Key_Escape) {
            hidePopup();
            return true;
        }
        if (object == m_search && movesInList(key->key())) {
            QCoreApplication::sendEvent(m_list, event);
            return true;
        }
    }
    return QComboBox::eventFilter(object, event);
}

void ChoiceBox::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionComboBox option;
    initStyleOption(&option);
    painter.drawComplexControl(QStyle::CC_ComboBox, option);
    const QRect field =
        style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, this);
    option.currentText =
        fontMetrics().elidedText(option.currentText, Qt::ElideRight, field.width() - 2);
    painter.drawControl(QStyle::CE_ComboBoxLabel, option);
}

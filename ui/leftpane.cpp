#include "leftpane.h"

#include "theme.h"
#include "transform.h"
#include "transformbutton.h"
#include "transformcatalogue.h"
#include "transformcategory.h"

#include <QAction>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QScrollArea>
#include <QVBoxLayout>

LeftPane::LeftPane(const TransformCatalogue *catalogue, const QList<QAction *> &actions,
                   QWidget *parent)
    : QWidget(parent)
    , m_search(new QLineEdit(this))
    , m_category(new QComboBox(this))
    , m_area(new QScrollArea(this))
    , m_nothing(new QLabel(tr("No transform is found by these words."), this))
{
    m_search->setPlaceholderText(tr("Search transforms"));
    m_search->setClearButtonEnabled(true);
    m_search->setAccessibleName(tr("Search transforms"));
    m_search->setToolTip(tr("Type what you want to do. Enter adds the first transform found."));
    m_search->installEventFilter(this);
    m_category->setAccessibleName(tr("Category of transforms"));
    m_category->addItem(TransformCategories::allMenuText().remove(QLatin1Char('&')), 0);
    for (const TransformCategory category : TransformCategories::all()) {
        m_category->addItem(TransformCategories::label(category), int(category));
    }
    m_nothing->setWordWrap(true);
    m_nothing->setAlignment(Qt::AlignCenter);
    m_nothing->setForegroundRole(QPalette::PlaceholderText);

    m_area->setWidget(makePalette(*catalogue));
    m_area->setWidgetResizable(true);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_area->setFocusPolicy(Qt::NoFocus);

    auto *const layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 4, 4);
    layout->addWidget(makeActionButtons(actions));
    layout->addSpacing(4);
    layout->addWidget(m_search);
    layout->addWidget(m_category);
    layout->addWidget(m_area, 1);

    connect(m_search, &QLineEdit::textChanged, this, &LeftPane::filter);
    connect(m_category, qOverload<int>(&QComboBox::currentIndexChanged), this, &LeftPane::filter);
    connect(m_search, &QLineEdit::returnPressed, this, [this] {
        const QList<TransformButton *> shown = shownButtons();
        if (!shown.isEmpty() && !m_search->text().isEmpty()) {
            Q_EMIT transformWanted(shown.first()->prototype().typeName());
        }
    });
    filter();
}

QWidget *LeftPane::makeActionButtons(const QList<QAction *> &actions)
{
    auto *const box = new QWidget(this);
    auto *const layout = new QVBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(2);
    for (QAction *const action : actions) {
        auto *const button = new QToolButton(box);
        button->setDefaultAction(action);
        button->setAccessibleName(action->iconText().trimmed());
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
        button->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
        button->setFocusPolicy(Qt::StrongFocus);
        button->setAutoRaise(true);
        layout->addWidget(button);
    }
    return box;
}

QWidget *LeftPane::makePalette(const TransformCatalogue &catalogue)
{
    auto *const palette = new QWidget(this);
    auto *const layout = new QVBoxLayout(palette);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_nothing);
    for (const TransformCategory category : TransformCategories::all()) {
        auto *const title = new QLabel(TransformCategories::label(category), palette);
        title->setFont(Theme::hintFont(font()));
        title->setForegroundRole(QPalette::PlaceholderText);
        title->setContentsMargins(4, 8, 0, 2);
        Group group{int(category), title, {}};
        layout->addWidget(title);
        for (const Transform *const type : catalogue.types()) {
            if (type->category() != int(category) || !type->isBuilt() || type->isDeprecated()) {
                continue;
            }
            auto *const button = new TransformButton(type, palette);
            button->installEventFilter(this);
            connect(button, &QToolButton::clicked, this,
                    [this, type] { Q_EMIT transformWanted(type->typeName()); });
            layout->addWidget(button);
            group.buttons.append(button);
        }
        m_groups.append(group);
    }
    layout->addStretch();
    return palette;
}

void LeftPane::filter()
{
    const QStringList words = searchWords(m_search->text());
    const int category = m_category->currentData().toInt();
    bool anyShown = false;
    for (const Group &group : qAsConst(m_groups)) {
        bool anyInGroup = false;
        for (TransformButton *const button : group.buttons) {
            const bool isShown =
                (category == 0 || category == group.category) && button->matches(words);
            button->setVisible(isShown);
            anyInGroup = anyInGroup || isShown;
        }
        group.title->setVisible(anyInGroup);
        anyShown = anyShown || anyInGroup;
    }
    m_nothing->setVisible(!anyShown);
}

QList<TransformButton *> LeftPane::shownButtons() const
{
    QList<TransformButton *> shown;
    for (const Group &group : m_groups) {
        for (TransformButton *const button : group.buttons) {
            if (!button->isHidden()) {
                shown.append(button);
            }
        }
    }
    return shown;
}

void LeftPane::focusSearch()
{
    m_search->setFocus(Qt::ShortcutFocusReason);
    m_search->selectAll();
}

void LeftPane::moveFocus(int step)
{
    const QList<TransformButton *> shown = shownButtons();
    const int now = shown.indexOf(qobject_cast<TransformButton *>(focusWidget()));
    const int next = now + step;
    if (next < 0 || (now < 0 && step < 0)) {
        m_search->setFocus(Qt::OtherFocusReason);
    } else if (next < shown.size()) {
        shown.at(next)->setFocus(Qt::TabFocusReason);
        m_area->ensureWidgetVisible(shown.at(next));
    }
}

bool LeftPane::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const auto *const key = static_cast<QKeyEvent *>(event);
        if (key->key() == Qt::Key_Down || key->key() == Qt::Key_Up) {
            moveFocus(key->key() == Qt::Key_Down ? 1 : -1);
            return true;
        }
        if ((key->key() == Qt::Key_Return || key->key() == Qt::Key_Enter) && watched != m_search) {
            static_cast<TransformButton *>(watched)->click();
            return true;
        }
    }
    return QWidget::eventFilter(watched, event);
}

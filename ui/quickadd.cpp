#include "quickadd.h"

#include "icons.h"
#include "theme.h"
#include "transform.h"
#include "transformcatalogue.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>

const QString QuickAdd::inputChoice = QStringLiteral("+input");
const QString QuickAdd::outputChoice = QStringLiteral("+output");
const QString QuickAdd::noteChoice = QStringLiteral("+note");

namespace {

constexpr int shownLines = 9;

/// The lower the better; -1 when a word of the search is found nowhere.
int rank(const QString &name, const QStringList &words, const QStringList &searched)
{
    int sum = 0;
    for (const QString &word : searched) {
        const auto begins = [&word](const QString &text) { return text.startsWith(word); };
        if (begins(name)) {
            continue;
        }
        if (name.contains(QLatin1Char(' ') + word)) {
            sum += 1;
        } else if (name.contains(word)) {
            sum += 2;
        } else if (std::any_of(words.begin(), words.end(), begins)) {
            sum += 3;
        } else {
            return -1;
        }
    }
    return sum;
}

} // namespace

QuickAdd::QuickAdd(const TransformCatalogue &catalogue, bool oneInputOnly, QWidget *parent)
    : QFrame(parent, Qt::Popup)
    , m_edit(new QLineEdit(this))
    , m_list(new QListWidget(this))
{
    setFrameShape(StyledPanel);
    setAccessibleName(tr("Add an item"));
    m_edit->setPlaceholderText(tr("Type to add…"));
    m_edit->setAccessibleName(tr("Search for what to add"));
    m_edit->setClearButtonEnabled(true);
    m_edit->installEventFilter(this);
    m_list->setAccessibleName(tr("Items to add"));
    m_list->setFrameShape(NoFrame);
    m_list->setUniformItemSizes(true);
    m_list->setSpacing(1);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(8, 8, 8, 8);
    layout->setSpacing(8);
    layout->addWidget(m_edit);
    layout->addWidget(m_list);

    const Theme &theme = Theme::current();
    if (!oneInputOnly) {
        addKind(inputChoice, tr("Input"), QStringLiteral("input"), theme.input,
                {tr("file"), tr("open"), tr("read"), tr("source")});
        addKind(outputChoice, tr("Output"), QStringLiteral("output"), theme.output,
                {tr("file"), tr("write"), tr("export"), tr("result")});
        addKind(noteChoice, tr("Note"), QStringLiteral("note"), theme.note,
                {tr("text"), tr("comment")});
    }
    addTransforms(catalogue, oneInputOnly);
    connect(m_edit, &QLineEdit::textChanged, this, &QuickAdd::fill);
    connect(m_list, &QListWidget::itemClicked, this, &QuickAdd::choose);
    connect(m_list, &QListWidget::itemActivated, this, &QuickAdd::choose);
    fill(QString());
}

void QuickAdd::addKind(const QString &choice, const QString &name, const QString &picture,
                       const QColor &color, const QStringList &words)
{
    m_entries.append({choice, name, QString(), words, Icons::colored(picture, color)});
}

void QuickAdd::addTransforms(const TransformCatalogue &catalogue, bool oneInputOnly)
{
    const QList<const Transform *> types = catalogue.types();
    for (const Transform *type : types) {
        const bool fits =
            !oneInputOnly || (type->minimumInputs() <= 1 && type->maximumInputs() >= 1);
        if (type->isBuilt() && !type->isDeprecated() && fits) {
            m_entries.append({type->typeName(), type->name(), type->description(),
                              type->keywords().values(), Icons::forTransform(*type)});
        }
    }
}

void QuickAdd::fill(const QString &text)
{
    const QStringList searched = text.toLower().split(QLatin1Char(' '), Qt::SkipEmptyParts);
    QVector<QPair<int, const Entry *>> found;
    for (const Entry &entry : std::as_const(m_entries)) {
        const int place = rank(entry.name.toLower(), entry.words, searched);
        if (place >= 0) {
            found.append({place, &entry});
        }
    }
    std::stable_sort(found.begin(), found.end(),
                     [](const auto &a, const auto &b) { return a.first < b.first; });
    m_list->clear();
    for (const auto &each : std::as_const(found)) {
        auto *item = new QListWidgetItem(each.second->icon, each.second->name, m_list);
        item->setData(Qt::UserRole, each.second->choice);
        item->setToolTip(each.second->description);
    }
    if (found.isEmpty()) {
        auto *item = new QListWidgetItem(tr("Nothing found"), m_list);
        item->setFlags(Qt::NoItemFlags);
    }
    m_list->setCurrentRow(0);
}

void QuickAdd::openAt(const QPoint &globalPos)
{
    const int line = qMax(m_list->sizeHintForRow(0), fontMetrics().height() + 8);
    m_list->setFixedHeight(shownLines * (line + 2));
    setFixedWidth(qMax(260, fontMetrics().averageCharWidth() * 36));
    adjustSize();
    QRect place(globalPos, size());
    if (const QScreen *screen = QApplication::screenAt(globalPos)) {
        const QRect all = screen->availableGeometry();
        place.moveRight(qMin(place.right(), all.right()));
        place.moveBottom(qMin(place.bottom(), all.bottom()));
    }
    move(place.topLeft());
    show();
    m_edit->setFocus();
}

void QuickAdd::choose(const QListWidgetItem *item)
{
    const QString choice = item ? item->data(Qt::UserRole).toString() : QString();
    if (!choice.isEmpty()) {
        // Closed first, so that a dialog may follow.
        close();
        Q_EMIT chosen(choice);
    }
}

// The list is led from the line that is being typed in.
bool QuickAdd::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_edit || event->type() != QEvent::KeyPress) {
        return QFrame::eventFilter(watched, event);
    }
    switch (static_cast<QKeyEvent *>(event)->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        QApplication::sendEvent(m_list, event);
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        choose(m_list->currentItem());
        return true;
    default:
        return QFrame::eventFilter(watched, event);
    }
}

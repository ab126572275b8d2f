#include "finditemdialog.h"

#include "graphscene.h"
#include "icons.h"
#include "ionode.h"
#include "transformbutton.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

namespace {

/// All that an item is found by.
QString searchedText(const Node &node)
{
    QStringList parts = {node.displayName(), itemKindLabel(node.kind()), node.comment(),
                         itemStatusText(node.status())};
    if (const auto *const io = qobject_cast<const IONode *>(&node)) {
        parts << io->path() << io->alias();
    }
    return parts.join(QLatin1Char(' ')).toLower();
}

} // namespace

FindItemDialog::FindItemDialog(const GraphScene *scene, QWidget *parent)
    : QDialog(parent)
    , m_scene(scene)
    , m_search(new QLineEdit(this))
    , m_list(new QListWidget(this))
{
    setWindowTitle(tr("Find item"));
    m_search->setPlaceholderText(tr("Name, kind, file, comment or status"));
    m_search->setAccessibleName(tr("Search items"));
    m_search->setClearButtonEnabled(true);
    m_search->installEventFilter(this);
    m_list->setAccessibleName(tr("Items found"));
    auto *const buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    QPushButton *const show = buttons->addButton(tr("Show"), QDialogButtonBox::AcceptRole);
    show->setDefault(true);
    auto *const layout = new QVBoxLayout(this);
    layout->addWidget(m_search);
    layout->addWidget(m_list);
    layout->addWidget(buttons);
    resize(420, 360);

    connect(m_search, &QLineEdit::textChanged, this, &FindItemDialog::fill);
    connect(m_list, &QListWidget::itemActivated, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    fill();
}

void FindItemDialog::fill()
{
    const QStringList words = searchWords(m_search->text());
    m_list->clear();
    for (const Node *const node : m_scene->nodesByAddition()) {
        const QString text = searchedText(*node);
        if (std::all_of(words.begin(), words.end(),
                        [&text](const QString &word) { return text.contains(word); })) {
            const bool isNote = node->kind() == ItemKind::Note;
            const QString name = isNote ? node->comment().simplified() : node->displayName();
            auto *const item = new QListWidgetItem(
                Icons::forNode(*node),
                QStringLiteral("%1 (%2)").arg(name, itemKindLabel(node->kind())), m_list);
            item->setData(Qt::UserRole, node->id());
            item->setToolTip(name);
        }
    }
    m_list->setCurrentRow(0);
}

Node *FindItemDialog::chosen() const
{
    const QListWidgetItem *const item = m_list->currentItem();
    return item ? m_scene->node(item->data(Qt::UserRole).toInt()) : nullptr;
}

bool FindItemDialog::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Down || key == Qt::Key_Up) {
            QCoreApplication::sendEvent(m_list, event);
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

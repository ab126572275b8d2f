#include "rowsdelegate.h"

#include "rowsmodel.h"

#include <QKeyEvent>
#include <QLineEdit>
#include <QTimer>

namespace {

const char earlierText[] = "earlierText";

} // namespace

RowsDelegate::RowsDelegate(QObject *parent)
    : QStyledItemDelegate(parent)
{
}

QWidget *RowsDelegate::createEditor(QWidget *parent, const QStyleOptionViewItem &,
                                    const QModelIndex &index) const
{
    const auto *const model = qobject_cast<const RowsModel *>(index.model());
    const RowField &field = model->field(index.column());
    auto *const self = const_cast<RowsDelegate *>(this);
    if (field.kind != RowField::Kind::Choice) {
        auto *const line = new QLineEdit(parent);
        line->setAccessibleName(field.title);
        line->setFrame(false);
        connect(line, &QLineEdit::textEdited, self,
                [self, line] { Q_EMIT self->commitData(line); });
        return line;
    }
    auto *const box = new ChoiceBox(parent);
    box->setAccessibleName(field.title);
    box->setChoices(field.choices);
    connect(box, QOverload<int>::of(&ChoiceBox::activated), self, [self, box] {
        Q_EMIT self->commitData(box);
        Q_EMIT self->closeEditor(box);
    });
    // The box gets its place and the focus first.
    QTimer::singleShot(0, box, &ChoiceBox::showPopup);
    return box;
}

void RowsDelegate::setEditorData(QWidget *editor, const QModelIndex &index) const
{
    const QString text = index.data(Qt::EditRole).toString();
    if (auto *const box = qobject_cast<ChoiceBox *>(editor)) {
        box->setStored(text);
        return;
    }
    auto *const line = qobject_cast<QLineEdit *>(editor);
    if (!editor->property(earlierText).isValid()) {
        editor->setProperty(earlierText, text);
        line->setText(text);
        line->selectAll();
    } else if (line->text() != text && !line->isModified()) {
        line->setText(text);
    }
}

void RowsDelegate::setModelData(QWidget *editor, QAbstractItemModel *model,
                                const QModelIndex &index) const
{
    if (const auto *const box = qobject_cast<const ChoiceBox *>(editor)) {
        if (box->currentIndex() >= 0) {
            model->setData(index, box->stored(), Qt::EditRole);
        }
        return;
    }
    const auto *const line = qobject_cast<const QLineEdit *>(editor);
    if (line->isModified()) {
        model->setData(index, line->text(), Qt::EditRole);
    }
}

QSize RowsDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(qMax(size.height(), option.fontMetrics.height() + 8));
    return size;
}

bool RowsDelegate::eventFilter(QObject *object, QEvent *event)
{
    auto *const line = qobject_cast<QLineEdit *>(object);
    if (line && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent *>(event)->key() == Qt::Key_Escape && line->isModified()) {
        line->setText(line->property(earlierText).toString());
        line->setModified(true);
        Q_EMIT commitData(line);
        Q_EMIT closeEditor(line);
        return true;
    }
    return QStyledItemDelegate::eventFilter(object, event);
}

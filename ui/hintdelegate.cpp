#include "hintdelegate.h"

#include "theme.h"

#include <QApplication>
#include <QPainter>

namespace {

constexpr int gap = 12;
constexpr int padding = 4;

} // namespace

HintDelegate::HintDelegate(int hintRole, QObject *parent)
    : QStyledItemDelegate(parent)
    , m_hintRole(hintRole)
{
}

void HintDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const
{
    QStyleOptionViewItem item(option);
    initStyleOption(&item, index);
    const QStyle *const style = item.widget ? item.widget->style() : QApplication::style();
    const QRect textRect = style->subElementRect(QStyle::SE_ItemViewItemText, &item, item.widget);
    const int textWidth = item.fontMetrics.horizontalAdvance(item.text);
    style->drawControl(QStyle::CE_ItemViewItem, &item, painter, item.widget);

    const QString hint = index.data(m_hintRole).toString();
    const QFont font = Theme::hintFont(item.font);
    const QRect room = textRect.adjusted(textWidth + gap, 0, -padding, 0);
    if (hint.isEmpty() || room.width() < 3 * gap) {
        return;
    }
    const bool isSelected = item.state & QStyle::State_Selected;
    painter->save();
    painter->setFont(font);
    painter->setPen(isSelected ? item.palette.color(QPalette::HighlightedText)
                               : Theme::current().secondaryText);
    painter->drawText(room, Qt::AlignRight | Qt::AlignVCenter,
                      QFontMetrics(font).elidedText(hint, Qt::ElideRight, room.width()));
    painter->restore();
}

QSize HintDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(qMax(size.height(), option.fontMetrics.height() + 2 * padding));
    const QString hint = index.data(m_hintRole).toString();
    if (!hint.isEmpty()) {
        const QFontMetrics metrics(Theme::hintFont(option.font));
        size.rwidth() += gap + metrics.horizontalAdvance(hint) + padding;
    }
    return size;
}

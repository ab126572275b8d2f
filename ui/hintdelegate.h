#pragma once

#include <QStyledItemDelegate>

/// Draws list items with a few faint words at the right, taken from a role of the model.
class HintDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    HintDelegate(int hintRole, QObject *parent);

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

private:
    int m_hintRole;
};

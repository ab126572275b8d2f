#pragma once

#include "nodeitem.h"

#include <QPolygonF>

/// A note: its text on its colour, with an arrow that points at something.
class NoteItem final : public NodeItem
{
public:
    using NodeItem::NodeItem;

    void refresh() override;
    void paint(QPainter *painter, const QStyleOptionGraphicsItem *option, QWidget *) override;

private:
    void layoutArrow(int direction);

    QStringList m_lines;
    QPolygonF m_arrow;
};

#include "notenode.h"

NoteNode::NoteNode()
{
    setStatus(ItemStatus::UpToDate, false);
}

void NoteNode::setAppearance(const QString &color, NoteArrow arrow)
{
    if (m_color != color || m_arrow != arrow) {
        m_color = color;
        m_arrow = arrow;
        Q_EMIT dataChanged(this);
    }
}

std::unique_ptr<Node> NoteNode::clone() const
{
    auto copy = std::make_unique<NoteNode>();
    copyTo(copy.get());
    copy->m_color = m_color;
    copy->m_arrow = m_arrow;
    return copy;
}

Dataset NoteNode::run(const ProcessContext &, Messages *)
{
    return {};
}

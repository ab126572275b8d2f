#include "ionode.h"

#include <QFileInfo>

void IONode::setAlias(const QString &alias)
{
    if (m_alias != alias) {
        m_alias = alias;
        Q_EMIT dataChanged(this);
    }
}

QString IONode::displayName() const
{
    if (!name().isEmpty()) {
        return name();
    }
    if (medium() == Medium::Clipboard) {
        return tr("Clipboard");
    }
    const QString file = QFileInfo(path()).fileName();
    return file.isEmpty() ? itemKindLabel(kind()) : file;
}

void IONode::copyTo(IONode *other) const
{
    Node::copyTo(other);
    other->m_alias = m_alias;
}

#pragma once

#include <QList>
#include <QString>

class Node;

struct InformationLine
{
    QString label;
    QString value;
};

/// The lines of an item's information panel, in order. Relative paths refer to the document's
/// folder.
QList<InformationLine> itemInformation(const Node &node, const QString &documentFolder);

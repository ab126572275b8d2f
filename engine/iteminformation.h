#pragma once

#include <QList>
#include <QString>

class Node;

struct InformationLine
{
    QString label;
    QString value;
};

/// The lines of an item's information panel, in order: what every item tells of itself, its file,
/// its table and its last run. Relative paths refer to the document's folder.
QList<InformationLine> itemInformation(const Node &node, const QString &documentFolder);

/// The lines of the pane of an input or output: how it reads or writes, with the options that mean
/// something for its file type. Empty for other kinds.
QList<InformationLine> itemOptions(const Node &node);

#pragma once

#include <QColor>
#include <QIcon>
#include <QString>

class Node;
class Transform;

/// All pictures of the window, in the colours of the theme in use. Icons are drawn when they are
/// needed, at the scale of the screen.
namespace Icons {

/// Makes the pictures available; to be called once before the first of them.
void prepare();
/// To be called after a change of theme: the pictures of standard actions follow it.
void followTheme();

/// A standard action by its name in the desktop's naming ("document-open"), else our own picture
/// of that name ("run").
QIcon action(const QString &name);
/// A picture of our own in one colour; `name` is that of its file without the ending.
QIcon colored(const QString &name, const QColor &color);
QIcon forTransform(const Transform &transform);
/// By kind, and for transforms by type.
QIcon forNode(const Node &node);
/// The name of the picture for a transform type, for colored().
QString transformPicture(const QString &typeName);

} // namespace Icons

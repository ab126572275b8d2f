#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

class GraphScene;
class Node;
class QFileDevice;
class TransformCatalogue;

/// A document's file and the graph, one from the other: the only way in which documents are loaded
/// and saved.
namespace DocumentFile {

/// What loading tells beside the graph and its settings.
struct Loaded
{
    int version = 0;
    bool createdWithLaterVersion = false;
    /// Where it was saved, as it says itself.
    QString savedPath;
    /// For the user: what was left out or is not understood.
    QStringList warnings;
};

/// Replaces everything in the scene by the document. On failure the scene stays as it was and
/// `error` tells why.
[[nodiscard]] bool load(const QString &path, const TransformCatalogue &catalogue, GraphScene *scene,
                        Loaded *loaded, QString *error);

/// Writes the scene and its settings; the old file stays whole unless everything was written. The
/// scene does not change: its path and undo state are the caller's business.
[[nodiscard]] bool save(const QString &path, const GraphScene &scene, QString *error);
/// The same, replacing the content of a file that is already open. When this fails the file's
/// content is undefined.
[[nodiscard]] bool saveTo(QFileDevice *file, const QString &path, const GraphScene &scene,
                          QString *error);

/// A document of some items and the connections among them, for the clipboard. It remembers where
/// the scene's document lies.
QByteArray copyOf(const QList<Node *> &nodes, const GraphScene &scene);
/// Replaces everything in the scene by the items of such a document.
[[nodiscard]] bool loadCopy(const QByteArray &bytes, const TransformCatalogue &catalogue,
                            GraphScene *scene, QString *error);

/// What the user is told about a document with the "created with a later version" flag.
QString laterVersionWarning();

} // namespace DocumentFile

#pragma once

#include "filetypes.h"
#include "node.h"

/// What inputs and outputs share: a file or the clipboard, and the alias by which the command line
/// and batch processing refer to the item.
class IONode : public Node
{
    Q_OBJECT

public:
    QString alias() const { return m_alias; }
    void setAlias(const QString &alias);

    virtual Medium medium() const = 0;
    virtual FileType fileType() const = 0;
    /// As the user gave it; relative to the document's folder when not absolute.
    virtual QString path() const = 0;
    /// Marks the item and everything downstream when the path is another one.
    virtual void setPath(const QString &path) = 0;

    /// The name, else the file's name, else "Clipboard", else the kind.
    QString displayName() const override;
    QString resultText() const override { return fileTypeLabel(fileType()); }

protected:
    void copyTo(IONode *other) const;

private:
    QString m_alias;
};

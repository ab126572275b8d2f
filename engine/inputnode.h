#pragma once

#include "inputoptions.h"
#include "ionode.h"

/// Reads a table from a file or from the text of a clipboard.
class InputNode final : public IONode
{
    Q_OBJECT

public:
    explicit InputNode(const InputOptions &options = {});

    const InputOptions &options() const { return m_options; }
    /// Marks the item and everything downstream when something changes.
    void setOptions(const InputOptions &options);

    ItemKind kind() const override { return ItemKind::Input; }
    std::unique_ptr<Node> clone() const override;
    bool canHaveDownstream() const override { return true; }
    Medium medium() const override { return m_options.medium; }
    FileType fileType() const override { return m_options.fileType; }
    QString path() const override { return m_options.path; }
    void setPath(const QString &path) override;

protected:
    Dataset run(const ProcessContext &context, Messages *messages) override;

private:
    InputOptions m_options;
};

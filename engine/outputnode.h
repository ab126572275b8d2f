#pragma once

#include "ionode.h"
#include "outputoptions.h"

/// Writes the table of its one upstream item to files or to the clipboard, and keeps a shared copy
/// of what it wrote.
class OutputNode final : public IONode
{
    Q_OBJECT

public:
    explicit OutputNode(const OutputOptions &options = {});

    const OutputOptions &options() const { return m_options; }
    /// Marks the item when something changes.
    void setOptions(const OutputOptions &options);

    ItemKind kind() const override { return ItemKind::Output; }
    std::unique_ptr<Node> clone() const override;
    int maximumUpstream() const override { return 1; }
    Medium medium() const override { return m_options.medium; }
    FileType fileType() const override { return m_options.fileType; }
    QString path() const override { return m_options.path; }
    void setPath(const QString &path) override;

    /// The options that an output made by the user starts with: "Output.csv", names for XML and a
    /// comment that tells program, version, date and time.
    static OutputOptions defaultOptions();

protected:
    Dataset run(const ProcessContext &context, Messages *messages) override;

private:
    OutputOptions m_options;
};

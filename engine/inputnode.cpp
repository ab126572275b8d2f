#include "inputnode.h"

#include "inputreader.h"
#include "outputwriter.h"

InputNode::InputNode(const InputOptions &options)
    : m_options(options)
{
}

void InputNode::setOptions(const InputOptions &options)
{
    m_options = options;
    markChanged();
}

void InputNode::setPath(const QString &path)
{
    if (m_options.path != path) {
        m_options.path = path;
        markChanged();
    }
}

std::unique_ptr<Node> InputNode::clone() const
{
    auto copy = std::make_unique<InputNode>(m_options);
    copyTo(copy.get());
    return copy;
}

Dataset InputNode::run(const ProcessContext &context, Messages *messages)
{
    // A copy, because the options may be edited while the file is being read.
    const InputOptions options = m_options;
    QString path;
    if (options.medium == Medium::File) {
        if (options.path.isEmpty()) {
            messages->fail(tr("No file is set."));
            return {};
        }
        path = resolvedPath(options.path, context.documentFolder);
        if (path.isEmpty()) {
            messages->fail(tr("Relative file path for '%1', but .transform not saved for it to be "
                              "relative to.")
                               .arg(options.path));
            return {};
        }
    }
    return readInput(options, path, messages, context.progress);
}

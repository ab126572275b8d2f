#include "outputnode.h"

#include "outputwriter.h"
#include "texts.h"
#include "transformsettings.h"
#include "userinterface.h"

OutputNode::OutputNode(const OutputOptions &options)
    : m_options(options)
{
}

void OutputNode::setOptions(const OutputOptions &options)
{
    m_options = options;
    markChanged();
}

void OutputNode::setPath(const QString &path)
{
    if (m_options.path != path) {
        m_options.path = path;
        markChanged();
    }
}

std::unique_ptr<Node> OutputNode::clone() const
{
    auto copy = std::make_unique<OutputNode>(m_options);
    copyTo(copy.get());
    return copy;
}

OutputOptions OutputNode::defaultOptions()
{
    OutputOptions options;
    options.path = QStringLiteral("Output.csv");
    options.xmlRoot = QStringLiteral("root");
    options.xmlRow = QStringLiteral("record");
    const QDateTime now = QDateTime::currentDateTime();
    options.fileComment =
        tr(" File created by %1 %2 at %3 %4 ")
            .arg(Texts::productName(), Texts::productVersion(), now.date().toString(Qt::ISODate),
                 now.time().toString(Qt::ISODate));
    return options;
}

Dataset OutputNode::run(const ProcessContext &context, Messages *messages)
{
    const QList<Node *> upstream = upstreamNodes();
    if (upstream.isEmpty()) {
        messages->note(tr("No transforms or inputs connected"));
        return {};
    }
    const Node *input = upstream.first();
    if (input->status() == ItemStatus::Error) {
        messages->fail(tr("Input '%1' has an error, nothing written.").arg(input->displayName()));
        return {};
    }

    OutputContext output;
    output.name = displayName();
    output.documentFolder = context.documentFolder;
    output.blockedExtensions = context.blockedOutputExtensions;
    output.inputPaths = context.inputPaths;
    output.dateFormats = TransformSettings::current().dateFormats;
    if (UserInterface *user = context.userInterface) {
        output.confirm = [user](const QString &text) { return user->confirmMultiFile(text); };
        output.setClipboard = [user](const QString &text) { return user->setClipboardText(text); };
    }
    // Copies, because the options may be edited while the file is being written.
    const OutputOptions options = m_options;
    const Dataset dataset = input->dataset();
    writeOutput(options, dataset, output, messages, context.progress);
    return dataset;
}

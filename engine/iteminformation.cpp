#include "iteminformation.h"

#include "inputnode.h"
#include "outputnode.h"
#include "outputwriter.h"
#include "texts.h"
#include "transform.h"
#include "transformnode.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QLocale>

namespace {

/// Collects the lines of a panel. The labels are written as in the panel.
class Lines
{
    Q_DECLARE_TR_FUNCTIONS(ItemInformation)

public:
    QList<InformationLine> take() { return std::move(m_lines); }

    void addItem(const Node &node);
    void addFile(const IONode &node, const QString &documentFolder);
    void addLastRun(const Node &node);
    void addTransform(const TransformNode &node);
    void addInputOptions(const InputNode &node);
    void addOutputOptions(const OutputNode &node);

private:
    void add(const QString &label, const QString &value) { m_lines.append({label, value}); }
    void add(const QString &label, bool value) { add(label, Texts::yesNo(value)); }
    void addInputLayout(const InputOptions &options);
    void addOutputText(const OutputOptions &options);
    void addOutputStructure(const OutputOptions &options);

    QList<InformationLine> m_lines;
};

QString shown(const QDateTime &time)
{
    return time.isValid() ? QLocale().toString(time, QLocale::ShortFormat) : QString();
}

QString shown(Delimiter delimiter, const QString &custom)
{
    const QString label = delimiterLabel(delimiter);
    return delimiter == Delimiter::Custom && !custom.isEmpty()
               ? Lines::tr("%1 (%2)").arg(label, custom)
               : label;
}

QString target(const QString &path, FileType type, const QString &sheet)
{
    if (path.isEmpty()) {
        return Lines::tr("<no file name>");
    }
    const QString native = QDir::toNativeSeparators(path);
    return isSpreadsheet(type) ? Lines::tr("%1[%2]").arg(native, sheet) : native;
}

bool isText(FileType type)
{
    return !isSpreadsheet(type);
}

void Lines::addItem(const Node &node)
{
    const Dataset &dataset = node.dataset();
    const qint64 columns = dataset.columnCount().value();
    add(tr("Name"), node.displayName());
    add(tr("Status"), itemStatusText(node.status()));
    add(tr("Size"), node.sizeLabel());
    add(tr("Type"), itemKindLabel(node.kind()));
    add(tr("Dataset columns"), Texts::count(columns));
    add(tr("Dataset rows"), Texts::count(dataset.rowCount()));
    add(tr("Dataset values"), Texts::count(columns * dataset.rowCount()));
}

void Lines::addFile(const IONode &node, const QString &documentFolder)
{
    if (node.medium() != Medium::File || node.path().isEmpty()) {
        return;
    }
    const QString resolved = resolvedPath(node.path(), documentFolder);
    const QString path = resolved.isEmpty() ? node.path() : resolved;
    add(tr("File location"), QDir::toNativeSeparators(path));
    const QFileInfo file(path);
    if (resolved.isEmpty() || !file.exists()) {
        add(tr("File not found"), QString());
        return;
    }
    add(tr("File readable"), file.isReadable());
    add(tr("File writable"), file.isWritable());
    add(tr("File size"), tr("%1 bytes").arg(Texts::count(file.size())));
    add(tr("File created"), shown(file.birthTime()));
    add(tr("File modified"), shown(file.lastModified()));
}

void Lines::addLastRun(const Node &node)
{
    add(tr("Comment"), node.comment());
    add(tr("Warnings"), node.warnings().join(QLatin1Char('\n')));
    add(tr("Info"), node.information().join(QLatin1Char('\n')));
    add(tr("Last processed"), shown(node.lastProcessed()));
    add(tr("Processing time"),
        node.lastProcessed().isValid() ? Texts::elapsed(node.processingMilliseconds()) : QString());
}

void Lines::addTransform(const TransformNode &node)
{
    add(tr("Connections in"), Texts::count(node.upstreamConnections().size()));
    add(tr("Connections out"), Texts::count(node.downstreamConnections().size()));
    add(tr("Transform type"), node.transform().name());
    add(tr("Description"), node.transform().description());
    add(tr("Result"), node.resultText());
}

void Lines::addInputLayout(const InputOptions &options)
{
    const FileType type = options.fileType;
    if (isReadAsDelimitedText(type)) {
        add(tr("Delimiter"), shown(options.delimiter, options.customDelimiter));
        add(tr("Ignore repeated delim"), options.ignoreRepeatedDelimiter);
        add(tr("Quoting"), inputQuotingLabel(options.quoting));
    }
    if (type == FileType::FixedWidth) {
        QStringList widths;
        for (const int width : options.fixedWidths) {
            widths.append(QString::number(width));
        }
        const bool automatic = options.autoFixedWidths || widths.isEmpty();
        add(tr("Columns"), automatic ? tr("Automatic") : widths.join(QStringLiteral(", ")));
    }
    if (type == FileType::Json || type == FileType::Xml) {
        add(tr("Format"),
            options.jsonArraysAsRows ? tr("Arrays as rows") : tr("Arrays as columns"));
    }
    if (ignoresLeadingRows(type)) {
        add(tr("Ignore"), tr("First %1 row(s)").arg(Texts::count(options.ignoredRows)));
    }
    if (isText(type)) {
        add(tr("Encoding"), options.encoding);
    }
    if (mayHaveHeader(type)) {
        add(tr("Has header"), options.header);
    }
}

void Lines::addInputOptions(const InputNode &node)
{
    const InputOptions &options = node.options();
    const bool isFile = options.medium == Medium::File;
    add(tr("Type"), fileTypeLabel(options.fileType));
    if (isFile) {
        add(tr("File"), target(options.path, options.fileType, options.worksheet));
    }
    add(tr("Source"), isFile ? tr("File") : tr("Clipboard"));
    add(tr("Size"), node.sizeLabel());
    add(tr("Connections out"), Texts::count(node.downstreamConnections().size()));
    addInputLayout(options);
    add(tr("Trim whitespace"), options.trim);
    add(tr("Simplify whitespace"), options.simplify);
    add(tr("Ignore empty rows"), options.ignoreEmptyRows);
    add(tr("Ignore empty columns"), options.ignoreEmptyColumns);
    if (isSpreadsheet(options.fileType)) {
        add(tr("Ignore hidden Excel rows"), options.ignoreExcelHiddenRows);
        add(tr("Ignore hidden Excel columns"), options.ignoreExcelHiddenColumns);
    }
    const bool hasMeta = options.showMeta && !options.metaText.isEmpty();
    add(tr("Meta information"), hasMeta ? options.metaText : Texts::yesNo(options.showMeta));
    add(tr("Uses schema"), options.schemaInUse);
    add(tr("Alias"), node.alias());
}

void Lines::addOutputText(const OutputOptions &options)
{
    if (options.fileType == FileType::DelimitedText) {
        add(tr("Delimiter"), shown(options.delimiter, options.customDelimiter));
        add(tr("Quoting"), outputQuotingLabel(options.quoting));
    }
    if (isText(options.fileType)) {
        add(tr("Line endings"), lineEndingLabel(options.lineEnding, false));
        add(tr("Encoding"), options.encoding);
        add(tr("Byte Order Mark"), options.byteOrderMark);
    }
}

void Lines::addOutputStructure(const OutputOptions &options)
{
    const FileType type = options.fileType;
    const bool isStructured = type == FileType::Json || type == FileType::Xml ||
                              type == FileType::Yaml || type == FileType::VCard;
    if (isStructured) {
        add(tr("Remove empty"), options.removeEmpty);
    }
    if (type == FileType::Xml) {
        add(tr("Above root"), options.xmlAboveRoot);
        add(tr("Root name"), options.xmlRoot);
        add(tr("Below root"), options.xmlBelowRoot);
        add(tr("Row name"), options.xmlRow);
    }
    if (type == FileType::Html) {
        add(tr("Escape special"), options.htmlEncode);
    }
    if (isSpreadsheet(type)) {
        add(tr("Formatting"), options.excelOutput == 0 ? tr("Automatic") : tr("By column"));
    }
    if (type == FileType::Json) {
        add(tr("Types"), options.jsonTypes == 0 ? tr("Automatic") : tr("By column"));
    }
}

void Lines::addOutputOptions(const OutputNode &node)
{
    const OutputOptions &options = node.options();
    add(tr("Type"), fileTypeLabel(options.fileType));
    if (options.medium == Medium::Clipboard) {
        add(tr("File"), tr("Clipboard"));
    } else if (options.multiFile) {
        add(tr("Files"), tr("From dataset column '%1'").arg(options.multiFileColumn));
    } else {
        add(tr("File"), target(options.path, options.fileType, options.worksheet));
    }
    add(tr("Connections in"), Texts::count(node.upstreamConnections().size()));
    addOutputText(options);
    addOutputStructure(options);
    add(tr("Write mode"), writeModeLabel(options.writeMode));
    const bool onlyIfEmpty = options.writeHeader && options.headerOnlyIfEmpty;
    add(tr("Write header"), Texts::yesNo(options.writeHeader) +
                                (onlyIfEmpty ? QLatin1Char(' ') + tr("(if empty)") : QString()));
    add(tr("Alias"), node.alias());
}

} // namespace

QList<InformationLine> itemInformation(const Node &node, const QString &documentFolder)
{
    Lines lines;
    lines.addItem(node);
    if (const auto *item = qobject_cast<const IONode *>(&node)) {
        lines.addFile(*item, documentFolder);
    }
    lines.addLastRun(node);
    if (const auto *transform = qobject_cast<const TransformNode *>(&node)) {
        lines.addTransform(*transform);
    }
    return lines.take();
}

QList<InformationLine> itemOptions(const Node &node)
{
    Lines lines;
    if (const auto *input = qobject_cast<const InputNode *>(&node)) {
        lines.addInputOptions(*input);
    } else if (const auto *output = qobject_cast<const OutputNode *>(&node)) {
        lines.addOutputOptions(*output);
    }
    return lines.take();
}

#include "multifileoutput.h"

#include "dataset.h"
#include "messages.h"
#include "outputfile.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "spreadsheetoutput.h"
#include "texts.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QPair>
#include <vector>

namespace {

constexpr int pathsInBlock = 10;
// A wrong column can give a warning a row; nobody reads more.
constexpr int mostRowWarnings = 1000;
constexpr int longestName = 255;
constexpr int longestPath = 4095;
// Part of the progress that finding out the files takes.
constexpr double groupingShare = 0.1;

QString translated(const char *text)
{
    return QCoreApplication::translate("MultiFileOutput", text);
}

enum class RowProblem { None, Empty, Relative, Invalid, NoFolder, NoName, Blocked };

/// The text of a problem; the value and the row (counted from 1) are filled in by the caller.
const char *problemText(RowProblem problem)
{
    switch (problem) {
    case RowProblem::Relative:
        return QT_TRANSLATE_NOOP("MultiFileOutput",
                                 "Relative file path for '%1' at row %2, but .transform not saved "
                                 "for it to be relative to.");
    case RowProblem::Invalid:
        return QT_TRANSLATE_NOOP("MultiFileOutput", "File path not valid for '%1' at row %2");
    case RowProblem::NoFolder:
        return QT_TRANSLATE_NOOP("MultiFileOutput", "Folder does not exist for '%1' at row %2");
    case RowProblem::NoName:
        return QT_TRANSLATE_NOOP("MultiFileOutput", "No file name for '%1' at row %2");
    case RowProblem::Blocked:
        return QT_TRANSLATE_NOOP(
            "MultiFileOutput", "Extension for '%1' is blocked in 'Preferences>Output Extensions'.");
    case RowProblem::None:
    case RowProblem::Empty:
        break;
    }
    return QT_TRANSLATE_NOOP("MultiFileOutput", "Empty value for row %1");
}

bool isValidPath(const QString &path)
{
    if (path.contains(QChar(0)) || !path.isValidUtf16()) {
        return false;
    }
    const QByteArray encoded = QFile::encodeName(path);
    for (const QByteArray &name : encoded.split('/')) {
        if (name.size() > longestName) {
            return false;
        }
    }
    return encoded.size() <= longestPath;
}

/// What the files column says about a row.
struct Target
{
    RowProblem problem = RowProblem::None;
    int file = -1;
};

struct File
{
    QString path;
    /// Of a spreadsheet.
    QString sheet;
    RowSelection rows;
};

/// Sorts the rows of a table by the file that they go to.
class Grouping
{
public:
    Grouping(const OutputOptions &options, const OutputContext &context, Messages *messages)
        : m_options(options)
        , m_context(context)
        , m_messages(messages)
    {
    }

    /// Answers false when the progress asked to stop.
    bool addRows(const ColumnReader &reader, int rowCount, const Progress &progress);
    std::vector<File> takeFiles() { return std::move(m_files); }

private:
    Target targetOf(const QString &text);
    bool folderExists(const QString &folder);
    void warn(RowProblem problem, const QString &value, int row);

    const OutputOptions &m_options;
    const OutputContext &m_context;
    Messages *m_messages;
    std::vector<File> m_files;
    QHash<QPair<QString, QString>, int> m_fileOfPath;
    QHash<QString, bool> m_folders;
    qint64 m_badRows = 0;
};

bool Grouping::addRows(const ColumnReader &reader, int rowCount, const Progress &progress)
{
    std::vector<int> targetOfCode(reader.codeCount(), -1);
    std::vector<Target> targets;
    for (int row = 0; row < rowCount; ++row) {
        if (row % progressInterval == 0 &&
            !reportProgress(progress, groupingShare * row / rowCount)) {
            return false;
        }
        int &known = targetOfCode[reader.code(row)];
        if (known < 0) {
            known = int(targets.size());
            targets.push_back(targetOf(reader.text(row)));
        }
        const Target &target = targets[size_t(known)];
        if (target.problem == RowProblem::None) {
            m_files[size_t(target.file)].rows.push_back(row);
        } else if (++m_badRows <= mostRowWarnings) {
            warn(target.problem, reader.text(row), row);
        }
    }
    if (m_badRows > mostRowWarnings) {
        m_messages->warn(
            translated(QT_TRANSLATE_NOOP("MultiFileOutput",
                                         "%1 more row(s) have no file that can be written."))
                .arg(Texts::count(m_badRows - mostRowWarnings)));
    }
    return true;
}

Target Grouping::targetOf(const QString &text)
{
    const auto problem = [](RowProblem what) { return Target{what, -1}; };
    QString value = text;
    QString sheet;
    if (isSpreadsheet(m_options.fileType) && !splitSheetPath(text, &value, &sheet)) {
        sheet = m_options.worksheet;
    }
    if (value.isEmpty()) {
        return problem(RowProblem::Empty);
    }
    const QString path = resolvedPath(value, m_context.documentFolder);
    if (path.isEmpty()) {
        return problem(RowProblem::Relative);
    }
    if (!isValidPath(path)) {
        return problem(RowProblem::Invalid);
    }
    const QString name = value.mid(value.lastIndexOf(QLatin1Char('/')) + 1);
    const bool hasName =
        !name.isEmpty() && name != QLatin1String(".") && name != QLatin1String("..");
    if (!folderExists(hasName ? QFileInfo(path).path() : path)) {
        return problem(RowProblem::NoFolder);
    }
    if (!hasName) {
        return problem(RowProblem::NoName);
    }
    if (isBlockedExtension(path, m_context)) {
        return problem(RowProblem::Blocked);
    }
    // Sheets are not told apart by case.
    const auto key = qMakePair(path, sheet.toLower());
    const auto known = m_fileOfPath.constFind(key);
    if (known != m_fileOfPath.constEnd()) {
        return {RowProblem::None, *known};
    }
    const int file = int(m_files.size());
    m_fileOfPath.insert(key, file);
    m_files.push_back({path, sheet, {}});
    return {RowProblem::None, file};
}

bool Grouping::folderExists(const QString &folder)
{
    const auto known = m_folders.constFind(folder);
    return known != m_folders.constEnd() ? *known
                                         : *m_folders.insert(folder, QFileInfo(folder).isDir());
}

void Grouping::warn(RowProblem problem, const QString &value, int row)
{
    const QString text = translated(problemText(problem));
    const QString number = QString::number(row + 1);
    switch (problem) {
    case RowProblem::Empty:
        m_messages->warn(text.arg(number));
        break;
    case RowProblem::Blocked:
        m_messages->warn(text.arg(value));
        break;
    default:
        m_messages->warn(text.arg(value, number));
        break;
    }
}

/// The text that asks whether the files may be written.
class Question
{
public:
    explicit Question(FileType type)
        : m_files(isSpreadsheet(type)
                      ? translated(QT_TRANSLATE_NOOP("MultiFileOutput", "file(s)/sheets(s)"))
                      : translated(QT_TRANSLATE_NOOP("MultiFileOutput", "file(s)")))
    {
    }

    void addBlock(const char *text, const QStringList &paths)
    {
        if (paths.isEmpty()) {
            return;
        }
        QString list = paths.mid(0, pathsInBlock).join(QLatin1Char('\n'));
        if (paths.size() > pathsInBlock) {
            list += translated(QT_TRANSLATE_NOOP("MultiFileOutput", "\n...etc"));
        }
        m_text += translated(text).arg(Texts::count(paths.size()), m_files, list);
    }
    QString text(int willBeWritten) const
    {
        return m_text + translated(QT_TRANSLATE_NOOP("MultiFileOutput", "%1 %2 will be written"))
                            .arg(Texts::count(willBeWritten), m_files);
    }

private:
    QString m_files;
    QString m_text;
};

QString questionText(const OutputOptions &options, const std::vector<File> &files)
{
    QStringList existing;
    QStringList created;
    for (const File &file : files) {
        (QFileInfo::exists(file.path) ? existing : created)
            .append(file.sheet.isEmpty() ? file.path : sheetPath(file.path, file.sheet));
    }
    Question question(options.fileType);
    const auto existingIf = [&](WriteMode mode) {
        return options.writeMode == mode ? existing : QStringList();
    };
    question.addBlock(
        QT_TRANSLATE_NOOP("MultiFileOutput", "%1 existing %2 to be overwritten:\n%3\n"),
        existingIf(WriteMode::Overwrite));
    question.addBlock(
        QT_TRANSLATE_NOOP("MultiFileOutput", "%1 existing %2 to be appended to:\n%3\n"),
        existingIf(WriteMode::Append));
    question.addBlock(
        QT_TRANSLATE_NOOP("MultiFileOutput", "%1 existing %2 will not be overwritten:\n%3\n"),
        existingIf(WriteMode::New));
    question.addBlock(QT_TRANSLATE_NOOP("MultiFileOutput", "%1 new %2 to be created:\n%3\n"),
                      created);
    return question.text(int(files.size()) - existingIf(WriteMode::New).size());
}

/// Answers how many files were written, or -1 when the progress asked to stop.
int writeFiles(const OutputOptions &options, const Dataset &dataset, const OutputContext &context,
               std::vector<File> files, Messages *messages, const Progress &progress)
{
    OutputFile output(options, context, messages);
    int written = 0;
    double rowsDone = 0;
    for (File &file : files) {
        const double rows = double(file.rows.size());
        const Progress partly = [&](double fraction) {
            const double done = (rowsDone + fraction * rows) / dataset.rowCount();
            return reportProgress(progress, groupingShare + (1 - groupingShare) * done);
        };
        const Dataset part = dataset.selectRows(std::move(file.rows));
        const FileOutcome outcome = output.write(file.path, file.sheet, part, partly);
        if (outcome == FileOutcome::Stopped) {
            return -1;
        }
        written += outcome == FileOutcome::Written ? 1 : 0;
        rowsDone += rows;
    }
    return written;
}

} // namespace

void writeMultiFile(const OutputOptions &options, const Dataset &dataset,
                    const OutputContext &context, Messages *messages, const Progress &progress)
{
    if (options.multiFileColumn.isEmpty()) {
        messages->warn(translated(
            QT_TRANSLATE_NOOP("MultiFileOutput", "No column set for 'Files column'.\n")));
        return;
    }
    const ColIndex column = dataset.columnIndex(options.multiFileColumn);
    if (!column.isValid()) {
        messages->fail(
            translated(QT_TRANSLATE_NOOP("MultiFileOutput",
                                         "'Files column' '%1' not found, nothing written."))
                .arg(options.multiFileColumn));
        return;
    }
    if (!OutputFile(options, context, messages).canWrite(dataset)) {
        return;
    }
    Grouping grouping(options, context, messages);
    if (!grouping.addRows(dataset.columnReader(column), dataset.rowCount(), progress)) {
        return;
    }
    std::vector<File> files = grouping.takeFiles();
    if (options.multiFileConfirm && context.confirm && !files.empty() &&
        !context.confirm(questionText(options, files))) {
        messages->note(
            translated(QT_TRANSLATE_NOOP("MultiFileOutput", "Output cancelled by user")));
        return;
    }
    const int written = writeFiles(options, dataset, context, std::move(files), messages, progress);
    if (written > 0) {
        messages->note(translated(QT_TRANSLATE_NOOP("MultiFileOutput", "%1 file(s) written"))
                           .arg(Texts::count(written)));
    } else if (written == 0) {
        messages->note(translated(QT_TRANSLATE_NOOP("MultiFileOutput", "0 files written")));
    }
}

#pragma once

#include "progress.h"

#include <QSet>
#include <QString>

class Dataset;
struct Messages;
struct OutputContext;
struct OutputOptions;

enum class FileOutcome { Written, NotWritten, Stopped };

/// Writes tables to files by the options of one output item: makes the checks that each file has
/// to pass and leaves the notes.
class OutputFile
{
public:
    /// The arguments must outlive this object.
    OutputFile(const OutputOptions &options, const OutputContext &context, Messages *messages);

    /// The path must be absolute. The sheet is for spreadsheets alone; of a file that was written
    /// by this object before, the other sheets stay.
    FileOutcome write(const QString &path, const QString &sheet, const Dataset &dataset,
                      const Progress &progress);

    /// Tells and answers false when a table cannot be written at all with these options.
    bool canWrite(const Dataset &dataset);

private:
    bool isAllowed(const QString &path);
    bool isAllowedForInput(const QString &path);
    void noteExtension(const QString &path);

    const OutputOptions &m_options;
    const OutputContext &m_context;
    Messages *m_messages;
    QSet<QString> m_written;
    bool m_lineEndingsNoted = false;
};

/// "Line endings=Automatic ...", when that is what the options say.
void noteLineEndings(const OutputOptions &options, Messages *messages);

/// The extension without the dot.
QString fileExtension(const QString &path);
bool isBlockedExtension(const QString &path, const OutputContext &context);

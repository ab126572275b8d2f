#pragma once

#include "progress.h"

#include <QString>

class Dataset;
class TextEncoder;
struct Messages;
struct OutputOptions;

/// A table that is to become a text.
struct TextJob
{
    const OutputOptions &options;
    const Dataset &dataset;
    /// The output item's name.
    QString title;
    TextEncoder *out;
};

/// What a document that rows are to be added to shows of itself: its first and its last part.
struct OldText
{
    QString head;
    QString tail;
};

/// One text format. In this order: check(), prepare(), then begin() for a new document or
/// canContinue() and resume() for one that is there already, addRows(), and end() for a new one.
/// All that is written goes to the job's encoder.
class TextFormat
{
public:
    explicit TextFormat(const TextJob &job)
        : m_job(job)
    {
    }
    virtual ~TextFormat() = default;
    TextFormat(const TextFormat &) = delete;
    TextFormat &operator=(const TextFormat &) = delete;

    /// Characters of the format itself, without which the encoding will not do.
    virtual QString syntax() const = 0;
    /// Fails when the options and the column names rule out a sound document. Tells each thing
    /// once, however many files are written.
    virtual bool check(Messages *messages) const;
    /// Looks at the values; answers false when the progress asked to stop.
    virtual bool prepare(Messages *messages, const Progress &progress);

    virtual void begin(bool withHeader) = 0;
    /// Whether rows can be added to a document. When they go before its last part, that part is
    /// given; else they go to its end, on a new line.
    virtual bool canContinue(const OldText &old, QString *lastPart);
    virtual void resume(bool withHeader);
    /// Answers false when the progress asked to stop or nothing more could be written.
    virtual bool addRows(const Progress &progress) = 0;
    virtual void end();
    /// Tells what could not be written as it was.
    virtual void tell(Messages *messages) const = 0;

protected:
    const OutputOptions &options() const { return m_job.options; }
    const Dataset &dataset() const { return m_job.dataset; }
    const QString &title() const { return m_job.title; }
    TextEncoder *out() const { return m_job.out; }

private:
    TextJob m_job;
};

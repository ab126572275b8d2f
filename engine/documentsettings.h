#pragma once

#include <QList>
#include <QString>

/// A value of the batch table: in batch row `row` the item with this alias uses `value`.
struct BatchValue
{
    int row = 0;
    QString alias;
    QString value;
};

enum class BatchLogMode : qint32 { Overwrite = 0, Append = 1 };

struct BatchLogging
{
    bool enabled = false;
    QString path;
    BatchLogMode mode = BatchLogMode::Overwrite;
};

/// What a document holds beside its items and connections.
struct DocumentSettings
{
    /// Absolute path of the file; empty while the document has never been saved.
    QString path;
    QString id;
    /// The locale's name that the document was saved with.
    QString localeName;
    QString notes;
    bool snapToGrid = false;
    bool autoRun = true;
    QList<BatchValue> batchValues;
    BatchLogging batchLogging;

    /// The folder that relative paths of items refer to; empty while there is no path.
    QString folder() const;
};

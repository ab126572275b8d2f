#pragma once

#include "documentrecords.h"

#include <QList>
#include <QString>

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

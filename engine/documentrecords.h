#pragma once

#include "inputoptions.h"
#include "outputoptions.h"
#include "storedparameter.h"

#include <QList>
#include <QMap>
#include <QPointF>
#include <QString>
#include <QStringList>

/// Plain records of everything that a document file holds, in file order. Reading fills them
/// without looking at the graph, so that whatever cannot be used is known before an item is made.
/// The initial values are those of a document that leaves the attribute out.

struct ItemRecord
{
    int id = -1;
    QString name;
    QString comment;
    QPointF position;
};

struct InputRecord : ItemRecord
{
    QString alias;
    InputOptions options;
};

/// `name` is the stored name of the transform's type.
struct TransformRecord : ItemRecord
{
    QList<StoredParameter> parameters;
};

struct OutputRecord : ItemRecord
{
    QString alias;
    OutputOptions options;
};

struct NoteRecord : ItemRecord
{
    QString color;
    /// 0 none, 1 up, 2 right, 3 down, 4 left.
    int arrow = 0;
};

struct ConnectionRecord
{
    int start = -1;
    int end = -1;
};

struct BatchValue
{
    int row = 0;
    QString alias;
    QString value;
};

struct BatchLogging
{
    bool enabled = false;
    QString path;
    /// 0 overwrite, 1 append.
    int mode = 0;
};

struct DocumentMeta
{
    int version = 72;
    QString lastSavedBy;
    QString locale;
    QString id;
    bool snapToGrid = false;
    QString notes;
    QString path;
    bool autoRun = true;
};

struct DocumentRecords
{
    static constexpr int formatVersion = 72;

    DocumentMeta meta;
    QList<InputRecord> inputs;
    QList<TransformRecord> transforms;
    QList<OutputRecord> outputs;
    QList<NoteRecord> notes;
    QList<ConnectionRecord> connections;
    QList<BatchValue> batchValues;
    BatchLogging batchLogging;

    /// What reading met and has no place for, as texts with the number of times.
    QMap<QString, int> notUnderstood;
    /// Values that are not possible for their option and were replaced by its default.
    QStringList replacedValues;
};

#pragma once

#include "nametree.h"
#include "rowcollector.h"
#include "textarena.h"

#include <QString>
#include <string_view>
#include <vector>

struct InputOptions;

/// Maps records of nested values to rows and columns. A record is one row; a value gets the column
/// of its path, "a.b" for the member b of a, in the order in which the paths are first met.
///
/// An array is either columns, "a.1", "a.2", or rows: then each element has a row of its own (or
/// as many as the arrays in it need), beside which the values outside of the array are repeated.
/// Two arrays of one object run side by side, the shorter one padded with empty cells; they don't
/// multiply. Arrays in arrays are read one after another.
///
/// Null, an empty object and an empty array read as empty. They keep a place for a column, which is
/// dropped when their path turns out to have parts. Of a name that an object holds twice, the last
/// value counts; the others are counted.
class NestedRecords
{
public:
    /// `valueName` is the column of a record that is a plain value.
    NestedRecords(const InputOptions &options, const QString &valueName);

    void setValueName(const QString &name) { m_valueName = name; }
    void beginRecord();
    /// The record is begun again, from its start.
    void forgetRecord() { m_droppedValues = m_droppedBefore; }
    /// Gives the rows of the record to the table. Throws std::bad_alloc when there are too many.
    void endRecord();

    /// A value: the record's own, that of the last key, or the next element of an array. It must
    /// stay where it is until the record ends; texts() offers room.
    void value(std::string_view text);
    void null();
    void beginObject();
    void key(std::string_view name);
    void endObject();
    void beginArray();
    void endArray();

    /// For formats in which repeated members of an object are an array, and objects have a text:
    /// a member that is an object. `repeats` tells whether its name occurs twice in any object.
    void beginMember(std::string_view name, bool repeats);
    void endMember(bool repeats);
    void ownText(std::string_view text);

    /// Lives until the record ends.
    TextArena *texts() { return &m_texts; }
    qint64 droppedValues() const { return m_droppedValues; }

    /// The table of all records.
    Dataset finish(Messages *messages);

private:
    using Node = NameTree::Node;

    struct Cell
    {
        std::string_view value;
        int column;
        int row;
        /// The number of rows that it fills.
        int span;
        /// The cell before it in the same scope.
        int previous;
    };
    /// The record, or an element of an array that is read as rows.
    struct Scope
    {
        int start = 0;
        int height = 1;
        int lastCell = -1;
    };
    struct Frame
    {
        Node *node;
        bool isArray;
        bool empty;
        /// In an array of rows the row of the next element, in one of columns the elements so far.
        int next;
        quint64 instance;
    };
    struct Column
    {
        Node *node;
        bool filled;
    };

    Node *place();
    void placed();
    void pushFrame(Node *node, bool isArray, int next);
    int columnOf(Node *node);
    void reserve(Node *node);
    void addCell(Node *node, std::string_view value);
    void closeScope();
    void dropCells(const Node *node);
    void addSingleRow();
    void addRows(int height);
    void sortCells(int height);
    QStringList columnNames() const;
    Dataset withoutUnusedColumns(const Dataset &dataset) const;

    RowCollector m_collector;
    QString m_valueName;
    bool m_arraysAsRows;
    bool m_ignoreEmptyColumns;
    NameTree m_names;
    TextArena m_texts;
    std::vector<Column> m_columns;
    std::vector<Cell> m_cells;
    std::vector<Scope> m_scopes;
    std::vector<Frame> m_frames;
    Node *m_node = nullptr;
    quint64 m_instances = 0;
    qint64 m_droppedValues = 0;
    qint64 m_droppedBefore = 0;
    /// The row being made; all empty between rows.
    std::vector<std::string_view> m_row;
    /// The cells of a record by row, and where each row starts among them.
    std::vector<int> m_order;
    std::vector<int> m_rowStarts;
};

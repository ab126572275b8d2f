#pragma once

#include "dataset.h"
#include "messages.h"
#include "rowtext.h"
#include "tablebuilder.h"

#include <QCoreApplication>
#include <QStringList>
#include <map>
#include <optional>
#include <string_view>

struct InputOptions;
class TextSource;

/// Turns the rows that a reader of text cuts into a table: drops the leading rows and the empty
/// ones, cleans the values, takes the header, and remembers what is told of the rows at the end.
class RowCollector
{
    Q_DECLARE_TR_FUNCTIONS(RowCollector)

public:
    /// `source` mends the values that are not clean; without one all must be.
    RowCollector(const InputOptions &options, const TextSource *source);

    /// For formats whose records need not be equally long: nothing is told of their lengths.
    void setLengthsMatter(bool matter) { m_lengthsMatter = matter; }
    /// For formats that name their columns: no row is taken as the header.
    void setHeaderInRows(bool inRows) { m_wantsHeader = m_wantsHeader && inRows; }

    /// The table gets at least so many columns.
    void setMinimumColumns(int count) { m_minimumColumns = count; }
    /// True when the next row is one of the leading rows that are dropped.
    bool ignoresNext() const { return m_inputRows < m_ignoredRows; }

    /// Takes a row. With `clean` no value needs mending. The values may be changed.
    void add(std::string_view *values, int count, bool clean);
    /// The table of all rows, with the notes on them.
    Dataset finish(Messages *messages);
    /// The same for a format that names its columns.
    Dataset finish(const QStringList &columnNames, Messages *messages);

private:
    struct LengthCount
    {
        qint64 rows = 0;
        /// Number of the first one, counted from 1.
        qint64 firstRow = 0;
    };

    void mend(std::string_view *values, int count);
    void tidy(std::string_view *values, int count);
    void countLength(int length);
    void noteRows(Messages *messages) const;

    const TextSource *m_source;
    qint64 m_ignoredRows;
    bool m_trim;
    bool m_simplify;
    bool m_ignoreEmptyRows;
    bool m_ignoreEmptyColumns;
    bool m_wantsHeader;
    bool m_lengthsMatter = true;
    int m_minimumColumns = 0;

    TableBuilder m_builder;
    std::optional<QStringList> m_header;
    qint64 m_inputRows = 0;
    qint64 m_emptyRows = 0;
    qint64 m_mendedValues = 0;
    std::map<int, LengthCount> m_lengths;
    LengthCount *m_lastLengthCount = nullptr;
    int m_lastLength = -1;
    RowText m_mended;
    RowText m_tidied;
};

/// The table without the columns in which every value is empty. A table without rows keeps its
/// columns.
Dataset withoutEmptyColumns(const Dataset &dataset);

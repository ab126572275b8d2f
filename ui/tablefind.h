#pragma once

#include "datatablemodel.h"

#include <QStringMatcher>

/// Looks for a text in the cells of a table, without regard to case, row by row as shown. Works in
/// idle time; matching cells are counted on the way.
class TableFind : public QObject
{
    Q_OBJECT

public:
    explicit TableFind(const DataTableModel *model, QObject *parent = nullptr);

    QString text() const { return m_matcher.pattern(); }
    /// Starts to count. Empty: nothing is looked for.
    void setText(const QString &text);

    /// Goes to the nearest match behind or before a place, round the ends of the table.
    void search(CellPlace from, bool forward, bool includeFrom = false);
    bool matches(int row, int column) const;

    qint64 count() const { return m_count; }
    bool isCounting() const { return m_counting.isRunning(); }

Q_SIGNALS:
    void textChanged();
    void found(CellPlace place, bool wrapped);
    void notFound();
    void countChanged();

private:
    void reset();
    bool countSome();
    bool searchSome();

    const DataTableModel *m_model;
    QStringMatcher m_matcher;
    /// For columns whose values repeat: what is known of each value.
    mutable std::vector<std::vector<quint8>> m_known;
    IdleWork m_counting;
    IdleWork m_searching;
    qint64 m_count = 0;
    int m_countedColumn = 0;
    int m_countedRow = 0;
    qint64 m_at = 0;
    qint64 m_left = 0;
    bool m_forward = true;
    bool m_wrapped = false;
    bool m_isFound = false;
};

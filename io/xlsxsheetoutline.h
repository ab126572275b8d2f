#pragma once

#include "xlsxpackage.h"

#include <QCoreApplication>
#include <vector>

/// Where things stand in the part of a sheet, in bytes, so that cells can be added or replaced
/// without touching the rest.
class XlsxSheetOutline
{
    Q_DECLARE_TR_FUNCTIONS(XlsxSheetOutline)

public:
    /// Reads a part; fails with an error when the sheet has a shape that cannot be changed.
    bool read(XlsxPackage *package, const QString &part, QString *error);

    /// The last row that holds a value, counted from 1; 0 for an empty sheet.
    qint64 lastRow() const { return m_lastRow; }

    /// What is to take the place of some bytes. Links come with an element of their own or go into
    /// the one that is there.
    struct Change
    {
        enum class Kind { Text, Cells, Links, MoreLinks };
        qint64 from = 0;
        qint64 to = 0;
        Kind kind = Kind::Text;
        QByteArray text = {};
    };
    /// The changes, by position, that put new cells behind or in place of the old ones.
    std::vector<Change> changes(bool replacesCells, const QByteArray &columns) const;

private:
    friend class OutlineParser;
    struct Part
    {
        QByteArray name;
        qint64 from = 0;
        qint64 startTagEnd = 0;
        qint64 endTag = 0;
        qint64 to = 0;
    };

    const Part *find(const char *name) const;
    qint64 linksPosition() const;

    std::vector<Part> m_parts;
    /// Where the end tag of the whole sheet stands.
    qint64 m_end = 0;
    qint64 m_lastRow = 0;
    /// Where the last row ends that holds a value.
    qint64 m_usedEnd = 0;
};

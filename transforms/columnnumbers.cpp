#include "columnnumbers.h"

#include "messages.h"
#include "texts.h"

#include <QCoreApplication>

ColumnNumbers::ColumnNumbers(const Dataset &table, ColIndex column)
    : m_cells(table.columnReader(column))
{
    if (m_cells.isPooled()) {
        m_known.resize(m_cells.codeCount());
    }
}

ColumnNumbers::Kind ColumnNumbers::at(int row, double *number)
{
    const ColumnReader::Code code = m_cells.code(row);
    if (m_known.empty()) {
        return read(m_cells.utf8OfCode(code), m_reader, number);
    }
    Known &known = m_known[code];
    if (known.kind == Kind::Unknown) {
        known.kind = read(m_cells.utf8OfCode(code), m_reader, &known.number);
    }
    *number = known.number;
    return known.kind;
}

ColumnNumbers::Kind ColumnNumbers::read(std::string_view utf8, const NumberReader &reader,
                                        double *number)
{
    if (utf8.empty()) {
        return Kind::Empty;
    }
    bool ok = false;
    *number = reader.toReal(utf8, false, true, &ok);
    return ok ? Kind::Number : Kind::Other;
}

void NumberMessages::tellIgnored(qint64 count, const QString &columnName, Messages *messages)
{
    if (count > 0) {
        messages->warn(QCoreApplication::translate(
                           "Numbers", "%1 non-numeric value(s) ignored in column '%2'.")
                           .arg(Texts::count(count), columnName));
    }
}

void NumberMessages::tellNotCalculated(qint64 count, Messages *messages)
{
    if (count > 0) {
        messages->warn(
            QCoreApplication::translate("Numbers", "%1 result(s) could not be calculated.")
                .arg(Texts::count(count)));
    }
}

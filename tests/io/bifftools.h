#pragma once

#include "biffrecords.h"

#include <QByteArray>
#include <QList>
#include <QtEndian>
#include <cstring>

/// Makes workbooks of the XLS format record by record.
namespace BiffTools {

inline QByteArray u16(int number)
{
    QByteArray bytes(2, '\0');
    qToLittleEndian(quint16(number), bytes.data());
    return bytes;
}

inline QByteArray u32(quint32 number)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(number, bytes.data());
    return bytes;
}

inline QByteArray real(double number)
{
    quint64 bits = 0;
    memcpy(&bits, &number, sizeof bits);
    QByteArray bytes(8, '\0');
    qToLittleEndian(bits, bytes.data());
    return bytes;
}

inline QByteArray record(int id, const QByteArray &data)
{
    return u16(id) + u16(data.size()) + data;
}

inline QByteArray continued(const QByteArray &data)
{
    return record(Biff::Continue, data);
}

inline QByteArray cell(int row, int column, int style = 0)
{
    return u16(row) + u16(column) + u16(style);
}

inline QByteArray number(int row, int column, double value, int style = 0)
{
    return record(Biff::Number, cell(row, column, style) + real(value));
}

inline QByteArray shared(int row, int column, quint32 text)
{
    return record(Biff::LabelSst, cell(row, column) + u32(text));
}

inline QByteArray begin(int kind, int version = Biff::version8)
{
    return record(Biff::Bof, u16(version) + u16(kind) + QByteArray(12, '\0'));
}

inline const QByteArray end = record(Biff::Eof, "");

/// A text of 8-bit characters with its flags.
inline QByteArray narrow(const QByteArray &text)
{
    return u16(text.size()) + '\0' + text;
}

inline QByteArray sst(int count, const QByteArray &texts)
{
    return record(Biff::Sst, u32(quint32(count)) + u32(quint32(count)) + texts);
}

/// Styles: general, a date of its own format, the built-in short time.
inline QByteArray styles()
{
    return record(Biff::Format, u16(164) + narrow("yyyy\\-mm\\-dd")) +
           record(Biff::Xf, u16(0) + u16(0) + QByteArray(16, '\0')) +
           record(Biff::Xf, u16(0) + u16(164) + QByteArray(16, '\0')) +
           record(Biff::Xf, u16(0) + u16(20) + QByteArray(16, '\0'));
}

/// A stream of one or more sheets named Sheet1, Sheet2 ...; records before the sheets' names.
inline QByteArray book(const QByteArray &globals, const QList<QByteArray> &sheets,
                       const QList<char> &kinds = {})
{
    const int nameSize = 8 + Biff::recordHeaderSize + 6;
    QByteArray bytes = begin(Biff::globalsStream) + globals;
    int at = bytes.size() + sheets.size() * nameSize + end.size();
    for (int i = 0; i < sheets.size(); ++i) {
        bytes += record(Biff::BoundSheet, u32(quint32(at)) + '\0' + kinds.value(i, '\0') + '\x06' +
                                              '\0' + "Sheet" + char('1' + i));
        at += begin(0).size() + sheets.at(i).size() + end.size();
    }
    bytes += end;
    for (const QByteArray &sheet : sheets) {
        bytes += begin(Biff::sheetStream) + sheet + end;
    }
    return bytes;
}

} // namespace BiffTools

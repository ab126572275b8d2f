#pragma once

#include <QtGlobal>
#include <array>

/// Numbers of the records that workbooks of the XLS format consist of (BIFF8, and BIFF5 where it is
/// the same), and other constants of the format. A record is its number, the size of its data (two
/// bytes each) and the data.
namespace Biff {

enum Record : quint16 {
    Formula = 0x0006,
    Eof = 0x000a,
    Date1904 = 0x0022,
    FilePass = 0x002f,
    Continue = 0x003c,
    CodePage = 0x0042,
    ColInfo = 0x007d,
    BoundSheet = 0x0085,
    MulRk = 0x00bd,
    MulBlank = 0x00be,
    RString = 0x00d6,
    Xf = 0x00e0,
    Sst = 0x00fc,
    LabelSst = 0x00fd,
    Blank = 0x0201,
    Number = 0x0203,
    Label = 0x0204,
    BoolErr = 0x0205,
    String = 0x0207,
    Row = 0x0208,
    Rk = 0x027e,
    Format = 0x041e,
    Bof = 0x0809
};

constexpr quint16 version8 = 0x0600;
constexpr quint16 version5 = 0x0500;

/// What a stream of records is about, from its Bof.
constexpr quint16 globalsStream = 0x0005;
constexpr quint16 sheetStream = 0x0010;
/// What a sheet is, from its BoundSheet.
constexpr quint8 cellSheet = 0;

constexpr int recordHeaderSize = 4;
constexpr int mostRecordData = 8224;
constexpr int mostRows = 65536;
constexpr int mostColumns = 256;

/// Bits of a text's flags.
constexpr quint8 wideCharacters = 0x01;
constexpr quint8 farEastData = 0x04;
constexpr quint8 formattingRuns = 0x08;

/// Bits of a Row's options and of a ColInfo's.
constexpr quint16 rowHidden = 0x0020;
constexpr quint16 columnHidden = 0x0001;

struct ErrorText
{
    quint8 code;
    const char *text;
};

constexpr std::array<ErrorText, 8> errorTexts{{
    {0x00, "#NULL!"},
    {0x07, "#DIV/0!"},
    {0x0f, "#VALUE!"},
    {0x17, "#REF!"},
    {0x1d, "#NAME?"},
    {0x24, "#NUM!"},
    {0x2a, "#N/A"},
    {0x2b, "#GETTING_DATA"},
}};

} // namespace Biff

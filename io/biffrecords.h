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
    ExternSheet = 0x0017,
    Name = 0x0018,
    Selection = 0x001d,
    Date1904 = 0x0022,
    ExternName = 0x0023,
    FilePass = 0x002f,
    Font = 0x0031,
    Continue = 0x003c,
    Window1 = 0x003d,
    Pane = 0x0041,
    CodePage = 0x0042,
    DefColWidth = 0x0055,
    ColInfo = 0x007d,
    BoundSheet = 0x0085,
    Scl = 0x00a0,
    MulRk = 0x00bd,
    MulBlank = 0x00be,
    RString = 0x00d6,
    DbCell = 0x00d7,
    Xf = 0x00e0,
    MergeCells = 0x00e5,
    PhoneticInfo = 0x00ef,
    Sst = 0x00fc,
    LabelSst = 0x00fd,
    ExtSst = 0x00ff,
    TabId = 0x013d,
    LabelRanges = 0x015f,
    SupBook = 0x01ae,
    CondFmt = 0x01b0,
    Cf = 0x01b1,
    HLink = 0x01b8,
    RecalcId = 0x01c1,
    Dimensions = 0x0200,
    Blank = 0x0201,
    Number = 0x0203,
    Label = 0x0204,
    BoolErr = 0x0205,
    String = 0x0207,
    Row = 0x0208,
    Index = 0x020b,
    Array = 0x0221,
    DefaultRowHeight = 0x0225,
    Window2 = 0x023e,
    Table = 0x0236,
    Rk = 0x027e,
    Style = 0x0293,
    Format = 0x041e,
    SharedFormula = 0x04bc,
    HLinkTooltip = 0x0800,
    Bof = 0x0809,
    CondFmt12 = 0x0879,
    Cf12 = 0x087a,
    CfEx = 0x087b,
    XfCrc = 0x087c
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

/// The result of a formula that is an empty text, and the mark of one whose result is calculated
/// whenever the workbook is opened.
constexpr quint64 emptyResult = 0xffff000000000003;
constexpr quint16 calculateAlways = 0x0003;

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

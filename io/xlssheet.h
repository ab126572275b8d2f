#pragma once

#include "bifftext.h"
#include "cellnumberformat.h"
#include "sharedtexts.h"
#include "spreadsheetreader.h"

#include <QCoreApplication>
#include <string>
#include <vector>

/// What the cells of all sheets of an XLS workbook refer to.
struct XlsBook
{
    /// The stream of all records.
    std::string bytes;
    SharedTexts texts;
    /// By the number of the cell's style.
    std::vector<CellNumberFormat> styles;
    DateSystem dateSystem = DateSystem::From1900;
    /// Of BIFF5, whose texts are bytes; null for BIFF8.
    const QTextCodec *codec = nullptr;
};

/// Hands the cells of a sheet to a sink.
class XlsSheetScan
{
    Q_DECLARE_TR_FUNCTIONS(XlsSheetScan)

public:
    /// The sheet's records start at `at`.
    XlsSheetScan(const XlsBook *book, size_t at, SheetSink *sink);

    SheetEnd run(const Progress &progress, QString *error);

private:
    bool scanLayout();
    void takeRecord(BiffStream *stream);
    bool startCell(std::string_view data, size_t needed);
    bool moveToRow(int row);
    void addNumber(double number);
    void addText(BiffStream *stream, size_t at);
    void addShared(std::string_view data);
    void addRks(std::string_view data);
    void addBoolOrError(bool isError, quint8 value);
    void takeFormula(std::string_view data);
    void takeFormulaText(BiffStream *stream);
    void endFormula();
    void fail(const QString &error);

    const XlsBook &m_book;
    size_t m_at;
    SheetSink *m_sink;
    std::vector<bool> m_hiddenRows;
    int m_row = -1;
    int m_column = 0;
    CellNumberFormat m_format;
    // A formula was read whose result is a text, which stands in a record of its own.
    bool m_awaitsText = false;
    std::string m_text;
    bool m_stopped = false;
    QString m_error;
};

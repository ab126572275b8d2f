#pragma once

#include "spreadsheetreader.h"
#include "xlssheet.h"

#include <QByteArray>
#include <vector>

class BiffStream;

/// Reads workbooks of the binary format of 1995 and 1997 to 2003 (.xls): BIFF5 and BIFF8.
class XlsReader final : public SpreadsheetReader
{
public:
    /// True for the start of a file that may be such a workbook.
    static bool isWorkbookStart(const QByteArray &start);
    /// Null with an error that says why the file is no such workbook.
    static std::unique_ptr<XlsReader> open(const QString &path, QString *error);

    FileType fileType() const override { return FileType::ExcelXls; }
    QStringList sheetNames() const override;
    SheetEnd readSheet(int sheet, SheetSink *sink, const Progress &progress,
                       QString *error) override;

private:
    struct Sheet
    {
        QString name;
        /// Where its records start.
        size_t at;
    };

    XlsReader() = default;
    bool readGlobals(QString *error);
    bool readBeginning(BiffStream *stream, QString *error);
    bool takeRecord(BiffStream *stream, QString *error);
    bool takeSheet(BiffStream *stream);
    bool takeTexts(BiffStream *stream);
    bool takeFormat(BiffStream *stream);

    XlsBook m_book;
    std::vector<Sheet> m_sheets;
    std::vector<int> m_styleFormats;
    std::vector<std::pair<int, CellNumberFormat>> m_formats;
};

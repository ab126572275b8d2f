#pragma once

#include "spreadsheetreader.h"
#include "xlsxpackage.h"
#include "xlsxsheet.h"

#include <vector>

/// Reads workbooks that are Zip archives of XML (.xlsx, .xlsm), of both flavours of the standard.
/// Macros and links to other files are not looked at.
class XlsxReader final : public SpreadsheetReader
{
public:
    /// Null with an error that says why the file is no such workbook.
    static std::unique_ptr<XlsxReader> open(const QString &path, QString *error,
                                            UnpackLimits limits = {});

    FileType fileType() const override { return FileType::ExcelXlsx; }
    QStringList sheetNames() const override;
    SheetEnd readSheet(int sheet, SheetSink *sink, const Progress &progress,
                       QString *error) override;

private:
    struct Sheet
    {
        QString name;
        QString part;
    };

    explicit XlsxReader(std::unique_ptr<XlsxPackage> package);
    bool findParts(QString *error);
    PartEnd loadShared(const std::function<bool(qint64)> &progress, QString *error);

    std::unique_ptr<XlsxPackage> m_package;
    std::vector<Sheet> m_sheets;
    QString m_textsPart;
    QString m_stylesPart;
    XlsxBook m_book;
    bool m_sharedLoaded = false;
};

#include "spreadsheetreader.h"

#include "xlsreader.h"
#include "xlsxreader.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>

namespace {

struct SpreadsheetText
{
    Q_DECLARE_TR_FUNCTIONS(SpreadsheetReader)
};

constexpr int sniffedBytes = 4096;

/// Says what a file is that is no workbook at all.
QString otherFileText(const QByteArray &start)
{
    QByteArray text = start;
    if (text.startsWith("\xef\xbb\xbf")) {
        text.remove(0, 3);
    }
    text = text.trimmed().toLower();
    if (text.isEmpty()) {
        return SpreadsheetText::tr("The file holds nothing but blanks.");
    }
    if (text.startsWith("%pdf")) {
        return SpreadsheetText::tr("It is a PDF document, not an Excel workbook.");
    }
    if (text.startsWith("<!doctype html") || text.contains("<html") || text.startsWith("<table")) {
        return SpreadsheetText::tr("It is an HTML page, not an Excel workbook. Open it in a "
                                   "spreadsheet program and save it as XLSX.");
    }
    if (text.startsWith("<?xml") || text.startsWith('<')) {
        return SpreadsheetText::tr("It is an XML file, not an Excel workbook. Set its type to "
                                   "'%1'.")
            .arg(fileTypeLabel(FileType::Xml));
    }
    if (text.startsWith('{') || text.startsWith('[')) {
        return SpreadsheetText::tr("It is a text file, perhaps of type '%1', not an Excel "
                                   "workbook.")
            .arg(fileTypeLabel(FileType::Json));
    }
    const bool isUtf16 = start.startsWith("\xff\xfe") || start.startsWith("\xfe\xff");
    if (isUtf16 || !text.contains('\0')) {
        return SpreadsheetText::tr("It is a text file (such as CSV), not an Excel workbook. Set "
                                   "its type to '%1'.")
            .arg(fileTypeLabel(FileType::DelimitedText));
    }
    return SpreadsheetText::tr("It is not an Excel workbook.");
}

} // namespace

std::unique_ptr<SpreadsheetReader> openSpreadsheet(const QString &path, QString *error)
{
    QFile file(path);
    if (QFileInfo(path).isDir()) {
        *error = SpreadsheetText::tr("It is a folder.");
        return nullptr;
    }
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return nullptr;
    }
    const QByteArray start = file.read(sniffedBytes);
    if (start.isEmpty()) {
        *error = file.error() == QFileDevice::NoError
                     ? SpreadsheetText::tr("The file is empty (0 bytes).")
                     : file.errorString();
        return nullptr;
    }
    file.close();
    if (start.startsWith("PK\x03\x04") || start.startsWith("PK\x05\x06")) {
        return XlsxReader::open(path, error);
    }
    if (XlsReader::isWorkbookStart(start)) {
        return XlsReader::open(path, error);
    }
    *error = otherFileText(start);
    return nullptr;
}

QString cellName(int row, int column)
{
    constexpr int letters = 26;
    QString name;
    for (int rest = column; rest >= 0; rest = rest / letters - 1) {
        name.prepend(QChar('A' + rest % letters));
    }
    return name + QString::number(row + 1);
}

QString missingTextText(int row, int column, const QString &number, bool hasTexts)
{
    return hasTexts ? SpreadsheetText::tr("Cell %1 refers to the shared text of number '%2', which "
                                          "does not exist.")
                          .arg(cellName(row, column), number)
                    : SpreadsheetText::tr("Cell %1 refers to a shared text, but the workbook has "
                                          "none.")
                          .arg(cellName(row, column));
}

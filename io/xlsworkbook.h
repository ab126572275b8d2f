#pragma once

#include "biffwriter.h"
#include "cellnumberformat.h"
#include "xlscontainer.h"
#include "xlsstyles.h"

#include <QCoreApplication>
#include <functional>
#include <vector>

class BiffStream;

/// An XLS workbook (BIFF8), a new one or one that is there, of which one sheet is changed or to
/// which one is added. Everything else is carried over.
class XlsWorkbook
{
    Q_DECLARE_TR_FUNCTIONS(XlsWorkbook)

public:
    /// A workbook without sheets.
    static std::unique_ptr<XlsWorkbook> make();
    /// Null with an error when the file is no such workbook, or cannot be carried over.
    static std::unique_ptr<XlsWorkbook> open(const QString &path, QString *error);

    DateSystem dateSystem() const { return m_dateSystem; }
    /// The number of the sheet of that name (of the first one for an empty name); -1 when there is
    /// none that holds cells. Upper and lower case are the same.
    int sheetNumber(const QString &name) const;
    bool hasSheet(const QString &name) const;
    /// Adds a sheet with these records behind the others.
    int addSheet(const QString &name, std::string records);
    /// The records of a sheet as they are.
    std::string_view records(int sheet) const;
    XlsStyles *styles() { return &m_styles; }
    BiffTexts *texts() { return &m_texts; }

    /// What a sheet holds from now on, in this order.
    struct Content
    {
        std::string beforeCells;
        SpilledBytes cells;
        std::string betweenThem;
        SpilledBytes links;
        std::string afterLinks;

        qint64 size() const;
    };
    /// The content must stay until the workbook is written.
    void setContent(int sheet, Content *content);

    /// Writes the workbook. Fails with an error; without one when the file is what failed or when
    /// `goOn` answered false.
    bool write(SafeFile *file, const std::function<bool()> &goOn, QString *error);

private:
    struct Sheet
    {
        QString name;
        quint8 kind = 0;
        /// Where its records stand in the old stream.
        size_t from = 0;
        size_t to = 0;
        /// Without the records that say where others are.
        qint64 keptSize = 0;
        /// Of a sheet that was added.
        std::string added;
        Content *content = nullptr;
        /// Where the globals say where the sheet is.
        size_t placeAt = 0;

        qint64 size() const { return content ? content->size() : keptSize; }
    };

    XlsWorkbook() = default;
    bool load(QString *error);
    bool readBeginning(BiffStream *stream, QString *error) const;
    bool readGlobals(QString *error);
    bool takeRecord(BiffStream *stream, size_t at, QString *error);
    bool takeSheet(BiffStream *stream);
    bool takeTexts(BiffStream *stream, QString *error);
    bool findSheetEnds(QString *error);
    bool measure(Sheet *sheet) const;
    void makeGlobals();
    void addGlobal(BiffStream *stream, size_t at, std::string *out);
    void addNewBoundSheets(std::string *out);
    std::vector<Sheet *> sheetsInOrder();
    bool placeSheets(QString *error);
    bool putSheet(const Sheet &sheet, const XlsContainer::Put &put) const;

    std::unique_ptr<XlsContainer> m_container;
    std::string m_bytes;
    DateSystem m_dateSystem = DateSystem::From1900;
    XlsStyles m_styles;
    BiffTexts m_texts;
    std::vector<Sheet> m_sheets;
    size_t m_addedSheets = 0;
    /// Where the records of the globals stand behind which new ones go; 0 when there is none.
    size_t m_lastFont = 0;
    size_t m_lastFormat = 0;
    size_t m_lastStyle = 0;
    size_t m_lastSheet = 0;
    size_t m_textsAt = 0;
    size_t m_lastOrdinary = 0;
    quint32 m_oldUses = 0;
    bool m_hasTexts = false;
    /// The globals before the new texts and behind them.
    std::string m_head;
    std::string m_tail;
};

#include "xlsworkbook.h"

#include "biffnewrecords.h"
#include "biffrecords.h"
#include "bifftext.h"
#include "utf8.h"

#include <algorithm>

namespace {

constexpr size_t nameAt = 6; // in a BoundSheet, after position, visibility and kind

/// Says where others are in the stream, which is not true any more in the new one.
bool isPosition(quint16 id)
{
    return id == Biff::Index || id == Biff::DbCell;
}

bool isInternalBook(std::string_view data)
{
    constexpr quint16 thisWorkbook = 0x0401;
    return data.size() >= 4 && biffNumber<quint16>(data, 2) == thisWorkbook;
}

} // namespace

qint64 XlsWorkbook::Content::size() const
{
    return qint64(beforeCells.size() + betweenThem.size() + afterLinks.size()) + cells.size() +
           links.size();
}

std::unique_ptr<XlsWorkbook> XlsWorkbook::make()
{
    std::unique_ptr<XlsWorkbook> workbook(new XlsWorkbook);
    workbook->m_container = std::make_unique<XlsContainer>();
    workbook->m_bytes = newXlsGlobals();
    QString error;
    const bool isSound = workbook->load(&error);
    Q_ASSERT(isSound);
    Q_UNUSED(isSound)
    return workbook;
}

std::unique_ptr<XlsWorkbook> XlsWorkbook::open(const QString &path, QString *error)
{
    std::unique_ptr<XlsWorkbook> workbook(new XlsWorkbook);
    workbook->m_container = XlsContainer::open(path, error);
    if (!workbook->m_container) {
        return nullptr;
    }
    if (workbook->m_container->hasOlderCopy()) {
        *error = tr("It holds the workbook a second time for Excel 95. Save it as XLSX in a "
                    "spreadsheet program.");
        return nullptr;
    }
    workbook->m_bytes = workbook->m_container->takeRecords();
    return workbook->load(error) ? std::move(workbook) : nullptr;
}

bool XlsWorkbook::load(QString *error)
{
    return readGlobals(error) && findSheetEnds(error);
}

bool XlsWorkbook::readBeginning(BiffStream *stream, QString *error) const
{
    const bool isThere = stream->next();
    const bool isBeginning = isThere && (stream->id() & 0xff) == (Biff::Bof & 0xff);
    if (isBeginning && (stream->id() != Biff::Bof || stream->data().size() < 4 ||
                        biffNumber<quint16>(stream->data(), 0) < Biff::version8)) {
        *error = tr("It is a workbook of Excel 95 or older. Save it as XLSX in a spreadsheet "
                    "program.");
        return false;
    }
    if (!isBeginning || biffNumber<quint16>(stream->data(), 0) != Biff::version8 ||
        biffNumber<quint16>(stream->data(), 2) != Biff::globalsStream) {
        *error = damagedWorkbookText();
        return false;
    }
    return true;
}

bool XlsWorkbook::readGlobals(QString *error)
{
    BiffStream stream(m_bytes);
    if (!readBeginning(&stream, error)) {
        return false;
    }
    for (size_t at = stream.nextAt();; at = stream.nextAt()) {
        if (!stream.next()) {
            *error = damagedWorkbookText();
            return false;
        }
        if (stream.id() == Biff::Eof) {
            break;
        }
        if (!takeRecord(&stream, at, error)) {
            if (error->isEmpty()) {
                *error = damagedWorkbookText();
            }
            return false;
        }
    }
    m_lastFormat = m_lastFormat == 0 ? m_lastFont : m_lastFormat;
    m_lastSheet = m_lastSheet == 0 ? m_lastOrdinary : m_lastSheet;
    m_textsAt = m_textsAt == 0 ? m_lastOrdinary : m_textsAt;
    const bool inOrder = m_lastFont > 0 && m_lastFont <= m_lastFormat &&
                         m_lastFormat < m_lastStyle && m_lastStyle < m_lastSheet &&
                         m_lastSheet <= m_textsAt;
    if (!inOrder) {
        *error = tr("The workbook has a form that cannot be extended.");
    }
    return inOrder;
}

bool XlsWorkbook::takeRecord(BiffStream *stream, size_t at, QString *error)
{
    constexpr quint16 firstLater = 0x0800; // records of later versions
    const quint16 id = stream->id();
    const std::string_view data = stream->data();
    if (id < firstLater && id != Biff::Continue) {
        m_lastOrdinary = at;
    }
    if (data.size() > size_t(Biff::mostRecordData)) {
        return false;
    }
    switch (id) {
    case Biff::FilePass:
        *error = encryptedWorkbookText();
        return false;
    case Biff::Bof:
        return false;
    case Biff::Date1904:
        m_dateSystem = data.size() >= 2 && biffNumber<quint16>(data, 0) != 0 ? DateSystem::From1904
                                                                             : DateSystem::From1900;
        return true;
    case Biff::Font:
    case Biff::Format:
    case Biff::Xf: {
        constexpr size_t least = 14;
        m_styles.addOld(id, data);
        (id == Biff::Font ? m_lastFont : id == Biff::Xf ? m_lastStyle : m_lastFormat) = at;
        return id == Biff::Format || data.size() >= least;
    }
    case Biff::BoundSheet:
        m_lastSheet = at;
        return takeSheet(stream);
    case Biff::TabId:
        // One more must have room.
        return data.size() + 2 <= size_t(Biff::mostRecordData);
    case Biff::Sst:
        m_textsAt = at;
        return !m_hasTexts && takeTexts(stream, error);
    default:
        return true;
    }
}

bool XlsWorkbook::takeSheet(BiffStream *stream)
{
    const std::string_view data = stream->data();
    std::string name;
    const std::vector<std::string_view> parts{data};
    if (data.size() < nameAt || !BiffTextReader(parts, nameAt, nullptr).read(1, &name)) {
        return false;
    }
    Sheet sheet;
    sheet.name = Utf8::decoded(name);
    sheet.kind = quint8(data[nameAt - 1]);
    sheet.from = biffNumber<quint32>(data, 0);
    m_sheets.push_back(std::move(sheet));
    return true;
}

/// New texts can go on behind the old ones only when these end where the records end.
bool XlsWorkbook::takeTexts(BiffStream *stream, QString *error)
{
    constexpr size_t countsSize = 8;
    if (stream->data().size() < countsSize) {
        return false;
    }
    m_hasTexts = true;
    m_oldUses = biffNumber<quint32>(stream->data(), 0);
    const auto count = biffNumber<quint32>(stream->data(), 4);
    BiffTextReader reader(stream->continuedData(), countsSize, nullptr);
    std::string text;
    for (quint32 i = 0; i < count; ++i) {
        text.clear();
        if (!reader.read(2, &text)) {
            return false;
        }
    }
    if (!reader.atEnd()) {
        *error = tr("The workbook has a form that cannot be extended.");
        return false;
    }
    m_texts.continueAfter(count);
    return true;
}

bool XlsWorkbook::measure(Sheet *sheet) const
{
    BiffStream stream(m_bytes, sheet->from);
    if (!stream.next() || stream.id() != Biff::Bof) {
        return false;
    }
    sheet->keptSize = qint64(stream.nextAt() - sheet->from);
    for (int depth = 1; depth > 0;) {
        const size_t at = stream.nextAt();
        if (!stream.next()) {
            return false;
        }
        depth += stream.id() == Biff::Bof ? 1 : stream.id() == Biff::Eof ? -1 : 0;
        sheet->keptSize += isPosition(stream.id()) ? 0 : qint64(stream.nextAt() - at);
    }
    sheet->to = stream.nextAt();
    return true;
}

bool XlsWorkbook::findSheetEnds(QString *error)
{
    for (Sheet &sheet : m_sheets) {
        if (!measure(&sheet)) {
            *error = damagedWorkbookText();
            return false;
        }
    }
    const std::vector<Sheet *> inOrder = sheetsInOrder();
    for (size_t i = 1; i < inOrder.size(); ++i) {
        if (inOrder[i]->from < inOrder[i - 1]->to) {
            *error = damagedWorkbookText();
            return false;
        }
    }
    return true;
}

int XlsWorkbook::sheetNumber(const QString &name) const
{
    for (size_t i = 0; i < m_sheets.size(); ++i) {
        const bool hasCells = m_sheets[i].kind == Biff::cellSheet;
        if (hasCells &&
            (name.isEmpty() || m_sheets[i].name.compare(name, Qt::CaseInsensitive) == 0)) {
            return int(i);
        }
    }
    return -1;
}

bool XlsWorkbook::hasSheet(const QString &name) const
{
    return std::any_of(m_sheets.begin(), m_sheets.end(), [&name](const Sheet &sheet) {
        return sheet.name.compare(name, Qt::CaseInsensitive) == 0;
    });
}

int XlsWorkbook::addSheet(const QString &name, std::string records)
{
    Sheet sheet;
    sheet.name = name;
    sheet.keptSize = qint64(records.size());
    sheet.added = std::move(records);
    m_sheets.push_back(std::move(sheet));
    ++m_addedSheets;
    return int(m_sheets.size()) - 1;
}

std::string_view XlsWorkbook::records(int sheet) const
{
    const Sheet &its = m_sheets[size_t(sheet)];
    return its.added.empty() ? std::string_view(m_bytes).substr(its.from, its.to - its.from)
                             : std::string_view(its.added);
}

void XlsWorkbook::setContent(int sheet, Content *content)
{
    m_sheets[size_t(sheet)].content = content;
}

void XlsWorkbook::addNewBoundSheets(std::string *out)
{
    for (size_t i = m_sheets.size() - m_addedSheets; i < m_sheets.size(); ++i) {
        Sheet &sheet = m_sheets[i];
        sheet.placeAt = out->size() + Biff::recordHeaderSize;
        std::string data(nameAt, '\0');
        appendBiffText(Utf8::encoded(sheet.name), 1, &data);
        appendBiffRecord(Biff::BoundSheet, data, out);
    }
}

/// Appends a record of the old globals, changed where the changes of the workbook ask for it.
void XlsWorkbook::addGlobal(BiffStream *stream, size_t at, std::string *out)
{
    const auto added = quint16(m_addedSheets);
    std::string data(stream->data());
    switch (stream->id()) {
    case Biff::ExtSst:
        return;
    case Biff::XfCrc:
        if (data.size() >= 20) {
            patchBiff(quint16(m_styles.count()), 14, &data);
            patchBiff(m_styles.checksum(), 16, &data);
        }
        break;
    case Biff::RecalcId:
        // Formulas of other sheets may refer to what has changed.
        if (data.size() >= 8) {
            patchBiff(quint32(0), 4, &data);
        }
        break;
    case Biff::TabId: {
        quint16 highest = 0;
        for (size_t i = 0; i + 1 < data.size(); i += 2) {
            highest = std::max(highest, biffNumber<quint16>(data, i));
        }
        for (quint16 i = 0; i < added; ++i) {
            appendBiff(++highest, &data);
        }
        break;
    }
    case Biff::SupBook:
        if (isInternalBook(data)) {
            patchBiff(quint16(biffNumber<quint16>(data, 0) + added), 0, &data);
        }
        break;
    case Biff::Sst:
        patchBiff(m_oldUses + m_texts.uses(), 0, &data);
        patchBiff(m_texts.count(), 4, &data);
        break;
    default:
        break;
    }
    appendBiffRecord(stream->id(), data, out);
    if (at == m_lastFont) {
        *out += m_styles.newFonts();
    }
    if (at == m_lastFormat) {
        *out += m_styles.newFormats();
    }
    if (at == m_lastStyle) {
        *out += m_styles.newStyles();
    }
}

void XlsWorkbook::makeGlobals()
{
    BiffStream stream(m_bytes);
    std::string *out = &m_head;
    size_t sheet = 0;
    bool awaitsTextsEnd = false;
    bool awaitsSheetsEnd = false;
    for (size_t at = 0; stream.next(); at = stream.nextAt()) {
        // What follows a record goes behind those that continue it.
        if (stream.id() != Biff::Continue && awaitsSheetsEnd) {
            awaitsSheetsEnd = false;
            addNewBoundSheets(out);
        }
        if (stream.id() != Biff::Continue && awaitsTextsEnd) {
            awaitsTextsEnd = false;
            *out += m_texts.firstRecord();
            out = &m_tail;
        }
        if (stream.id() == Biff::BoundSheet) {
            m_sheets[sheet++].placeAt = out->size() + Biff::recordHeaderSize;
        }
        addGlobal(&stream, at, out);
        awaitsSheetsEnd = awaitsSheetsEnd || at == m_lastSheet;
        awaitsTextsEnd = awaitsTextsEnd || at == m_textsAt;
        if (stream.id() == Biff::Eof) {
            break;
        }
    }
}

/// In the order of the old stream, new ones last.
std::vector<XlsWorkbook::Sheet *> XlsWorkbook::sheetsInOrder()
{
    std::vector<Sheet *> inOrder;
    for (Sheet &sheet : m_sheets) {
        inOrder.push_back(&sheet);
    }
    std::stable_sort(inOrder.begin(), inOrder.end() - qint64(m_addedSheets),
                     [](const Sheet *a, const Sheet *b) { return a->from < b->from; });
    return inOrder;
}

bool XlsWorkbook::placeSheets(QString *error)
{
    qint64 at = qint64(m_head.size() + m_tail.size()) + m_texts.moreRecords().size();
    for (const Sheet *const sheet : sheetsInOrder()) {
        patchBiff(quint32(at), sheet->placeAt, &m_head);
        at += sheet->size();
    }
    constexpr qint64 largest = (qint64(1) << 31) - (qint64(1) << 24);
    if (at > largest) {
        *error = tr("The workbook would be larger than its format allows.");
        return false;
    }
    return true;
}

bool XlsWorkbook::putSheet(const Sheet &sheet, const XlsContainer::Put &put) const
{
    if (sheet.content) {
        Content *const content = sheet.content;
        return put(content->beforeCells) && content->cells.forEachPiece(put) &&
               put(content->betweenThem) && content->links.forEachPiece(put) &&
               put(content->afterLinks);
    }
    BiffStream stream(m_bytes, sheet.from);
    for (size_t at = sheet.from; at < sheet.to && stream.next(); at = stream.nextAt()) {
        if (!isPosition(stream.id()) &&
            !put(std::string_view(m_bytes).substr(at, stream.nextAt() - at))) {
            return false;
        }
    }
    return true;
}

bool XlsWorkbook::write(SafeFile *file, const std::function<bool()> &goOn, QString *error)
{
    if (m_styles.areTooMany()) {
        *error = tr("It has too many different cell formats.");
        return false;
    }
    m_texts.finish();
    makeGlobals();
    if (!placeSheets(error)) {
        return false;
    }
    return m_container->write(
        file,
        [&](const XlsContainer::Put &put) {
            bool complete = put(m_head) && m_texts.moreRecords().forEachPiece(put) && put(m_tail);
            qint64 size = 0;
            for (const Sheet *const sheet : sheetsInOrder()) {
                complete = complete && goOn() && putSheet(*sheet, put);
                size += sheet->size();
            }
            // Some programs do not look for streams that are kept with other small ones.
            constexpr qint64 smallest = 4096;
            return complete && (size >= smallest || put(std::string(size_t(smallest), '\0')));
        },
        error);
}

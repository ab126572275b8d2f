#include "xlsreader.h"

#include "biffrecords.h"
#include "bifftext.h"
#include "utf8.h"
#include "xlscontainer.h"

#include <QCoreApplication>
#include <QHash>
#include <QTextCodec>

namespace {

struct XlsText
{
    Q_DECLARE_TR_FUNCTIONS(XlsReader)
};

QString tooOldText()
{
    return XlsText::tr("It is a workbook of Excel 4 or older. Save it as XLSX in a spreadsheet "
                       "program.");
}

const QTextCodec *codecOfPage(int page)
{
    constexpr int macRoman = 10000;
    const QByteArray number = QByteArray::number(page);
    const QTextCodec *codec = page == macRoman ? QTextCodec::codecForName("macintosh") : nullptr;
    for (const char *prefix : {"windows-", "IBM", "CP"}) {
        codec = codec ? codec : QTextCodec::codecForName(prefix + number);
    }
    return codec ? codec : QTextCodec::codecForName("windows-1252");
}

} // namespace

bool XlsReader::isWorkbookStart(const QByteArray &start)
{
    if (start.startsWith("\xd0\xcf\x11\xe0\xa1\xb1\x1a\xe1")) {
        return true;
    }
    // Without a container: a record that begins a stream, of any version.
    return start.size() > 4 && start.at(0) == '\x09' &&
           (start.at(1) == '\x00' || start.at(1) == '\x02' || start.at(1) == '\x04' ||
            start.at(1) == '\x08') &&
           start.at(3) == '\x00';
}

std::unique_ptr<XlsReader> XlsReader::open(const QString &path, QString *error)
{
    std::unique_ptr<XlsContainer> container = XlsContainer::open(path, error);
    if (!container) {
        return nullptr;
    }
    std::unique_ptr<XlsReader> reader(new XlsReader);
    reader->m_book.bytes = container->takeRecords();
    container.reset();
    return reader->readGlobals(error) ? std::move(reader) : nullptr;
}

bool XlsReader::readBeginning(BiffStream *stream, QString *error)
{
    const bool isThere = stream->next();
    if (isThere && stream->id() != Biff::Bof && (stream->id() & 0xff) == 0x09) {
        *error = tooOldText();
        return false;
    }
    if (!isThere || stream->id() != Biff::Bof || stream->data().size() < 4 ||
        biffNumber<quint16>(stream->data(), 2) != Biff::globalsStream) {
        *error = damagedWorkbookText();
        return false;
    }
    const auto version = biffNumber<quint16>(stream->data(), 0);
    if (version != Biff::version8 && version != Biff::version5) {
        *error = version < Biff::version5 ? tooOldText() : damagedWorkbookText();
        return false;
    }
    m_book.codec = version == Biff::version8 ? nullptr : codecOfPage(0);
    return true;
}

bool XlsReader::readGlobals(QString *error)
{
    BiffStream stream(m_book.bytes);
    if (!readBeginning(&stream, error)) {
        return false;
    }
    for (;;) {
        if (!stream.next()) {
            *error = damagedWorkbookText();
            return false;
        }
        if (stream.id() == Biff::Eof) {
            break;
        }
        if (!takeRecord(&stream, error)) {
            return false;
        }
    }
    QHash<int, CellNumberFormat> formats;
    for (const auto &[id, format] : m_formats) {
        formats.insert(id, format);
    }
    for (const int id : m_styleFormats) {
        const auto found = formats.constFind(id);
        m_book.styles.push_back(found == formats.constEnd() ? builtInNumberFormat(id) : *found);
    }
    return true;
}

bool XlsReader::takeRecord(BiffStream *stream, QString *error)
{
    const std::string_view data = stream->data();
    bool isWhole = true;
    switch (stream->id()) {
    case Biff::FilePass:
        *error = encryptedWorkbookText();
        return false;
    case Biff::Date1904:
        isWhole = data.size() >= 2;
        m_book.dateSystem = isWhole && biffNumber<quint16>(data, 0) != 0 ? DateSystem::From1904
                                                                         : DateSystem::From1900;
        break;
    case Biff::CodePage:
        if (m_book.codec && data.size() >= 2) {
            m_book.codec = codecOfPage(biffNumber<quint16>(data, 0));
        }
        break;
    case Biff::Format:
        isWhole = takeFormat(stream);
        break;
    case Biff::Xf:
        isWhole = data.size() >= 4;
        m_styleFormats.push_back(isWhole ? biffNumber<quint16>(data, 2) : 0);
        break;
    case Biff::BoundSheet:
        isWhole = takeSheet(stream);
        break;
    case Biff::Sst:
        isWhole = takeTexts(stream);
        break;
    default:
        break;
    }
    if (!isWhole) {
        *error = damagedWorkbookText();
    }
    return isWhole;
}

bool XlsReader::takeFormat(BiffStream *stream)
{
    if (stream->data().size() < 4) {
        return false;
    }
    const int id = biffNumber<quint16>(stream->data(), 0);
    std::string code;
    if (!BiffTextReader(stream->continuedData(), 2, m_book.codec)
             .read(m_book.codec ? 1 : 2, &code)) {
        return false;
    }
    m_formats.emplace_back(id, parseNumberFormat(code));
    return true;
}

bool XlsReader::takeSheet(BiffStream *stream)
{
    constexpr size_t nameAt = 6; // after position, visibility and kind
    const std::string_view data = stream->data();
    if (data.size() < nameAt) {
        return false;
    }
    std::string name;
    if (!BiffTextReader(stream->continuedData(), nameAt, m_book.codec).read(1, &name)) {
        return false;
    }
    if (quint8(data[nameAt - 1]) == Biff::cellSheet) {
        m_sheets.push_back({Utf8::decoded(name), biffNumber<quint32>(data, 0)});
    }
    return true;
}

bool XlsReader::takeTexts(BiffStream *stream)
{
    constexpr size_t header = 8; // uses, texts
    if (stream->data().size() < header) {
        return false;
    }
    const auto count = biffNumber<quint32>(stream->data(), 4);
    BiffTextReader reader(stream->continuedData(), header, nullptr);
    for (quint32 i = 0; i < count; ++i) {
        if (!reader.read(2, m_book.texts.text())) {
            return false;
        }
        m_book.texts.endText();
    }
    return true;
}

QStringList XlsReader::sheetNames() const
{
    QStringList names;
    for (const Sheet &sheet : m_sheets) {
        names.append(sheet.name);
    }
    return names;
}

SheetEnd XlsReader::readSheet(int sheet, SheetSink *sink, const Progress &progress, QString *error)
{
    return XlsSheetScan(&m_book, m_sheets[size_t(sheet)].at, sink).run(progress, error);
}

#include "xlsreader.h"

#include "biffrecords.h"
#include "bifftext.h"
#include "utf8.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QTextCodec>
// GLib has names that are Qt's keywords elsewhere; they are off in this project.
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>

namespace {

struct XlsText
{
    Q_DECLARE_TR_FUNCTIONS(XlsReader)
};

QString damagedText()
{
    return XlsText::tr("The file is truncated or damaged.");
}

QString encryptedText()
{
    return XlsText::tr("The workbook is encrypted. Open it in a spreadsheet program and save it "
                       "without a password.");
}

QString tooOldText()
{
    return XlsText::tr("It is a workbook of Excel 4 or older. Save it as XLSX in a spreadsheet "
                       "program.");
}

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Container = std::unique_ptr<GsfInfile, Unref>;
using Stream = std::unique_ptr<GsfInput, Unref>;

/// What the library thinks of a damaged file is told by our own errors.
void keepQuiet()
{
    static const bool done = [] {
        const auto ignore = [](const gchar *, GLogLevelFlags, const gchar *, gpointer) {};
        for (const char *domain : {"libgsf", "libgsf:msole"}) {
            g_log_set_handler(domain, GLogLevelFlags(G_LOG_LEVEL_MASK), ignore, nullptr);
        }
        return true;
    }();
    Q_UNUSED(done)
}

Container openContainer(const QByteArray &file)
{
    keepQuiet();
    const Stream input(gsf_input_memory_new(reinterpret_cast<const guint8 *>(file.constData()),
                                            file.size(), FALSE));
    GError *error = nullptr;
    Container container(input ? gsf_infile_msole_new(input.get(), &error) : nullptr);
    g_clear_error(&error);
    return container;
}

QHash<QString, int> childNumbers(GsfInfile *container)
{
    QHash<QString, int> numbers;
    for (int i = 0; i < gsf_infile_num_children(container); ++i) {
        numbers.insert(QString::fromUtf8(gsf_infile_name_by_index(container, i)).toLower(), i);
    }
    return numbers;
}

/// Says what a container without a workbook is, as far as its streams tell.
QString otherContainerText(const QHash<QString, int> &children)
{
    if (children.contains(QStringLiteral("encryptedpackage"))) {
        return encryptedText();
    }
    if (children.contains(QStringLiteral("worddocument"))) {
        return XlsText::tr("It is a Word document, not an Excel workbook.");
    }
    return XlsText::tr("It is a compound file without an Excel workbook.");
}

bool extractWorkbook(const QByteArray &file, std::string *bytes, QString *error)
{
    const Container container = openContainer(file);
    if (!container) {
        *error = damagedText();
        return false;
    }
    const QHash<QString, int> children = childNumbers(container.get());
    const int number =
        children.value(QStringLiteral("workbook"), children.value(QStringLiteral("book"), -1));
    if (number < 0) {
        *error = otherContainerText(children);
        return false;
    }
    const Stream stream(gsf_infile_child_by_index(container.get(), number));
    const gsf_off_t size = stream ? gsf_input_size(stream.get()) : -1;
    if (size < 0 || size > file.size()) {
        *error = damagedText();
        return false;
    }
    bytes->resize(size_t(size));
    if (size > 0 &&
        !gsf_input_read(stream.get(), size_t(size), reinterpret_cast<guint8 *>(bytes->data()))) {
        *error = damagedText();
        return false;
    }
    return true;
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
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return nullptr;
    }
    constexpr qint64 largestFile = qint64(1) << 30;
    if (file.size() > largestFile) {
        *error = XlsText::tr("The file is larger than any workbook of its kind.");
        return nullptr;
    }
    const QByteArray bytes = file.readAll();
    if (bytes.size() != file.size()) {
        *error = file.errorString();
        return nullptr;
    }
    std::unique_ptr<XlsReader> reader(new XlsReader);
    if (bytes.startsWith('\x09')) {
        reader->m_book.bytes = bytes.toStdString();
    } else if (!extractWorkbook(bytes, &reader->m_book.bytes, error)) {
        return nullptr;
    }
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
        *error = damagedText();
        return false;
    }
    const auto version = biffNumber<quint16>(stream->data(), 0);
    if (version != Biff::version8 && version != Biff::version5) {
        *error = version < Biff::version5 ? tooOldText() : damagedText();
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
            *error = damagedText();
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
        *error = encryptedText();
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
        *error = damagedText();
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

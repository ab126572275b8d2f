#include "xlsxpackage.h"

#include "memoryceiling.h"
#include "zipwriter.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QUrl>
#include <cstring>
#include <expat.h>
#include <zip.h>

namespace {

constexpr size_t blockSize = size_t(1) << 16;

struct XlsxText
{
    Q_DECLARE_TR_FUNCTIONS(XlsxPackage)
};

QString zipErrorText(zip_error_t *error)
{
    switch (zip_error_code_zip(error)) {
    case ZIP_ER_NOZIP:
    case ZIP_ER_INCONS:
    case ZIP_ER_EOF:
        return XlsxText::tr("The file is truncated or damaged.");
    case ZIP_ER_NOPASSWD:
    case ZIP_ER_WRONGPASSWD:
        return XlsxText::tr("The file is encrypted.");
    default:
        return QString::fromUtf8(zip_error_strerror(error));
    }
}

class XmlParser
{
public:
    explicit XmlParser(PartHandler *handler)
        : m_parser(XML_ParserCreate(nullptr))
        , m_handler(handler)
    {
        if (!m_parser) {
            throw std::bad_alloc();
        }
        XML_SetUserData(m_parser, this);
        XML_SetElementHandler(m_parser, onStart, onEnd);
        XML_SetCharacterDataHandler(m_parser, onText);
        XML_SetStartDoctypeDeclHandler(m_parser, onDocumentType);
    }
    ~XmlParser() { XML_ParserFree(m_parser); }
    XmlParser(const XmlParser &) = delete;
    XmlParser &operator=(const XmlParser &) = delete;

    bool parse(std::string_view block, bool isLast)
    {
        return XML_Parse(m_parser, block.data(), int(block.size()), isLast ? 1 : 0) ==
               XML_STATUS_OK;
    }
    QString errorText(const QString &part) const
    {
        return XlsxText::tr("Part '%1' of the workbook is damaged: %2 at line %3 column %4.")
            .arg(part, QString::fromUtf8(XML_ErrorString(XML_GetErrorCode(m_parser))),
                 QString::number(XML_GetCurrentLineNumber(m_parser)),
                 QString::number(XML_GetCurrentColumnNumber(m_parser) + 1));
    }

private:
    static XmlParser *self(void *data) { return static_cast<XmlParser *>(data); }
    static void onStart(void *data, const char *name, const char **attributes)
    {
        XmlParser *const parser = self(data);
        if (!parser->m_handler->isStopped()) {
            parser->m_handler->startElement(localName(name), attributes);
            parser->checkStopped();
        }
    }
    static void onEnd(void *data, const char *name)
    {
        XmlParser *const parser = self(data);
        if (!parser->m_handler->isStopped()) {
            parser->m_handler->endElement(localName(name));
            parser->checkStopped();
        }
    }
    static void onText(void *data, const char *text, int size)
    {
        XmlParser *const parser = self(data);
        if (!parser->m_handler->isStopped()) {
            parser->m_handler->characters({text, size_t(size)});
        }
    }
    // Workbooks have none; entities that grow without end are declared in it.
    static void onDocumentType(void *data, const char *, const char *, const char *, int)
    {
        XmlParser *const parser = self(data);
        parser->m_handler->stop(XlsxText::tr("The workbook contains a document type declaration, "
                                             "which is not allowed in workbooks."));
        parser->checkStopped();
    }
    void checkStopped()
    {
        if (m_handler->isStopped()) {
            XML_StopParser(m_parser, XML_FALSE);
        }
    }

    XML_Parser m_parser;
    PartHandler *m_handler;
};

struct CloseFile
{
    void operator()(zip_file_t *file) const { zip_fclose(file); }
};

} // namespace

struct XlsxPackage::Archive
{
    explicit Archive(zip_t *opened)
        : archive(opened)
    {
    }
    ~Archive() { zip_discard(archive); }
    Archive(const Archive &) = delete;
    Archive &operator=(const Archive &) = delete;

    zip_t *archive;
};

void PartHandler::stop(const QString &error)
{
    if (!m_stopped) {
        m_stopped = true;
        m_error = error;
    }
}

XlsxPackage::XlsxPackage(std::unique_ptr<Archive> archive, qint64 fileSize, UnpackLimits limits)
    : m_archive(std::move(archive))
    , m_fileSize(fileSize)
    , m_limits(limits)
{
    if (m_limits.most < 0) {
        m_limits.most = qint64(std::min(MemoryCeiling::limitGb(), 1e6) * 1073741824.0);
    }
    const zip_int64_t count = zip_get_num_entries(m_archive->archive, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char *const name = zip_get_name(m_archive->archive, zip_uint64_t(i), 0);
        if (!name) {
            continue;
        }
        QString normal = QString::fromUtf8(name).toLower();
        normal.replace(QLatin1Char('\\'), QLatin1Char('/'));
        const auto [at, added] = m_entries.insert({normal.toStdString(), {i, false}});
        at->second.twice = !added;
    }
}

XlsxPackage::~XlsxPackage() = default;

std::unique_ptr<XlsxPackage> XlsxPackage::open(const QString &path, UnpackLimits limits,
                                               QString *error)
{
    int code = 0;
    zip_t *const archive = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, &code);
    if (!archive) {
        zip_error_t reason;
        zip_error_init_with_code(&reason, code);
        *error = zipErrorText(&reason);
        zip_error_fini(&reason);
        return nullptr;
    }
    return std::unique_ptr<XlsxPackage>(
        new XlsxPackage(std::make_unique<Archive>(archive), QFileInfo(path).size(), limits));
}

const XlsxPackage::Entry *XlsxPackage::find(const QString &part) const
{
    const auto found = m_entries.find(part.toLower().toStdString());
    return found == m_entries.end() ? nullptr : &found->second;
}

bool XlsxPackage::has(const QString &part) const
{
    return find(part) != nullptr;
}

qint64 XlsxPackage::statedSize(const QString &part) const
{
    const Entry *const entry = find(part);
    zip_stat_t facts;
    if (!entry || zip_stat_index(m_archive->archive, zip_uint64_t(entry->index), 0, &facts) != 0 ||
        (facts.valid & ZIP_STAT_SIZE) == 0) {
        return 0;
    }
    return qint64(std::min<zip_uint64_t>(facts.size, zip_uint64_t(1) << 50));
}

bool XlsxPackage::countUnpacked(qint64 bytes, QString *error)
{
    m_unpacked += bytes;
    if (m_unpacked > m_limits.most) {
        *error = XlsxText::tr("The workbook unpacks to more than the memory ceiling of %1 GB.")
                     .arg(QLocale().toString(double(m_limits.most) / 1073741824.0, 'g', 3));
        return false;
    }
    if (m_unpacked > m_limits.suspicious && m_unpacked / m_limits.ratio > m_fileSize) {
        *error = XlsxText::tr("The workbook unpacks to more than %1 times its size. It was given "
                              "up, because nothing sensible does.")
                     .arg(QLocale().toString(m_limits.ratio));
        return false;
    }
    return true;
}

const XlsxPackage::Entry *XlsxPackage::findOnce(const QString &part, QString *error) const
{
    const Entry *const entry = find(part);
    if (!entry || entry->twice) {
        *error = entry ? XlsxText::tr("The workbook contains its part '%1' twice.").arg(part)
                       : XlsxText::tr("The workbook's part '%1' is missing.").arg(part);
        return nullptr;
    }
    return entry;
}

PartEnd XlsxPackage::unpack(const QString &part, const TakeBlock &take, QString *error)
{
    const Entry *const entry = findOnce(part, error);
    if (!entry) {
        return PartEnd::Failed;
    }
    const std::unique_ptr<zip_file_t, CloseFile> file(
        zip_fopen_index(m_archive->archive, zip_uint64_t(entry->index), 0));
    if (!file) {
        *error = zipErrorText(zip_get_error(m_archive->archive));
        return PartEnd::Failed;
    }
    const std::unique_ptr<char[]> buffer(new char[blockSize]);
    for (;;) {
        const zip_int64_t size = zip_fread(file.get(), buffer.get(), blockSize);
        if (size < 0) {
            *error = zipErrorText(zip_file_get_error(file.get()));
            return PartEnd::Failed;
        }
        if (size == 0) {
            return PartEnd::Complete;
        }
        if (!countUnpacked(size, error)) {
            return PartEnd::Failed;
        }
        if (!take({buffer.get(), size_t(size)})) {
            return PartEnd::Stopped;
        }
    }
}

PartEnd XlsxPackage::parse(const QString &part, PartHandler *handler,
                           const std::function<bool(qint64)> &progress, QString *error)
{
    XmlParser parser(handler);
    qint64 done = 0;
    bool isDamaged = false;
    PartEnd end = unpack(
        part,
        [&](std::string_view block) {
            isDamaged = !parser.parse(block, false);
            done += qint64(block.size());
            return !isDamaged && (!progress || progress(done));
        },
        error);
    isDamaged = isDamaged || (end == PartEnd::Complete && !parser.parse({}, true));
    if (isDamaged) {
        *error = handler->isStopped() ? handler->error() : parser.errorText(part);
        end = error->isEmpty() ? PartEnd::Stopped : PartEnd::Failed;
    }
    return end;
}

bool XlsxPackage::read(const QString &part, QByteArray *content, QString *error)
{
    content->clear();
    constexpr int largest = 64 << 20;
    const PartEnd end = unpack(
        part,
        [content](std::string_view block) {
            content->append(block.data(), int(block.size()));
            return content->size() <= largest;
        },
        error);
    if (end == PartEnd::Stopped) {
        *error = XlsxText::tr("The workbook's part '%1' is too large.").arg(part);
    }
    return end == PartEnd::Complete;
}

QStringList XlsxPackage::parts() const
{
    QStringList names;
    const zip_int64_t count = zip_get_num_entries(m_archive->archive, 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        const char *const name = zip_get_name(m_archive->archive, zip_uint64_t(i), 0);
        if (name && *name && name[strlen(name) - 1] != '/') {
            names.append(QString::fromUtf8(name));
        }
    }
    return names;
}

bool XlsxPackage::copyPacked(const QString &part, ZipWriter *zip, QString *error)
{
    const Entry *const entry = findOnce(part, error);
    if (!entry) {
        return false;
    }
    const auto index = zip_uint64_t(entry->index);
    zip_stat_t facts;
    constexpr zip_uint64_t needed =
        ZIP_STAT_SIZE | ZIP_STAT_COMP_SIZE | ZIP_STAT_CRC | ZIP_STAT_COMP_METHOD;
    const bool isKnown = zip_stat_index(m_archive->archive, index, 0, &facts) == 0 &&
                         (facts.valid & needed) == needed &&
                         (facts.comp_method == ZIP_CM_DEFLATE || facts.comp_method == ZIP_CM_STORE);
    const std::unique_ptr<zip_file_t, CloseFile> file(
        isKnown ? zip_fopen_index(m_archive->archive, index, ZIP_FL_COMPRESSED) : nullptr);
    if (!file) {
        *error = XlsxText::tr("The workbook's part '%1' cannot be copied.").arg(part);
        return false;
    }
    zip->beginRaw(part.toUtf8(), facts.comp_method == ZIP_CM_DEFLATE, facts.crc, facts.comp_size,
                  facts.size);
    const std::unique_ptr<char[]> buffer(new char[blockSize]);
    zip_uint64_t copied = 0;
    for (;;) {
        const zip_int64_t size = zip_fread(file.get(), buffer.get(), blockSize);
        if (size <= 0) {
            break;
        }
        zip->appendRaw({buffer.get(), size_t(size)});
        copied += zip_uint64_t(size);
    }
    if (copied != facts.comp_size) {
        *error = XlsxText::tr("The file is truncated or damaged.");
        return false;
    }
    return true;
}

const char *attributeValue(const char *const *attributes, std::string_view name)
{
    for (; *attributes; attributes += 2) {
        if (localName(*attributes) == name) {
            return attributes[1];
        }
    }
    return nullptr;
}

bool isTrueAttribute(const char *value)
{
    return value &&
           (strcmp(value, "1") == 0 || strcmp(value, "true") == 0 || strcmp(value, "on") == 0);
}

std::string_view localName(const char *name)
{
    const char *const colon = strchr(name, ':');
    return colon ? colon + 1 : name;
}

QString partFolder(const QString &part)
{
    return part.contains(QLatin1Char('/')) ? part.section(QLatin1Char('/'), 0, -2) : QString();
}

QString relationshipsPart(const QString &part)
{
    const QString folder = partFolder(part);
    return (folder.isEmpty() ? QString() : folder + QLatin1Char('/')) + QLatin1String("_rels/") +
           part.section(QLatin1Char('/'), -1) + QLatin1String(".rels");
}

QString relatedPart(const QString &folder, QString target)
{
    target.replace(QLatin1Char('\\'), QLatin1Char('/'));
    target = QUrl::fromPercentEncoding(target.toUtf8());
    const QString whole =
        target.startsWith(QLatin1Char('/')) ? target : folder + QLatin1Char('/') + target;
    QString clean = QDir::cleanPath(QLatin1Char('/') + whole);
    while (clean.startsWith(QLatin1Char('/'))) {
        clean.remove(0, 1);
    }
    return clean;
}

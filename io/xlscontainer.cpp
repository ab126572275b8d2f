#include "xlscontainer.h"

#include "safefile.h"
#include "spilledbytes.h"

#include <QCoreApplication>
#include <QFile>
#include <QHash>
#include <QTemporaryFile>
#include <cerrno>
#include <cstdio>
#include <unistd.h>
// GLib has names that are Qt's keywords elsewhere; they are off in this project.
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-output-stdio.h>

namespace {

struct XlsText
{
    Q_DECLARE_TR_FUNCTIONS(XlsReader)
};

struct Unref
{
    void operator()(gpointer object) const { g_object_unref(object); }
};
using Infile = std::unique_ptr<GsfInfile, Unref>;
using Input = std::unique_ptr<GsfInput, Unref>;
using Outfile = std::unique_ptr<GsfOutfile, Unref>;
using Output = std::unique_ptr<GsfOutput, Unref>;

constexpr char recordsName[] = "Workbook";
constexpr int classIdSize = 16;
// What says that a compound file is a workbook.
constexpr guint8 workbookClass[classIdSize] = {0x20, 0x08, 0x02, 0, 0, 0, 0, 0,
                                               0xc0, 0,    0,    0, 0, 0, 0, 0x46};

/// What the library thinks of a damaged file is told by our own errors.
void keepQuiet()
{
    static const bool done = [] {
        const auto ignore = [](const gchar *, GLogLevelFlags, const gchar *, gpointer) {};
        for (const char *domain : {static_cast<const char *>(nullptr), "libgsf", "libgsf:msole"}) {
            g_log_set_handler(domain, GLogLevelFlags(G_LOG_LEVEL_MASK), ignore, nullptr);
        }
        return true;
    }();
    Q_UNUSED(done)
}

QHash<QString, int> childNumbers(GsfInfile *container)
{
    QHash<QString, int> numbers;
    for (int i = 0; i < gsf_infile_num_children(container); ++i) {
        numbers.insert(QString::fromUtf8(gsf_infile_name_by_index(container, i)).toLower(), i);
    }
    return numbers;
}

int recordsNumber(const QHash<QString, int> &children)
{
    return children.value(QStringLiteral("workbook"), children.value(QStringLiteral("book"), -1));
}

/// Says what a container without a workbook is, as far as its streams tell.
QString otherContainerText(const QHash<QString, int> &children)
{
    if (children.contains(QStringLiteral("encryptedpackage"))) {
        return encryptedWorkbookText();
    }
    if (children.contains(QStringLiteral("worddocument"))) {
        return XlsText::tr("It is a Word document, not an Excel workbook.");
    }
    return XlsText::tr("It is a compound file without an Excel workbook.");
}

bool copyStream(GsfInput *from, GsfOutput *to)
{
    constexpr size_t most = size_t(1) << 16;
    for (gsf_off_t left = gsf_input_size(from); left > 0;) {
        const size_t count = std::min(size_t(left), most);
        const guint8 *const bytes = gsf_input_read(from, count, nullptr);
        if (!bytes || !gsf_output_write(to, count, bytes)) {
            return false;
        }
        left -= gsf_off_t(count);
    }
    return true;
}

void copyClass(GsfInfile *from, GsfOutfile *to)
{
    guint8 classId[classIdSize] = {};
    if (gsf_infile_msole_get_class_id(GSF_INFILE_MSOLE(from), classId)) {
        gsf_outfile_msole_set_class_id(GSF_OUTFILE_MSOLE(to), classId);
    }
}

/// Copies all children but the one of that number.
bool copyChildren(GsfInfile *from, GsfOutfile *to, int except)
{
    copyClass(from, to);
    for (int i = 0; i < gsf_infile_num_children(from); ++i) {
        if (i == except) {
            continue;
        }
        const Input child(gsf_infile_child_by_index(from, i));
        if (!child) {
            return false;
        }
        const bool isStorage =
            GSF_IS_INFILE(child.get()) && gsf_infile_num_children(GSF_INFILE(child.get())) >= 0;
        const Output copy(
            gsf_outfile_new_child(to, gsf_infile_name_by_index(from, i), isStorage ? TRUE : FALSE));
        const bool copied = isStorage
                                ? copyChildren(GSF_INFILE(child.get()), GSF_OUTFILE(copy.get()), -1)
                                : copyStream(child.get(), copy.get());
        if (!gsf_output_close(copy.get()) || !copied) {
            return false;
        }
    }
    return true;
}

bool putIntoFile(QTemporaryFile *from, SafeFile *file, QString *error)
{
    constexpr qint64 blockSize = 1 << 16;
    if (!from->seek(0)) {
        *error = SpilledBytes::temporaryFileText(errno);
        return false;
    }
    for (;;) {
        const QByteArray block = from->read(blockSize);
        if (block.isEmpty()) {
            break;
        }
        if (!file->write(block.constData(), block.size())) {
            return false;
        }
    }
    if (from->error() != QFileDevice::NoError) {
        *error = SpilledBytes::temporaryFileText(errno);
        return false;
    }
    return true;
}

} // namespace

struct XlsContainer::Handles
{
    Infile container;
    int records = -1;
};

QString damagedWorkbookText()
{
    return XlsText::tr("The file is truncated or damaged.");
}

QString encryptedWorkbookText()
{
    return XlsText::tr("The workbook is encrypted. Open it in a spreadsheet program and save it "
                       "without a password.");
}

XlsContainer::XlsContainer()
    : m_handles(std::make_unique<Handles>())
{
}

XlsContainer::~XlsContainer() = default;

std::unique_ptr<XlsContainer> XlsContainer::open(const QString &path, QString *error)
{
    auto container = std::make_unique<XlsContainer>();
    return container->load(path, error) ? std::move(container) : nullptr;
}

bool XlsContainer::load(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return false;
    }
    constexpr qint64 largestFile = qint64(1) << 30;
    if (file.size() > largestFile) {
        *error = XlsText::tr("The file is larger than any workbook of its kind.");
        return false;
    }
    m_file = file.readAll();
    if (m_file.size() != file.size()) {
        *error = file.errorString();
        return false;
    }
    // Without a container: the records alone.
    if (m_file.startsWith('\x09')) {
        m_records = m_file.toStdString();
        return true;
    }
    return extractRecords(error);
}

bool XlsContainer::extractRecords(QString *error)
{
    keepQuiet();
    const Input input(gsf_input_memory_new(reinterpret_cast<const guint8 *>(m_file.constData()),
                                           m_file.size(), FALSE));
    GError *problem = nullptr;
    m_handles->container.reset(input ? gsf_infile_msole_new(input.get(), &problem) : nullptr);
    g_clear_error(&problem);
    GsfInfile *const container = m_handles->container.get();
    if (!container) {
        *error = damagedWorkbookText();
        return false;
    }
    const QHash<QString, int> children = childNumbers(container);
    m_handles->records = recordsNumber(children);
    if (m_handles->records < 0) {
        *error = otherContainerText(children);
        return false;
    }
    const Input stream(gsf_infile_child_by_index(container, m_handles->records));
    const gsf_off_t size = stream ? gsf_input_size(stream.get()) : -1;
    if (size < 0 || size > m_file.size()) {
        *error = damagedWorkbookText();
        return false;
    }
    m_records.resize(size_t(size));
    if (size > 0 &&
        !gsf_input_read(stream.get(), size_t(size), reinterpret_cast<guint8 *>(m_records.data()))) {
        *error = damagedWorkbookText();
        return false;
    }
    return true;
}

std::string XlsContainer::takeRecords()
{
    return std::move(m_records);
}

bool XlsContainer::hasOlderCopy() const
{
    if (!m_handles->container) {
        return false;
    }
    const QHash<QString, int> children = childNumbers(m_handles->container.get());
    return children.contains(QStringLiteral("workbook")) &&
           children.contains(QStringLiteral("book"));
}

/// The container is made in a temporary file, because its parts are written in no order, and goes
/// to the real one when it is complete.
bool XlsContainer::write(SafeFile *file, const PutRecords &putRecords, QString *error)
{
    keepQuiet();
    errno = 0;
    QTemporaryFile made;
    FILE *const stream = made.open() ? fdopen(dup(made.handle()), "w+b") : nullptr;
    if (!stream) {
        *error = SpilledBytes::temporaryFileText(errno);
        return false;
    }
    const Output sink(gsf_output_stdio_new_FILE("", stream, TRUE));
    bool complete = false;
    bool wasPut = false;
    {
        const Outfile container(gsf_outfile_msole_new(sink.get()));
        gsf_outfile_msole_set_class_id(GSF_OUTFILE_MSOLE(container.get()), workbookClass);
        bool copied = !m_handles->container ||
                      copyChildren(m_handles->container.get(), container.get(), m_handles->records);
        const Output records(gsf_outfile_new_child(container.get(), recordsName, FALSE));
        bool taken = true;
        wasPut = copied && putRecords([&](std::string_view bytes) {
                     taken = gsf_output_write(records.get(), bytes.size(),
                                              reinterpret_cast<const guint8 *>(bytes.data())) != 0;
                     return taken;
                 });
        complete = gsf_output_close(records.get()) && wasPut;
        complete = gsf_output_close(GSF_OUTPUT(container.get())) && complete;
        if (!copied) {
            *error = damagedWorkbookText();
        } else if (!taken || (wasPut && !complete)) {
            *error = SpilledBytes::temporaryFileText(errno);
        }
    }
    if (fclose(stream) != 0 && complete) {
        complete = false;
        *error = SpilledBytes::temporaryFileText(errno);
    }
    return complete && putIntoFile(&made, file, error);
}

// Feeds a reader with damaged files for a while. Built with the sanitizers, which end the program
// at the first fault; the input then stays in the folder, with the seed in its name.
//
//   fuzz READER SECONDS SEED SAMPLES FOLDER     READER-SEED.input is made, read and removed
//   fuzz READER once SEED SAMPLES FOLDER        the one input of this seed, which stays
//
// SAMPLES holds whole files of the reader's format. The reader ".. -append" writes to them.

#include "consoleinterface.h"
#include "documentfile.h"
#include "graphscene.h"
#include "inputoptions.h"
#include "inputreader.h"
#include "mutation.h"
#include "node.h"
#include "outputoptions.h"
#include "outputwriter.h"
#include "transformcatalogue.h"
#include "utf8.h"
#include "xlscontainer.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocale>
#include <cstdio>
#include <memory>
#include <unistd.h>
#include <zip.h>

namespace {

constexpr unsigned longestSeconds = 60;

struct Sample
{
    QByteArray bytes;
    /// Of an XLSX file.
    QList<QPair<QByteArray, QByteArray>> parts;
    /// Of an XLS file.
    QByteArray records;
};

struct Reader
{
    QString name;
    FileType type = FileType::DelimitedText;
    bool isDocument = false;
    bool appends = false;
    QList<Sample> samples;
};

[[noreturn]] void giveUp(const QString &why)
{
    std::fprintf(stderr, "%s\n", qPrintable(why));
    std::exit(2);
}

// --- Whole files and their parts

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        giveUp(QStringLiteral("The input cannot be written."));
    }
}

void unpack(const QString &path, Sample *sample)
{
    zip_t *const archive = zip_open(QFile::encodeName(path).constData(), ZIP_RDONLY, nullptr);
    for (zip_int64_t i = 0; archive && i < zip_get_num_entries(archive, 0); ++i) {
        zip_stat_t status;
        zip_file_t *const part = zip_fopen_index(archive, zip_uint64_t(i), 0);
        if (part && zip_stat_index(archive, zip_uint64_t(i), 0, &status) == 0) {
            QByteArray bytes(int(status.size), '\0');
            zip_fread(part, bytes.data(), status.size);
            sample->parts.append({status.name, bytes});
            zip_fclose(part);
        }
    }
    zip_discard(archive);
}

void pack(const QString &path, const QList<QPair<QByteArray, QByteArray>> &parts)
{
    zip_t *const archive =
        zip_open(QFile::encodeName(path).constData(), ZIP_CREATE | ZIP_TRUNCATE, nullptr);
    for (const auto &[name, bytes] : parts) {
        zip_source_t *const source =
            zip_source_buffer(archive, bytes.constData(), zip_uint64_t(bytes.size()), 0);
        const zip_int64_t number =
            zip_file_add(archive, name.constData(), source, ZIP_FL_OVERWRITE);
        zip_set_file_compression(archive, zip_uint64_t(number), ZIP_CM_STORE, 0);
    }
    if (!archive || zip_close(archive) != 0) {
        giveUp(QStringLiteral("The input cannot be packed."));
    }
}

QList<Sample> samplesIn(const QString &folder, FileType type)
{
    QList<Sample> samples;
    for (const QFileInfo &file : QDir(folder).entryInfoList(QDir::Files, QDir::Name)) {
        Sample sample;
        sample.bytes = contentOf(file.filePath());
        if (type == FileType::ExcelXlsx) {
            unpack(file.filePath(), &sample);
        } else if (type == FileType::ExcelXls) {
            QString error;
            const auto container = XlsContainer::open(file.filePath(), &error);
            sample.records = container ? QByteArray::fromStdString(container->takeRecords()) : "";
        }
        samples.append(sample);
    }
    return samples;
}

// --- One damaged file

void damageParts(const QString &path, const Reader &reader, const Sample &sample,
                 Mutation *mutation)
{
    QList<QPair<QByteArray, QByteArray>> parts = sample.parts;
    const Sample &other = reader.samples[mutation->number(reader.samples.size())];
    QList<QByteArray> others;
    for (const auto &part : other.parts + parts) {
        others.append(part.second);
    }
    for (int left = 1 + mutation->number(2); left > 0; --left) {
        QByteArray &bytes = parts[mutation->number(parts.size())].second;
        bytes = mutation->changed(bytes, others);
    }
    if (mutation->oneIn(20)) {
        parts.removeAt(mutation->number(parts.size()));
    }
    pack(path, parts);
}

void makeInput(const QString &path, const Reader &reader, Mutation *mutation)
{
    QFile::remove(path);
    const Sample &sample = reader.samples[mutation->number(reader.samples.size())];
    if (!sample.parts.isEmpty() && !mutation->oneIn(5)) {
        damageParts(path, reader, sample, mutation);
        return;
    }
    const bool recordsAlone = !sample.records.isEmpty() && !mutation->oneIn(4);
    QList<QByteArray> others;
    for (const Sample &other : reader.samples) {
        others.append(recordsAlone ? other.records : other.bytes);
    }
    write(path, mutation->changed(recordsAlone ? sample.records : sample.bytes, others));
}

InputOptions someOptions(FileType type, Mutation *mutation)
{
    const QStringList encodings = {"Automatic", "UTF-8", "UTF-16", "ISO-8859-1", "Shift-JIS"};
    InputOptions options;
    options.fileType = type;
    options.delimiter = Delimiter(mutation->oneIn(2) ? 0 : mutation->number(10));
    options.customDelimiter = mutation->oneIn(2) ? QStringLiteral("#") : QString();
    options.quoting = InputQuoting(mutation->number(3));
    options.ignoreRepeatedDelimiter = mutation->oneIn(4);
    options.encoding = encodings[mutation->oneIn(2) ? 0 : mutation->number(encodings.size())];
    options.ignoredRows = mutation->oneIn(4) ? mutation->number(5) : 0;
    options.header = !mutation->oneIn(3);
    options.trim = mutation->oneIn(4);
    options.simplify = mutation->oneIn(4);
    options.ignoreEmptyRows = mutation->oneIn(2);
    options.ignoreEmptyColumns = mutation->oneIn(4);
    options.ignoreExcelHiddenRows = mutation->oneIn(2);
    options.ignoreExcelHiddenColumns = mutation->oneIn(2);
    options.autoFixedWidths = !mutation->oneIn(3);
    options.fixedWidths = {mutation->number(9), 1, mutation->number(20)};
    options.jsonArraysAsRows = mutation->oneIn(2);
    options.showMeta = mutation->oneIn(2);
    return options;
}

// --- What must hold, whatever the file is

void require(bool holds, const char *what)
{
    if (!holds) {
        std::fprintf(stderr, "Broken: %s\n", what);
        std::abort();
    }
}

/// Answers whether there was anything in the file that could be read.
bool look(const Dataset &table, const Messages &messages)
{
    require(!messages.failed || (table.isEmpty() && !table.hasColumns()),
            "a failed read gives no table");
    require(!messages.failed || !messages.warnings.isEmpty(), "a failed read tells why");
    require(!table.hasHeader() || table.header().size() == table.columnCount().value(),
            "every column has a name");
    int left = 100000;
    for (RowIndex row(0); row < RowIndex(table.rowCount()) && left > 0; ++row) {
        for (ColIndex column(0); column < table.columnCount() && left > 0; ++column, --left) {
            require(Utf8::encoded(table.cell(row, column)) == table.utf8(row, column),
                    "values are texts");
        }
    }
    return table.hasRows();
}

bool readTable(const Reader &reader, const QString &path, Mutation *mutation)
{
    const InputOptions options = someOptions(reader.type, mutation);
    int steps = mutation->oneIn(10) ? mutation->number(5) : INT_MAX;
    Messages messages;
    const Dataset table =
        readInput(options, path, &messages, [&steps](double) { return steps-- > 0; });
    return look(table, messages);
}

bool appendTable(const Reader &reader, const QString &path, Mutation *mutation)
{
    Dataset table;
    table.setHeader({QStringLiteral("Name"), QStringLiteral("Number")});
    table.resize(3, 2);
    table.setCell(RowIndex(1), ColIndex(1), QStringLiteral("12.5"));
    OutputOptions options;
    options.fileType = reader.type;
    options.path = path;
    options.writeMode = WriteMode::Append;
    options.overwriteSheet = mutation->oneIn(3);
    options.xmlRoot = QStringLiteral("root");
    options.xmlRow = QStringLiteral("record");
    const QByteArray before = contentOf(path);
    Messages messages;
    writeOutput(options, table, {}, &messages, {});
    require(!messages.failed || contentOf(path) == before, "a failed write leaves the file alone");
    return !messages.failed;
}

bool readDocument(const QString &path)
{
    static const TransformCatalogue catalogue;
    static ConsoleInterface user;
    GraphScene scene(&user);
    DocumentFile::Loaded loaded;
    QString error;
    if (!DocumentFile::load(path, catalogue, &scene, &loaded, &error)) {
        require(!error.isEmpty(), "a refused document tells why");
        return false;
    }
    const QString copy = path + QStringLiteral(".saved");
    require(DocumentFile::save(copy, scene, &error), "a loaded document can be saved");
    GraphScene again(&user);
    require(DocumentFile::load(copy, catalogue, &again, &loaded, &error), "and loaded again");
    require(again.nodeCount() == scene.nodeCount() &&
                again.connections().size() == scene.connections().size(),
            "with all that was in it");
    QFile::remove(copy);
    return true;
}

bool runOnce(const Reader &reader, quint32 seed, const QString &path)
{
    Mutation mutation(seed);
    makeInput(path, reader, &mutation);
    ::alarm(longestSeconds); // a reader that hangs is ended by the signal
    const bool usable = reader.isDocument ? readDocument(path)
                        : reader.appends  ? appendTable(reader, path, &mutation)
                                          : readTable(reader, path, &mutation);
    ::alarm(0);
    return usable;
}

Reader readerFor(const QString &name, const QString &samples)
{
    const QHash<QString, FileType> types = {{"delimited", FileType::DelimitedText},
                                            {"json", FileType::Json},
                                            {"xml", FileType::Xml},
                                            {"vcard", FileType::VCard},
                                            {"fixed", FileType::FixedWidth},
                                            {"plain", FileType::PlainText},
                                            {"xlsx", FileType::ExcelXlsx},
                                            {"xls", FileType::ExcelXls},
                                            {"html", FileType::Html},
                                            {"document", FileType::DelimitedText}};
    const QString format = name.section(QLatin1Char('-'), 0, 0);
    Reader reader;
    reader.name = name;
    reader.isDocument = name == QLatin1String("document");
    reader.appends = name.endsWith(QLatin1String("-append"));
    if (!types.contains(format)) {
        giveUp(QStringLiteral("There is no reader '%1'.").arg(name));
    }
    reader.type = types[format];
    reader.samples = samplesIn(samples, reader.type);
    if (reader.samples.isEmpty()) {
        giveUp(QStringLiteral("There are no samples in '%1'.").arg(samples));
    }
    return reader;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 6) {
        giveUp(QStringLiteral("Usage: fuzz READER SECONDS|once SEED SAMPLES FOLDER"));
    }
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    const Reader reader = readerFor(arguments[1], arguments[4]);
    const quint32 first = arguments[3].toUInt();
    const auto inputOf = [&](quint32 seed) {
        return QStringLiteral("%1/%2-%3.input")
            .arg(arguments[5], reader.name, QString::number(seed));
    };
    if (arguments[2] == QLatin1String("once")) {
        runOnce(reader, first, inputOf(first));
        return 0;
    }
    QElapsedTimer time;
    time.start();
    quint32 seed = first;
    quint32 usable = 0;
    qint64 slowest = 0;
    for (; time.elapsed() < arguments[2].toInt() * 1000; ++seed) {
        const qint64 start = time.elapsed();
        usable += runOnce(reader, seed, inputOf(seed)) ? 1 : 0;
        slowest = qMax(slowest, time.elapsed() - start);
        QFile::remove(inputOf(seed));
    }
    std::printf("%s: %u inputs from seed %u on, %u of them usable, the slowest took %lld ms\n",
                qPrintable(reader.name), seed - first, first, usable,
                static_cast<long long>(slowest));
    return 0;
}

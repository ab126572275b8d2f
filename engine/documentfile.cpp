#include "documentfile.h"

#include "connection.h"
#include "documentloader.h"
#include "documentxml.h"
#include "graphscene.h"
#include "inputnode.h"
#include "notenode.h"
#include "outputnode.h"
#include "safefile.h"
#include "texts.h"
#include "transform.h"
#include "transformnode.h"
#include "transformparameter.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QLocale>
#include <QSysInfo>
#include <new>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("DocumentFile", text);
}

// The text is parsed as a whole, in memory, at two bytes a character and more.
constexpr qint64 maximumFileSize = qint64(256) << 20;

bool readBytes(const QString &path, QByteArray *bytes, QString *error)
{
    QFile file(path);
    if (QFileInfo(path).isDir() || !file.open(QIODevice::ReadOnly)) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Can't open file '%1'.")).arg(path);
        return false;
    }
    if (file.size() == 0) {
        *error =
            translated(QT_TRANSLATE_NOOP("DocumentFile", "File '%1' is empty (size=0).")).arg(path);
        return false;
    }
    if (file.size() > maximumFileSize) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile",
                                              "File '%1' is too large for a document (size=%2)."))
                     .arg(path, QString::number(file.size()));
        return false;
    }
    *bytes = file.readAll();
    if (file.error() != QFileDevice::NoError) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Can't read file '%1'. %2"))
                     .arg(path, file.errorString());
        return false;
    }
    return true;
}

// Program, version, system and time, in characters that need little encoding.
QString savedBy()
{
    QString text =
        QStringLiteral("%1_v%2_on_%3_at_%4")
            .arg(Texts::productName(), Texts::productVersion(), QSysInfo::prettyProductName(),
                 QDateTime::currentDateTime().toString(QStringLiteral("yyyy-MM-dd_hh-mm-ss")));
    for (QChar &c : text) {
        if (c == QLatin1Char(' ') || c == QLatin1Char(':') || c == QLatin1Char('(') ||
            c == QLatin1Char(')') || c == QLatin1Char('.') || c == QLatin1Char('/')) {
            c = QLatin1Char('_');
        }
    }
    return text;
}

ItemRecord itemRecord(const Node &node)
{
    ItemRecord record;
    record.id = node.id();
    record.name = node.name();
    record.comment = node.comment();
    record.position = node.pos();
    return record;
}

template <class Record>
Record ioRecord(const ItemRecord &item, const QString &alias)
{
    Record record;
    static_cast<ItemRecord &>(record) = item;
    record.alias = alias;
    return record;
}

void addRecord(const Node &node, DocumentRecords *records)
{
    const ItemRecord item = itemRecord(node);
    switch (node.kind()) {
    case ItemKind::Input: {
        const auto &input = static_cast<const InputNode &>(node);
        auto record = ioRecord<InputRecord>(item, input.alias());
        record.options = input.options();
        records->inputs.append(record);
        break;
    }
    case ItemKind::Transform: {
        const Transform &transform = static_cast<const TransformNode &>(node).transform();
        TransformRecord record;
        static_cast<ItemRecord &>(record) = item;
        record.name = transform.typeName();
        record.parameters = transform.storedParameters();
        records->transforms.append(record);
        break;
    }
    case ItemKind::Output: {
        const auto &output = static_cast<const OutputNode &>(node);
        auto record = ioRecord<OutputRecord>(item, output.alias());
        record.options = output.options();
        records->outputs.append(record);
        break;
    }
    case ItemKind::Note: {
        const auto &note = static_cast<const NoteNode &>(node);
        NoteRecord record;
        static_cast<ItemRecord &>(record) = item;
        record.color = note.color();
        record.arrow = int(note.arrow());
        records->notes.append(record);
        break;
    }
    }
}

void addConnectionRecord(const Connection &connection, DocumentRecords *records)
{
    ConnectionRecord record;
    record.start = connection.from()->id();
    record.end = connection.to()->id();
    records->connections.append(record);
}

DocumentRecords recordsOf(const GraphScene &scene, const QString &path)
{
    const DocumentSettings &settings = scene.document();
    DocumentRecords records;
    records.meta.lastSavedBy = savedBy();
    records.meta.locale = QLocale().name();
    records.meta.id = settings.id;
    records.meta.snapToGrid = settings.snapToGrid;
    records.meta.notes = settings.notes;
    records.meta.path =
        path.isEmpty() ? path : QDir::toNativeSeparators(QFileInfo(path).absoluteFilePath());
    records.meta.autoRun = settings.autoRun;
    for (const Node *node : scene.nodesByAddition()) {
        addRecord(*node, &records);
    }
    for (const Connection *connection : scene.connections()) {
        addConnectionRecord(*connection, &records);
    }
    records.batchValues = settings.batchValues;
    records.batchLogging = settings.batchLogging;
    return records;
}

bool readRecords(const QString &path, DocumentRecords *records, QString *error)
{
    QByteArray bytes;
    return readBytes(path, &bytes, error) && DocumentXml::read(bytes, records, error);
}

bool fillScene(const QString &path, const DocumentRecords &records,
               const TransformCatalogue &catalogue, GraphScene *scene, DocumentFile::Loaded *loaded,
               QString *error)
{
    // A large document takes a while; the old one is still whole here.
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    if (!scene->clear()) {
        *error = translated(
            QT_TRANSLATE_NOOP("DocumentFile", "A document can't be opened during a run."));
        return false;
    }
    DocumentLoader loader(catalogue, scene);
    loader.load(records);
    scene->document().path = QFileInfo(path).absoluteFilePath();
    scene->setClean();
    loaded->version = records.meta.version;
    loaded->createdWithLaterVersion = records.meta.version > DocumentRecords::formatVersion;
    loaded->savedPath = records.meta.path;
    loaded->warnings = loader.warnings();
    return true;
}

} // namespace

bool DocumentFile::load(const QString &path, const TransformCatalogue &catalogue, GraphScene *scene,
                        Loaded *loaded, QString *error)
{
    try {
        DocumentRecords records;
        return readRecords(path, &records, error) &&
               fillScene(path, records, catalogue, scene, loaded, error);
    } catch (const std::bad_alloc &) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Not enough memory to open '%1'."))
                     .arg(path);
        return false;
    }
}

bool DocumentFile::save(const QString &path, const GraphScene &scene, QString *error)
{
    const QByteArray bytes = DocumentXml::written(recordsOf(scene, path));
    SafeFile file;
    if (!file.open(path, SafeFile::Start::Empty)) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Can't open file '%1' to write."))
                     .arg(path);
        return false;
    }
    if (!file.write(bytes.constData(), bytes.size())) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Can't save to file. %1"))
                     .arg(file.error());
        return false;
    }
    if (!file.commit()) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Can't commit to file. %1"))
                     .arg(file.error());
        return false;
    }
    return true;
}

bool DocumentFile::saveTo(QFileDevice *file, const QString &path, const GraphScene &scene,
                          QString *error)
{
    if (!file || !file->isOpen() || !file->isWritable()) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Can't access file '%1' to write."))
                     .arg(path);
        return false;
    }
    const QByteArray bytes = DocumentXml::written(recordsOf(scene, path));
    qint64 count = -1;
    if (file->isSequential() || (file->seek(0) && file->resize(0))) {
        count = file->write(bytes);
    }
    if (count < 0 || !file->flush()) {
        *error =
            translated(QT_TRANSLATE_NOOP("DocumentFile", "Can't write to file '%1'.")).arg(path);
        return false;
    }
    if (count < bytes.size()) {
        *error = translated(QT_TRANSLATE_NOOP("DocumentFile", "Failed to write to file '%1'."))
                     .arg(path);
        return false;
    }
    return true;
}

QByteArray DocumentFile::copyOf(const QList<Node *> &nodes, const GraphScene &scene)
{
    DocumentRecords records;
    records.meta.path = scene.document().path;
    for (Node *node : scene.nodesByAddition()) {
        if (nodes.contains(node)) {
            addRecord(*node, &records);
        }
    }
    for (const Connection *connection : scene.connections()) {
        if (nodes.contains(connection->from()) && nodes.contains(connection->to())) {
            addConnectionRecord(*connection, &records);
        }
    }
    return DocumentXml::written(records);
}

bool DocumentFile::loadCopy(const QByteArray &bytes, const TransformCatalogue &catalogue,
                            GraphScene *scene, QString *error)
{
    DocumentRecords records;
    if (!DocumentXml::read(bytes, &records, error)) {
        return false;
    }
    scene->clear();
    DocumentLoader(catalogue, scene).load(records);
    scene->document().path = records.meta.path;
    return true;
}

QString DocumentFile::laterVersionWarning()
{
    return translated(QT_TRANSLATE_NOOP(
        "DocumentFile",
        "This document was created with a later version of the software.\nSome information may not "
        "be readable and information may be lost if you overwrite the existing document.\nIt is "
        "recommended that you click 'Save' and save to a new document before continuing."));
}

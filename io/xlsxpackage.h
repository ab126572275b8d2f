#pragma once

#include "progress.h"

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <memory>
#include <string_view>
#include <unordered_map>

class ZipWriter;
struct zip;

/// When a package that unpacks to much more than its size is given up.
struct UnpackLimits
{
    /// Bytes, of all parts that were read; negative: the memory ceiling.
    qint64 most = -1;
    /// Beyond so many bytes it may be at most so many times the size of the file.
    qint64 suspicious = qint64(1) << 30;
    qint64 ratio = 500;
};

/// Receives the elements of a part. Names are without their prefixes; attributes are pairs of name
/// and value, ended by a null pointer.
class PartHandler
{
public:
    virtual ~PartHandler() = default;
    virtual void startElement(std::string_view name, const char *const *attributes) = 0;
    virtual void endElement(std::string_view name) = 0;
    virtual void characters(std::string_view text) = 0;

    /// Ends the reading after the present call, with an error or, without one, as if stopped.
    void stop(const QString &error = QString());
    bool isStopped() const { return m_stopped; }
    const QString &error() const { return m_error; }

private:
    bool m_stopped = false;
    QString m_error;
};

enum class PartEnd { Complete, Failed, Stopped };

/// The parts of a workbook that is a Zip archive of XML files.
class XlsxPackage
{
public:
    /// Null with an error when the file is no such archive.
    static std::unique_ptr<XlsxPackage> open(const QString &path, UnpackLimits limits,
                                             QString *error);
    ~XlsxPackage();

    /// Part names are without a leading slash, and upper and lower case are the same.
    bool has(const QString &part) const;
    /// Unpacked size as the archive states it; 0 for a missing part.
    qint64 statedSize(const QString &part) const;
    /// Hands over the elements of a part; `progress` gets the bytes of it that were unpacked.
    PartEnd parse(const QString &part, PartHandler *handler,
                  const std::function<bool(qint64)> &progress, QString *error);

    /// Takes the next bytes of a part; answers false to stop.
    using TakeBlock = std::function<bool(std::string_view block)>;
    /// Hands over the content of a part in blocks.
    PartEnd unpack(const QString &part, const TakeBlock &take, QString *error);
    /// The content of a part that is not large.
    bool read(const QString &part, QByteArray *content, QString *error);
    /// All parts as the archive names them.
    QStringList parts() const;
    /// Copies a part as it is packed.
    bool copyPacked(const QString &part, ZipWriter *zip, QString *error);

private:
    struct Archive;
    struct Entry
    {
        qint64 index;
        bool twice;
    };

    XlsxPackage(std::unique_ptr<Archive> archive, qint64 fileSize, UnpackLimits limits);
    const Entry *find(const QString &part) const;
    const Entry *findOnce(const QString &part, QString *error) const;
    bool countUnpacked(qint64 bytes, QString *error);

    std::unique_ptr<Archive> m_archive;
    std::unordered_map<std::string, Entry> m_entries;
    qint64 m_fileSize;
    UnpackLimits m_limits;
    qint64 m_unpacked = 0;
};

/// The value of an attribute, whatever its prefix; null when there is none.
const char *attributeValue(const char *const *attributes, std::string_view name);
/// "1", "true" and the like.
bool isTrueAttribute(const char *value);
/// A name without its prefix.
std::string_view localName(const char *name);

/// The part that holds the relationships of a part: "xl/_rels/workbook.xml.rels".
QString relationshipsPart(const QString &part);
/// The part that a relationship of a part in `folder` leads to.
QString relatedPart(const QString &folder, QString target);
/// "xl" for "xl/workbook.xml".
QString partFolder(const QString &part);

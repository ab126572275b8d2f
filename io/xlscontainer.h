#pragma once

#include <QByteArray>
#include <QString>
#include <functional>
#include <memory>
#include <string>

class SafeFile;

/// What is told of a file that is no whole workbook.
QString damagedWorkbookText();
QString encryptedWorkbookText();

/// A file of the XLS format: a compound file in which one stream has the workbook's records, beside
/// others that belong to it, such as its macros.
class XlsContainer
{
public:
    /// The container of a new workbook.
    XlsContainer();
    ~XlsContainer();
    XlsContainer(const XlsContainer &) = delete;
    XlsContainer &operator=(const XlsContainer &) = delete;

    /// Null with an error when the file has no workbook.
    static std::unique_ptr<XlsContainer> open(const QString &path, QString *error);

    /// Hands over the stream with the records.
    std::string takeRecords();
    /// The workbook is there once more, for programs that are older still.
    bool hasOlderCopy() const;

    /// Takes the next bytes of the records.
    using Put = std::function<bool(std::string_view bytes)>;
    /// Hands over all records, answers false when that has to stop.
    using PutRecords = std::function<bool(const Put &put)>;
    /// Writes the container with new records; everything else in it is carried over. Fails with an
    /// error, or without one when the file or the records are what failed.
    bool write(SafeFile *file, const PutRecords &putRecords, QString *error);

private:
    struct Handles;

    bool load(const QString &path, QString *error);
    bool extractRecords(QString *error);

    QByteArray m_file;
    std::unique_ptr<Handles> m_handles;
    std::string m_records;
};

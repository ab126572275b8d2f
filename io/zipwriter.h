#pragma once

#include <QByteArray>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

/// Writes a Zip archive from front to back, without ever going back, so that it can go straight to
/// a file that changes only as a whole. Sizes follow their data where they are not known before.
/// All dates are the first that a Zip can hold: the same content gives the same bytes.
class ZipWriter
{
public:
    /// Takes bytes; answers false when nothing more can be taken.
    using Sink = std::function<bool(const char *bytes, qint64 size)>;

    explicit ZipWriter(Sink sink);
    ~ZipWriter();
    ZipWriter(const ZipWriter &) = delete;
    ZipWriter &operator=(const ZipWriter &) = delete;

    /// An entry whose content comes with append() until endEntry(), and is compressed.
    void beginEntry(const QByteArray &name);
    void append(std::string_view content);
    void endEntry();
    void addEntry(const QByteArray &name, std::string_view content);

    /// An entry that is compressed already; its bytes come with appendRaw().
    void beginRaw(const QByteArray &name, bool deflated, quint32 crc, quint64 packedSize,
                  quint64 size);
    void appendRaw(std::string_view packed) { put(packed); }

    /// Writes the directory. Answers whether the sink took everything.
    bool finish();
    bool hasFailed() const { return m_failed; }

private:
    struct Entry;
    struct Deflater;

    void put(std::string_view bytes);
    void putHeader(const Entry &entry);
    void deflateMore(std::string_view content, bool isLast);

    Sink m_sink;
    std::vector<Entry> m_entries;
    std::unique_ptr<Deflater> m_deflater;
    quint64 m_at = 0;
    bool m_failed = false;
};

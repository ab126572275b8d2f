#include "spilledbytes.h"

#include <QDir>
#include <cerrno>

namespace {

constexpr size_t mostInMemory = size_t(4) << 20;
constexpr int pieceSize = 1 << 16;

} // namespace

bool SpilledBytes::append(std::string_view bytes)
{
    m_latest.append(bytes);
    return m_latest.size() < mostInMemory || spill();
}

QString SpilledBytes::temporaryFileText(int systemError)
{
    return tr("A temporary file in '%1' cannot be used (%2).")
        .arg(QDir::tempPath(), qt_error_string(systemError));
}

bool SpilledBytes::fail()
{
    m_error = temporaryFileText(errno);
    return false;
}

bool SpilledBytes::spill()
{
    errno = 0;
    if (!m_file) {
        m_file = std::make_unique<QTemporaryFile>();
        if (!m_file->open()) {
            return fail();
        }
    }
    if (m_file->write(m_latest.data(), qint64(m_latest.size())) != qint64(m_latest.size())) {
        return fail();
    }
    m_size += qint64(m_latest.size());
    m_latest.clear();
    return true;
}

bool SpilledBytes::forEachPiece(const std::function<bool(std::string_view)> &take)
{
    if (m_file) {
        if (!m_file->flush() || !m_file->seek(0)) {
            return fail();
        }
        std::string piece(size_t(pieceSize), '\0');
        for (qint64 at = 0; at < m_size;) {
            const qint64 count =
                m_file->read(piece.data(), std::min<qint64>(pieceSize, m_size - at));
            if (count <= 0) {
                return fail();
            }
            if (!take({piece.data(), size_t(count)})) {
                return false;
            }
            at += count;
        }
    }
    return m_latest.empty() || take(m_latest);
}

#pragma once

#include <QCoreApplication>
#include <QTemporaryFile>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

/// Bytes that are read from front to back once they are all there: in memory while they are few,
/// else in a temporary file.
class SpilledBytes
{
    Q_DECLARE_TR_FUNCTIONS(SpilledBytes)

public:
    /// Answers whether the bytes could be kept; see error().
    bool append(std::string_view bytes);
    qint64 size() const { return m_size + qint64(m_latest.size()); }
    /// Hands over all bytes, piece by piece. Answers false when they cannot be read or the receiver
    /// answers false.
    bool forEachPiece(const std::function<bool(std::string_view)> &take);
    /// Why a call answered false; empty when the receiver was it.
    const QString &error() const { return m_error; }

    /// Says that a temporary file failed, with the system's reason.
    static QString temporaryFileText(int systemError);

private:
    bool spill();
    bool fail();

    std::unique_ptr<QTemporaryFile> m_file;
    /// Bytes in the file.
    qint64 m_size = 0;
    std::string m_latest;
    QString m_error;
};

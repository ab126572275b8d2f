#pragma once

#include <QIODevice>
#include <QString>
#include <QTextCodec>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

/// Delivers the text of a file or of the clipboard as UTF-8, block by block. Text that is UTF-8
/// already is passed on as it stands; anything else is decoded. A byte-order mark, or a leading
/// U+FEFF, is never part of the text.
///
/// What could not be decoded is still in the bytes and is put right value by value with mend(), so
/// that the values concerned can be counted.
class TextSource
{
public:
    /// Stands for a byte that could not be decoded until its value is mended. UTF-8 never has it.
    static constexpr char damageMark = '\xff';

    /// Opens a file. `encoding` is "Automatic" (UTF-8, unless a byte-order mark says otherwise) or
    /// a codec's name; for an unknown one isEncodingKnown() answers false and UTF-8 is taken.
    /// Answers null and an error text when the file can't be opened.
    static std::unique_ptr<TextSource> fromFile(const QString &path, const QString &encoding,
                                                QString *error);
    static std::unique_ptr<TextSource> fromText(const QString &text);
    /// A device that is open already; for tests.
    static std::unique_ptr<TextSource> fromDevice(std::unique_ptr<QIODevice> device,
                                                  const QString &encoding);

    static bool isAutomatic(const QString &encoding);

    /// Reads at most `space` bytes (at least 16). Answers 0 at the end of the text, -1 after a
    /// failure.
    qint64 read(char *to, qint64 space);
    /// Why read() answered -1.
    QString errorText() const { return m_error; }
    /// False when the bytes of the last read() may hold something that could not be decoded.
    bool isClean() const { return m_clean; }
    /// The value with U+FFFD in place of what could not be decoded; nothing when it is sound.
    std::optional<std::string> mended(std::string_view value) const;

    /// The part of the file read so far, 0 to 1.
    double fraction() const;
    /// Bytes of the file, before decoding; 0 when that is not known.
    qint64 size() const { return m_size; }
    QString encodingName() const { return m_encodingName; }
    bool isEncodingKnown() const { return m_encodingKnown; }

private:
    TextSource() = default;
    void choose(const QString &encoding);
    void setCodec(QTextCodec *codec);
    qint64 readRaw(char *to, qint64 space);
    qint64 readUtf8(char *to, qint64 space);
    qint64 readDecoded(char *to, qint64 space);
    bool decodeBlock();
    void encode(QString text);
    QString decodedEnd();

    std::unique_ptr<QIODevice> m_device;
    /// True when the bytes of the device are passed on as they stand.
    bool m_raw = false;
    QTextCodec *m_codec = nullptr;
    size_t m_unitSize = 1;
    std::unique_ptr<QTextCodec::ConverterState> m_state;
    bool m_anyCharacter = false;
    QString m_encodingName = QStringLiteral("UTF-8");
    bool m_encodingKnown = true;
    /// Bytes read ahead: of the start of the file, or of a sequence cut by the end of a block.
    std::string m_ahead;
    /// Decoded bytes not yet delivered.
    std::string m_decoded;
    size_t m_delivered = 0;
    QChar m_halfPair;
    bool m_atEnd = false;
    bool m_clean = true;
    qint64 m_position = 0;
    qint64 m_size = 0;
    QString m_error;
};

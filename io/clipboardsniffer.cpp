#include "clipboardsniffer.h"

#include <QStringView>
#include <algorithm>

namespace {

constexpr int shortText = 100;
constexpr int sampleSize = 1000;
constexpr int spacesInGap = 3;

bool isEnclosed(QStringView text, char first, char last)
{
    return text.front() == QLatin1Char(first) && text.back() == QLatin1Char(last);
}

qint64 largestDelimiterCount(QStringView sample)
{
    qint64 largest = 0;
    for (const Delimiter delimiter : delimiters(false, false, false)) {
        const QChar character = delimiterCharacter(delimiter, QString());
        largest = std::max<qint64>(largest, std::count(sample.begin(), sample.end(), character));
    }
    return largest;
}

/// Runs of three or more spaces: what columns of fixed width look like.
int gapCount(QStringView sample)
{
    int gaps = 0;
    int run = 0;
    for (const QChar character : sample) {
        run = character == QLatin1Char(' ') ? run + 1 : 0;
        if (run == spacesInGap) {
            ++gaps;
        }
    }
    return gaps;
}

} // namespace

FileType sniffFileType(const QString &text)
{
    const QStringView trimmed = QStringView(text).trimmed();
    if (trimmed.isEmpty()) {
        return FileType::DelimitedText;
    }
    if (isEnclosed(trimmed, '[', ']') || isEnclosed(trimmed, '{', '}')) {
        return FileType::Json;
    }
    if (isEnclosed(trimmed, '<', '>')) {
        return FileType::Xml;
    }
    if (trimmed.startsWith(QLatin1String("BEGIN:VCARD")) &&
        trimmed.endsWith(QLatin1String("END:VCARD"))) {
        return FileType::VCard;
    }
    if (trimmed.size() <= shortText) {
        return FileType::DelimitedText;
    }
    const QStringView sample = trimmed.size() <= sampleSize
                                   ? trimmed
                                   : trimmed.mid((trimmed.size() - sampleSize) / 2, sampleSize);
    const qint64 delimiterCount = largestDelimiterCount(sample);
    const auto spaces = std::count(sample.begin(), sample.end(), QLatin1Char(' '));
    if (gapCount(sample) >= 2 && spaces >= 3 * delimiterCount) {
        return FileType::FixedWidth;
    }
    // Fewer than one delimiter in 40 characters is a text, not a table. In whole numbers.
    return sample.size() > 40 * delimiterCount ? FileType::PlainText : FileType::DelimitedText;
}

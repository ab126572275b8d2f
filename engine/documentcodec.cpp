#include "documentcodec.h"

#include <QByteArray>
#include <QUrl>
#include <cmath>

namespace {

constexpr QChar unitSeparator(0x1F);

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    if (c >= 'a' && c <= 'f') {
        return c - 'a' + 10;
    }
    return -1;
}

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

bool readCoordinate(const QString &text, double *value)
{
    // Far beyond any canvas, and small enough for all arithmetic on positions.
    constexpr double limit = 1e9;
    bool ok = false;
    const double read = DocumentCodec::decodedText(text).toDouble(&ok);
    if (!ok || !std::isfinite(read)) {
        return false;
    }
    *value = std::fmin(std::fmax(read, -limit), limit);
    return true;
}

} // namespace

QString DocumentCodec::encodedText(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString DocumentCodec::decodedText(const QString &text)
{
    if (!text.contains(QLatin1Char('%'))) {
        return text;
    }
    const QByteArray bytes = text.toUtf8();
    QByteArray decoded;
    decoded.reserve(bytes.size());
    for (int i = 0; i < bytes.size(); ++i) {
        const int high = bytes[i] == '%' && i + 2 < bytes.size() ? hexDigit(bytes[i + 1]) : -1;
        const int low = high >= 0 ? hexDigit(bytes[i + 2]) : -1;
        if (low >= 0) {
            decoded.append(char(high * 16 + low));
            i += 2;
        } else {
            decoded.append(bytes[i]);
        }
    }
    // The overload for arrays stops at a NUL byte.
    return QString::fromUtf8(decoded.constData(), decoded.size());
}

QString DocumentCodec::encodedList(const QStringList &list)
{
    QStringList encoded;
    encoded.reserve(list.size());
    for (const QString &item : list) {
        encoded.append(encodedText(item));
    }
    return encoded.join(unitSeparator);
}

QStringList DocumentCodec::decodedList(const QString &text)
{
    if (text.isEmpty()) {
        return {};
    }
    QStringList list = text.split(unitSeparator);
    for (QString &item : list) {
        item = decodedText(item);
    }
    return list;
}

QString DocumentCodec::encodedPosition(QPointF position)
{
    return encodedList({number(position.x()), number(position.y())});
}

QString DocumentCodec::encodedOldPosition(QPointF position)
{
    return number(position.x()) + QLatin1Char('^') + number(position.y());
}

bool DocumentCodec::decodePosition(const QString &text, QPointF *position)
{
    const QChar separator = text.contains(unitSeparator) ? unitSeparator : QChar(QLatin1Char('^'));
    QString plain = text;
    plain.replace(QLatin1String("%5E"), QLatin1String("^"), Qt::CaseInsensitive);
    const QStringList parts = plain.split(separator);
    double x = 0;
    double y = 0;
    if (parts.size() != 2 || !readCoordinate(parts[0], &x) || !readCoordinate(parts[1], &y)) {
        return false;
    }
    *position = QPointF(x, y);
    return true;
}

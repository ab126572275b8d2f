#include "listcodec.h"

#include <QByteArray>
#include <QUrl>

namespace {

int hexDigit(char c)
{
    if (c >= '0' && c <= '9') {
        return c - '0';
    }
    if (c >= 'A' && c <= 'F') {
        return c - 'A' + 10;
    }
    return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

} // namespace

QString ListCodec::encodedText(const QString &text)
{
    return QString::fromLatin1(QUrl::toPercentEncoding(text));
}

QString ListCodec::decodedText(const QString &text)
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

QString ListCodec::encoded(const QStringList &list)
{
    QStringList items;
    items.reserve(list.size());
    for (const QString &item : list) {
        items.append(encodedText(item));
    }
    return items.join(separator);
}

QStringList ListCodec::decoded(const QString &text)
{
    if (text.isEmpty()) {
        return {};
    }
    QStringList items = text.split(separator);
    for (QString &item : items) {
        item = decodedText(item);
    }
    return items;
}

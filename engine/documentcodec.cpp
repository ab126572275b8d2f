#include "documentcodec.h"

#include "listcodec.h"

#include <QStringList>
#include <cmath>

namespace {

QString number(double value)
{
    return QString::number(value, 'g', 6);
}

bool readCoordinate(const QString &text, double *value)
{
    // Far beyond any canvas, and small enough for all arithmetic on positions.
    constexpr double limit = 1e9;
    bool ok = false;
    const double read = ListCodec::decodedText(text).toDouble(&ok);
    if (!ok || !std::isfinite(read)) {
        return false;
    }
    *value = std::fmin(std::fmax(read, -limit), limit);
    return true;
}

} // namespace

QString DocumentCodec::encodedPosition(QPointF position)
{
    return ListCodec::encoded({number(position.x()), number(position.y())});
}

QString DocumentCodec::encodedOldPosition(QPointF position)
{
    return number(position.x()) + QLatin1Char('^') + number(position.y());
}

bool DocumentCodec::decodePosition(const QString &text, QPointF *position)
{
    const QChar separator =
        text.contains(ListCodec::separator) ? ListCodec::separator : QChar(QLatin1Char('^'));
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

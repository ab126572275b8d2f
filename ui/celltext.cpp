#include "celltext.h"

#include "utf8.h"

#include <QFontMetrics>
#include <QPainter>
#include <QTextLayout>

namespace {

const QChar lineBreakMark(0x21B5);
const QChar tabMark(0x2192);
const QChar blankMark(0x00B7);
const QChar ellipsis(0x2026);

/// At least the first `count` UTF-16 units of a value, if it has so many.
std::string_view startOf(std::string_view value, int count)
{
    size_t end = std::min(value.size(), size_t(count) * 4);
    while (end < value.size() && end > 0 && (uchar(value[end]) & 0xC0) == 0x80) {
        --end;
    }
    return value.substr(0, end);
}

bool isLineBreak(QChar c)
{
    return c == QLatin1Char('\n') || c == QLatin1Char('\r') || c == QChar::LineSeparator ||
           c == QChar::ParagraphSeparator;
}

bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QChar::Nbsp;
}

} // namespace

QString firstCharacters(std::string_view value, int count)
{
    QString text = Utf8::decoded(startOf(value, count));
    if (text.size() > count) {
        text.truncate(text.at(count - 1).isHighSurrogate() ? count - 1 : count);
        text.append(ellipsis);
    } else if (startOf(value, count).size() < value.size()) {
        text.append(ellipsis);
    }
    return text;
}

CellText::CellText(std::string_view value, int width, bool showBlanks)
{
    // No visible character is narrower than two pixels.
    const int limit = qBound(8, width / 2, longest);
    m_text = Utf8::decoded(startOf(value, limit));
    m_isCut = startOf(value, limit).size() < value.size() || m_text.size() > limit;
    if (m_text.size() > limit) {
        m_text.truncate(m_text.at(limit - 1).isHighSurrogate() ? limit - 1 : limit);
    }
    replaceMarks(showBlanks);
    if (m_isCut) {
        m_text.append(ellipsis);
    }
}

void CellText::replaceMarks(bool showBlanks)
{
    m_text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    for (int i = 0; i < m_text.size(); ++i) {
        const QChar c = m_text.at(i);
        if (isLineBreak(c)) {
            m_hasLineBreaks = true;
            m_text[i] = lineBreakMark;
            m_marks.append(i);
        } else if (showBlanks && (isBlank(c) || c == QLatin1Char('\t'))) {
            m_text[i] = isBlank(c) ? blankMark : tabMark;
            m_marks.append(i);
        } else if (c.unicode() < 0x20) {
            m_text[i] = QLatin1Char(' ');
        }
    }
}

bool CellText::isElidedAt(const QFontMetrics &metrics, int width) const
{
    return m_isCut || metrics.horizontalAdvance(m_text) > width;
}

void CellText::draw(QPainter *painter, const QRect &rect, bool rightAligned,
                    const QColor &markColor) const
{
    const QFontMetrics metrics = painter->fontMetrics();
    const bool fits = metrics.horizontalAdvance(m_text) <= rect.width();
    const QString elided = fits ? m_text : metrics.elidedText(m_text, Qt::ElideRight, rect.width());
    const bool isMarked = std::any_of(m_marks.begin(), m_marks.end(),
                                      [&elided](int mark) { return mark < elided.size(); });
    if (isMarked) {
        drawMarked(painter, rect, elided, rightAligned, markColor);
        return;
    }
    const int side = int(rightAligned ? Qt::AlignRight : Qt::AlignLeft);
    painter->drawText(rect, side | int(Qt::AlignVCenter) | int(Qt::TextSingleLine), elided);
}

void CellText::drawMarked(QPainter *painter, const QRect &rect, const QString &elided,
                          bool rightAligned, const QColor &markColor) const
{
    QVector<QTextLayout::FormatRange> formats;
    for (const int mark : m_marks) {
        if (mark < elided.size() && elided.at(mark) != ellipsis) {
            QTextLayout::FormatRange range;
            range.start = mark;
            range.length = 1;
            range.format.setForeground(markColor);
            formats.append(range);
        }
    }
    QTextLayout layout(elided, painter->font());
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    layout.setTextOption(option);
    layout.setFormats(formats);
    layout.beginLayout();
    QTextLine line = layout.createLine();
    layout.endLayout();
    const qreal x = rightAligned ? rect.right() + 1 - line.naturalTextWidth() : qreal(rect.left());
    layout.draw(painter, QPointF(x, rect.top() + (rect.height() - line.height()) / 2));
}

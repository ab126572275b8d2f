#pragma once

#include <QColor>
#include <QRect>
#include <QString>
#include <QVector>
#include <string_view>

class QFontMetrics;
class QPainter;

/// How a cell's value is shown in one line: line breaks as a small arrow, blanks as dots on
/// request. Of a long value only the start is looked at, so that showing it costs no more than
/// showing a short one.
class CellText
{
public:
    /// Longer values are elided whatever the width.
    static constexpr int longest = 1000;

    CellText(std::string_view value, int width, bool showBlanks);

    const QString &text() const { return m_text; }
    bool isElidedAt(const QFontMetrics &metrics, int width) const;
    bool hasLineBreaks() const { return m_hasLineBreaks; }
    /// Draws the text with the pen of the painter and what stands for other characters in
    /// `markColor`.
    void draw(QPainter *painter, const QRect &rect, bool rightAligned,
              const QColor &markColor) const;

private:
    void replaceMarks(bool showBlanks);
    void drawMarked(QPainter *painter, const QRect &rect, const QString &elided, bool rightAligned,
                    const QColor &markColor) const;

    QString m_text;
    QVector<int> m_marks;
    bool m_isCut = false;
    bool m_hasLineBreaks = false;
};

/// The first characters of a value, and "…" when there are more.
QString firstCharacters(std::string_view value, int count);

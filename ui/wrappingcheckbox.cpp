#include "wrappingcheckbox.h"

#include <QEvent>
#include <QStyle>

namespace {

constexpr int leastWidth = 120;

/// Line ends in the place of blanks, so that lines fit where they can.
QString broken(const QString &text, const QFontMetrics &metrics, int width)
{
    QString result;
    QString line;
    const QStringList words = text.split(QLatin1Char(' '));
    for (const QString &word : words) {
        const QString longer = line.isEmpty() ? word : line + QLatin1Char(' ') + word;
        if (!line.isEmpty() && metrics.horizontalAdvance(longer) > width) {
            result += line + QLatin1Char('\n');
            line = word;
        } else {
            line = longer;
        }
    }
    // A single "&" would mark a key.
    result += line;
    return result.replace(QLatin1Char('&'), QStringLiteral("&&"));
}

} // namespace

WrappingCheckBox::WrappingCheckBox(QWidget *parent)
    : QCheckBox(parent)
{
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
}

void WrappingCheckBox::setWrappedText(const QString &text)
{
    m_text = text;
    wrap();
    updateGeometry();
}

QString WrappingCheckBox::wrapped(int width) const
{
    const int around = style()->pixelMetric(QStyle::PM_IndicatorWidth) +
                       style()->pixelMetric(QStyle::PM_CheckBoxLabelSpacing) + 4;
    return broken(m_text, fontMetrics(), width - around);
}

void WrappingCheckBox::wrap()
{
    setText(wrapped(width()));
}

int WrappingCheckBox::heightForWidth(int width) const
{
    const int lines = wrapped(width).count(QLatin1Char('\n'));
    const int shown = text().count(QLatin1Char('\n'));
    return QCheckBox::sizeHint().height() + (lines - shown) * fontMetrics().lineSpacing();
}

QSize WrappingCheckBox::sizeHint() const
{
    return {leastWidth, QCheckBox::sizeHint().height()};
}

QSize WrappingCheckBox::minimumSizeHint() const
{
    return sizeHint();
}

void WrappingCheckBox::resizeEvent(QResizeEvent *event)
{
    QCheckBox::resizeEvent(event);
    wrap();
}

void WrappingCheckBox::changeEvent(QEvent *event)
{
    QCheckBox::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        wrap();
    }
}

#include "windowstyle.h"

#include "theme.h"

#include <QPainter>
#include <QStyleOptionSlider>

namespace {

constexpr int barExtent = 14;
constexpr int shortestHandle = 28;
constexpr int gap = 3;

/// Where the handle lies along the bar, as if there were no arrow buttons.
QRect handleRect(const QStyleOptionSlider &bar)
{
    const bool isHorizontal = bar.orientation == Qt::Horizontal;
    const int length = isHorizontal ? bar.rect.width() : bar.rect.height();
    const qint64 range = qint64(bar.maximum) - bar.minimum;
    int size = length;
    if (range > 0) {
        size = int(qint64(bar.pageStep) * length / (range + bar.pageStep));
        size = qMin(qMax(size, shortestHandle), length);
    }
    const int at = QStyle::sliderPositionFromValue(bar.minimum, bar.maximum, bar.sliderPosition,
                                                   length - size, bar.upsideDown);
    return isHorizontal ? QRect(at, 0, size, bar.rect.height())
                        : QRect(0, at, bar.rect.width(), size);
}

} // namespace

void WindowStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                     QPainter *painter, const QWidget *widget) const
{
    const auto *const bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || !bar) {
        ThemeStyle::drawComplexControl(control, option, painter, widget);
        return;
    }
    const Theme &theme = Theme::current();
    painter->save();
    painter->fillRect(bar->rect, theme.window);
    if (bar->maximum > bar->minimum) {
        const bool isHeld = (bar->activeSubControls & SC_ScrollBarSlider) != 0 &&
                            (bar->state & (State_Sunken | State_MouseOver)) != 0;
        QColor color = theme.secondaryText;
        color.setAlphaF(isHeld ? 0.9 : 0.6);
        const QRect handle = handleRect(*bar).adjusted(gap, gap, -gap, -gap);
        const double radius = qMin(handle.width(), handle.height()) / 2.0;
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(color);
        painter->drawRoundedRect(handle, radius, radius);
    }
    painter->restore();
}

QRect WindowStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option,
                                  SubControl subControl, const QWidget *widget) const
{
    const auto *const bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || !bar) {
        return ThemeStyle::subControlRect(control, option, subControl, widget);
    }
    const QRect handle = handleRect(*bar);
    const bool isHorizontal = bar->orientation == Qt::Horizontal;
    const QRect whole(QPoint(0, 0), bar->rect.size());
    switch (subControl) {
    case SC_ScrollBarSlider:
        return handle;
    case SC_ScrollBarGroove:
        return whole;
    case SC_ScrollBarSubPage:
        return isHorizontal ? QRect(0, 0, handle.left(), whole.height())
                            : QRect(0, 0, whole.width(), handle.top());
    case SC_ScrollBarAddPage:
        return isHorizontal
                   ? QRect(handle.right() + 1, 0, whole.right() - handle.right(), whole.height())
                   : QRect(0, handle.bottom() + 1, whole.width(), whole.bottom() - handle.bottom());
    default:
        return {};
    }
}

int WindowStyle::pixelMetric(PixelMetric metric, const QStyleOption *option,
                             const QWidget *widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return barExtent;
    case PM_ScrollBarSliderMin:
        return shortestHandle;
    default:
        return ThemeStyle::pixelMetric(metric, option, widget);
    }
}

#include "themestyle.h"

#include "theme.h"

#include <QPainter>
#include <QPlainTextEdit>
#include <QStyleOption>

namespace {

/// Fusion makes its outlines from the window's colour, darker by this factor.
constexpr int outlineFactor = 140;
/// And those of check boxes lighter again.
constexpr int checkFactor = 110;

QPalette withOutline(QPalette palette, const QColor &outline)
{
    palette.setColor(QPalette::Window, outline.lighter(outlineFactor));
    return palette;
}

bool isCheck(QStyle::PrimitiveElement element)
{
    return element == QStyle::PE_IndicatorCheckBox ||
           element == QStyle::PE_IndicatorItemViewItemCheck ||
           element == QStyle::PE_IndicatorRadioButton;
}

} // namespace

ThemeStyle::ThemeStyle()
    : QProxyStyle(QStringLiteral("Fusion"))
{
}

void ThemeStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option,
                               QPainter *painter, const QWidget *widget) const
{
    const QColor outline = Theme::current().fieldOutline;
    if (isCheck(element)) {
        // All that Fusion looks at is in the base class, but it casts.
        QStyleOptionButton copy;
        static_cast<QStyleOption &>(copy) = *option;
        copy.palette = withOutline(option->palette, outline.darker(checkFactor));
        QProxyStyle::drawPrimitive(element, &copy, painter, widget);
        return;
    }
    const auto *const frame = qstyleoption_cast<const QStyleOptionFrame *>(option);
    const bool isTextBox = element == PE_Frame && qobject_cast<const QPlainTextEdit *>(widget);
    if ((element == PE_FrameLineEdit || isTextBox) && frame) {
        QStyleOptionFrame copy(*frame);
        copy.palette = withOutline(option->palette, outline);
        QProxyStyle::drawPrimitive(element, &copy, painter, widget);
        return;
    }
    QProxyStyle::drawPrimitive(element, option, painter, widget);
}

void ThemeStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option,
                                    QPainter *painter, const QWidget *widget) const
{
    const QColor outline = Theme::current().fieldOutline;
    if (const auto *const spin = qstyleoption_cast<const QStyleOptionSpinBox *>(option)) {
        QStyleOptionSpinBox copy(*spin);
        copy.palette = withOutline(option->palette, outline);
        QProxyStyle::drawComplexControl(control, &copy, painter, widget);
    } else if (const auto *const box = qstyleoption_cast<const QStyleOptionComboBox *>(option)) {
        QStyleOptionComboBox copy(*box);
        copy.palette = withOutline(option->palette, outline);
        QProxyStyle::drawComplexControl(control, &copy, painter, widget);
    } else {
        QProxyStyle::drawComplexControl(control, option, painter, widget);
    }
}

QPixmap ThemeStyle::generatedIconPixmap(QIcon::Mode mode, const QPixmap &pixmap,
                                        const QStyleOption *option) const
{
    constexpr double disabledOpacity = 0.35;
    if (mode != QIcon::Disabled) {
        return QProxyStyle::generatedIconPixmap(mode, pixmap, option);
    }
    QPixmap faint(pixmap.size());
    faint.setDevicePixelRatio(pixmap.devicePixelRatio());
    faint.fill(Qt::transparent);
    QPainter painter(&faint);
    painter.setOpacity(disabledOpacity);
    painter.drawPixmap(0, 0, pixmap);
    return faint;
}

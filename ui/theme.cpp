#include "theme.h"

#include "node.h"
#include "transformcategory.h"
#include "windowstyle.h"

#include <QApplication>
#include <QPalette>
#include <QStyle>
#include <cmath>

namespace {

const Theme *currentTheme = nullptr;

QColor rgb(QRgb value)
{
    return QColor(value);
}

Theme makeLight()
{
    Theme theme;
    theme.window = rgb(0xf6f7f9);
    theme.canvas = rgb(0xfbfcfd);
    theme.card = rgb(0xffffff);
    theme.text = rgb(0x1d2025);
    theme.secondaryText = rgb(0x59616b);
    theme.border = rgb(0xc9ced6);
    theme.fieldOutline = rgb(0x848b94);
    theme.grid = rgb(0xe6e9ed);
    theme.accent = rgb(0x2563c9);
    theme.ok = rgb(0x1b7f3b);
    theme.warning = rgb(0x9a6200);
    theme.error = rgb(0xc2261d);
    theme.input = rgb(0x0f7b6c);
    theme.output = rgb(0xb4530a);
    theme.note = rgb(0x7a6600);
    theme.merge = rgb(0x6b4fc9);
    theme.column = rgb(0x2563c9);
    theme.row = rgb(0x0e7490);
    theme.format = rgb(0xa3348c);
    theme.analysis = rgb(0x4d7c0f);
    theme.other = rgb(0x59616b);
    return theme;
}

Theme makeDark()
{
    Theme theme;
    theme.isDark = true;
    theme.window = rgb(0x1f2226);
    theme.canvas = rgb(0x191b1f);
    theme.card = rgb(0x2a2e33);
    theme.text = rgb(0xe8eaed);
    theme.secondaryText = rgb(0xa4abb5);
    theme.border = rgb(0x4a5058);
    theme.fieldOutline = rgb(0x7a828c);
    theme.grid = rgb(0x24272b);
    theme.accent = rgb(0x6ea0f5);
    theme.ok = rgb(0x5cc27a);
    theme.warning = rgb(0xe0a83a);
    theme.error = rgb(0xf2786f);
    theme.input = rgb(0x4cc2b0);
    theme.output = rgb(0xf0964b);
    theme.note = rgb(0xd9c04a);
    theme.merge = rgb(0xa995f2);
    theme.column = rgb(0x6ea0f5);
    theme.row = rgb(0x4bb8d3);
    theme.format = rgb(0xe08bcf);
    theme.analysis = rgb(0xa3cb5c);
    theme.other = rgb(0xa4abb5);
    return theme;
}

QPalette paletteOf(const Theme &theme)
{
    QPalette palette;
    palette.setColor(QPalette::Window, theme.window);
    palette.setColor(QPalette::WindowText, theme.text);
    palette.setColor(QPalette::Base, theme.card);
    palette.setColor(QPalette::AlternateBase, theme.isDark ? theme.window : theme.canvas);
    palette.setColor(QPalette::Text, theme.text);
    palette.setColor(QPalette::PlaceholderText, theme.secondaryText);
    palette.setColor(QPalette::Button, theme.isDark ? rgb(0x32373d) : rgb(0xf0f2f5));
    palette.setColor(QPalette::ButtonText, theme.text);
    palette.setColor(QPalette::BrightText, theme.error);
    palette.setColor(QPalette::ToolTipBase, theme.card);
    palette.setColor(QPalette::ToolTipText, theme.text);
    palette.setColor(QPalette::Link, theme.accent);
    palette.setColor(QPalette::LinkVisited, theme.merge);
    palette.setColor(QPalette::Highlight, theme.accent);
    palette.setColor(QPalette::HighlightedText, Theme::textOn(theme.accent));
    // Fusion draws frames and bevels with these.
    palette.setColor(QPalette::Light, theme.isDark ? rgb(0x3c4148) : rgb(0xffffff));
    palette.setColor(QPalette::Midlight, theme.isDark ? rgb(0x353a40) : rgb(0xf0f2f5));
    palette.setColor(QPalette::Mid, theme.border);
    palette.setColor(QPalette::Dark, theme.isDark ? rgb(0x14161a) : rgb(0xaeb5bf));
    palette.setColor(QPalette::Shadow, rgb(0x000000));

    const QColor faint = theme.isDark ? rgb(0x767d86) : rgb(0x8d949d);
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, faint);
    }
    palette.setColor(QPalette::Disabled, QPalette::Highlight, theme.border);
    palette.setColor(QPalette::Disabled, QPalette::HighlightedText, theme.text);
    return palette;
}

bool isDesktopDark()
{
    static const bool isDark =
        QApplication::style()->standardPalette().color(QPalette::Window).lightness() < 128 ||
        QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
    return isDark;
}

/// Contrast to black and to white is equal at this luminance.
double luminanceOf(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

QFont scaled(const QFont &base, double factor)
{
    QFont font = base;
    if (base.pointSizeF() > 0) {
        font.setPointSizeF(base.pointSizeF() * factor);
    } else {
        font.setPixelSize(qMax(1, qRound(base.pixelSize() * factor)));
    }
    return font;
}

} // namespace

const Theme &Theme::light()
{
    static const Theme theme = makeLight();
    return theme;
}

const Theme &Theme::dark()
{
    static const Theme theme = makeDark();
    return theme;
}

const Theme &Theme::current()
{
    return currentTheme ? *currentTheme : light();
}

QColor Theme::kindColor(ItemKind kind) const
{
    switch (kind) {
    case ItemKind::Input:
        return input;
    case ItemKind::Output:
        return output;
    case ItemKind::Note:
        return note;
    case ItemKind::Transform:
        break;
    }
    return other;
}

QColor Theme::categoryColor(int category) const
{
    switch (TransformCategory(category)) {
    case TransformCategory::Merge:
        return merge;
    case TransformCategory::Column:
        return column;
    case TransformCategory::Row:
        return row;
    case TransformCategory::Format:
        return format;
    case TransformCategory::Analysis:
        return analysis;
    case TransformCategory::Other:
        break;
    }
    return other;
}

QColor Theme::statusColor(ItemStatus status) const
{
    switch (status) {
    case ItemStatus::UpToDate:
        return ok;
    case ItemStatus::Error:
        return error;
    case ItemStatus::Updating:
        return accent;
    case ItemStatus::NeedsUpdating:
        break;
    }
    return secondaryText;
}

QColor Theme::textOn(const QColor &background)
{
    return luminanceOf(background) > 0.179 ? Qt::black : Qt::white;
}

QFont Theme::titleFont(const QFont &base)
{
    QFont font = scaled(base, 1.15);
    font.setBold(true);
    return font;
}

QFont Theme::hintFont(const QFont &base)
{
    return scaled(base, 0.9);
}

void applyTheme(QApplication *application, ThemeChoice choice)
{
    const bool isDark =
        choice == ThemeChoice::Dark || (choice == ThemeChoice::System && isDesktopDark());
    currentTheme = isDark ? &Theme::dark() : &Theme::light();
    application->setStyle(new WindowStyle);
    application->setPalette(paletteOf(*currentTheme));
}

#pragma once

#include <QColor>
#include <QFont>

class QApplication;
class QPalette;
class Transform;
enum class ItemKind;
enum class ItemStatus : qint32;

/// Which colours the user wants; stored in the preferences.
enum class ThemeChoice : qint32 { System = 0, Light = 1, Dark = 2 };

/// The colours of the window. Every text colour has a contrast of at least 4.5 to 1 on its
/// background, every shape 3 to 1.
struct Theme
{
    bool isDark = false;
    QColor window;
    QColor canvas;
    QColor card;
    QColor text;
    QColor secondaryText;
    QColor border;
    QColor fieldOutline;
    QColor grid;
    QColor accent;
    QColor ok;
    QColor warning;
    QColor error;
    QColor input;
    QColor output;
    QColor note;
    QColor merge;
    QColor column;
    QColor row;
    QColor format;
    QColor analysis;
    QColor other;

    static const Theme &light();
    static const Theme &dark();
    /// The one in use since the last applyTheme(); light before.
    static const Theme &current();

    QColor kindColor(ItemKind kind) const;
    /// `category` is that of a transform, 1 to 6.
    QColor categoryColor(int category) const;
    QColor statusColor(ItemStatus status) const;
    /// Black or white, whichever is easier to read on the colour.
    static QColor textOn(const QColor &background);

    /// One step larger and bold.
    static QFont titleFont(const QFont &base);
    /// One step smaller.
    static QFont hintFont(const QFont &base);
};

/// Gives the application its style and palette. System follows the desktop's palette as it was at
/// the start of the program. Open windows get the usual palette change events.
void applyTheme(QApplication *application, ThemeChoice choice);

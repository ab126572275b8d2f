#include "testsupport.h"
#include "theme.h"

#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QImage>
#include <QLineEdit>
#include <QPalette>
#include <QSpinBox>
#include <cmath>

namespace {

double luminanceOf(const QColor &color)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
}

double contrast(const QColor &a, const QColor &b)
{
    const double la = luminanceOf(a);
    const double lb = luminanceOf(b);
    return (qMax(la, lb) + 0.05) / (qMin(la, lb) + 0.05);
}

} // namespace

class TestTheme : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    /// The darkest or lightest pixel of a control's outline against the window.
    void outlinesCanBeSeen_data() { contrasts_data(); }
    void outlinesCanBeSeen()
    {
        QFETCH(bool, isDark);
        applyTheme(qApp, isDark ? ThemeChoice::Dark : ThemeChoice::Light);
        QCheckBox check;
        QLineEdit line;
        QSpinBox spin;
        QComboBox box;
        for (QWidget *const widget :
             {static_cast<QWidget *>(&check), static_cast<QWidget *>(&line),
              static_cast<QWidget *>(&spin), static_cast<QWidget *>(&box)}) {
            widget->resize(widget->sizeHint());
            const QImage image = widget->grab().toImage();
            double best = 0;
            for (int x = 0; x < 10; ++x) {
                best = qMax(
                    best, contrast(image.pixelColor(x, image.height() / 2), Theme::current().card));
            }
            QVERIFY2(best >= 3.0, qPrintable(QString("%1: %2").arg(
                                      widget->metaObject()->className(), QString::number(best))));
        }
        applyTheme(qApp, ThemeChoice::Light);
    }

    void contrasts_data()
    {
        QTest::addColumn<bool>("isDark");
        QTest::newRow("light") << false;
        QTest::newRow("dark") << true;
    }

    /// Texts need 4.5 to 1 on everything they stand on, shapes 3 to 1.
    void contrasts()
    {
        QFETCH(bool, isDark);
        const Theme &theme = isDark ? Theme::dark() : Theme::light();
        for (const QColor &background : {theme.window, theme.canvas, theme.card}) {
            for (const QColor &text : {theme.text, theme.secondaryText, theme.error, theme.warning,
                                       theme.ok, theme.accent}) {
                QVERIFY2(contrast(text, background) >= 4.5,
                         qPrintable(text.name() + " on " + background.name()));
            }
            for (const QColor &shape :
                 {theme.input, theme.output, theme.note, theme.merge, theme.column, theme.row,
                  theme.format, theme.analysis, theme.other}) {
                QVERIFY2(contrast(shape, background) >= 3.0,
                         qPrintable(shape.name() + " on " + background.name()));
            }
        }
        applyTheme(qApp, isDark ? ThemeChoice::Dark : ThemeChoice::Light);
        QCOMPARE(Theme::current().isDark, isDark);
        const QPalette palette = QApplication::palette();
        QVERIFY(contrast(palette.color(QPalette::HighlightedText),
                         palette.color(QPalette::Highlight)) >= 4.5);
        applyTheme(qApp, ThemeChoice::Light);
    }
};

TW_TEST_CLASS(TestTheme)
#include "tst_theme.moc"

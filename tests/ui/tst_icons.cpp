#include "icons.h"
#include "testsupport.h"
#include "transform.h"
#include "transformcatalogue.h"

#include <QDir>
#include <QImage>
#include <QSvgRenderer>

namespace {

constexpr int side = 16;

QImage rendered(const QString &name, const QColor &color)
{
    return Icons::colored(name, color)
        .pixmap(side, side)
        .toImage()
        .convertToFormat(QImage::Format_ARGB32);
}

/// How much is drawn, in whole pixels.
double ink(const QImage &image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            sum += qAlpha(image.pixel(x, y)) / 255.0;
        }
    }
    return sum;
}

/// How much of one picture is not in the other, in whole pixels.
double difference(const QImage &a, const QImage &b)
{
    double sum = 0;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            sum += qAbs(qAlpha(a.pixel(x, y)) - qAlpha(b.pixel(x, y))) / 255.0;
        }
    }
    return sum;
}

QStringList allPictures()
{
    QStringList names;
    for (const QString &file : QDir(":/images").entryList({"*.svg"}, QDir::Files, QDir::Name)) {
        names.append(file.chopped(4));
    }
    return names;
}

} // namespace

class TestIcons : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { Icons::prepare(); }

    void everyUseHasAPicture_data()
    {
        QTest::addColumn<QString>("name");
        const TransformCatalogue catalogue;
        for (const Transform *const type : catalogue.types()) {
            QTest::newRow(qPrintable(type->typeName()))
                << Icons::transformPicture(type->typeName());
        }
        for (const char *const name :
             {"input", "output", "note", "run", "run-all", "run-selected", "stop", "autorun",
              "close", "connect", "fit", "snap", "clipboard", "duplicate", "column-values",
              "status-ok", "status-outdated"}) {
            QTest::newRow(name) << QString(name);
        }
    }

    void everyUseHasAPicture()
    {
        QFETCH(QString, name);
        QVERIFY(QSvgRenderer(QString(":/images/%1.svg").arg(name)).isValid());
        QVERIFY(ink(rendered(name, Qt::black)) > side);
    }

    /// Only the one drawing colour is replaced; another would stay dark on a dark window.
    void noPictureHasAnotherColor()
    {
        for (const QString &name : allPictures()) {
            const QImage image = rendered(name, Qt::white);
            for (int y = 0; y < side; ++y) {
                for (int x = 0; x < side; ++x) {
                    const QRgb pixel = image.pixel(x, y);
                    QVERIFY2(qAlpha(pixel) == 0 || qGray(pixel) == 255, qPrintable(name));
                }
            }
        }
    }

    void noTwoPicturesAreAlike()
    {
        const QStringList names = allPictures();
        QList<QImage> images;
        for (const QString &name : names) {
            images.append(rendered(name, Qt::black));
        }
        for (int i = 0; i < names.size(); ++i) {
            for (int j = i + 1; j < names.size(); ++j) {
                const double different = difference(images.at(i), images.at(j));
                QVERIFY2(different > side, qPrintable(QString("%1 and %2 differ by %3")
                                                          .arg(names.at(i), names.at(j),
                                                               QString::number(different))));
            }
        }
    }
};

TW_TEST_CLASS(TestIcons)
#include "tst_icons.moc"

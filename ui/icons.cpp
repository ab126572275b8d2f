#include "icons.h"

#include "node.h"
#include "theme.h"
#include "transform.h"
#include "transformnode.h"

#include <QFile>
#include <QIconEngine>
#include <QPainter>
#include <QStandardPaths>
#include <QSvgRenderer>

static void initializeImages()
{
    Q_INIT_RESOURCE(images); // has to stand outside namespaces
}

namespace {

/// The colour in which the files are drawn; it stands for "the colour wanted".
const char drawnColor[] = "#59616B";

class ColoredPicture final : public QIconEngine
{
public:
    ColoredPicture(const QString &name, const QColor &color)
        : m_name(name)
        , m_color(color)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        QFile file(QStringLiteral(":/images/%1.svg").arg(m_name));
        if (!file.open(QIODevice::ReadOnly)) {
            return;
        }
        QByteArray picture = file.readAll();
        // A list shows what is selected on the accent colour.
        const QColor color =
            mode == QIcon::Selected ? Theme::textOn(Theme::current().accent) : m_color;
        picture.replace(drawnColor, color.name().toLatin1());
        QSvgRenderer renderer(picture);
        painter->save();
        if (mode == QIcon::Disabled) {
            painter->setOpacity(painter->opacity() * 0.4);
        }
        renderer.render(painter, rect);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(0, 0), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new ColoredPicture(*this); }

private:
    QString m_name;
    QColor m_color;
};

} // namespace

void Icons::prepare()
{
    initializeImages();
    // Not every platform looks where the desktops of this system keep their pictures.
    QStringList places = QIcon::themeSearchPaths();
    for (const QString &data :
         QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
        const QString icons = data + QLatin1String("/icons");
        if (!places.contains(icons)) {
            places.append(icons);
        }
    }
    QIcon::setThemeSearchPaths(places);
    followTheme();
}

void Icons::followTheme()
{
    QIcon::setThemeName(Theme::current().isDark ? QStringLiteral("breeze-dark")
                                                : QStringLiteral("breeze"));
}

QIcon Icons::action(const QString &name)
{
    const QIcon icon = QIcon::fromTheme(name);
    return icon.isNull() ? colored(name, Theme::current().text) : icon;
}

QIcon Icons::colored(const QString &name, const QColor &color)
{
    return QIcon(new ColoredPicture(name, color));
}

QString Icons::transformPicture(const QString &typeName)
{
    return typeName.toLower();
}

QIcon Icons::forTransform(const Transform &transform)
{
    return colored(transformPicture(transform.typeName()),
                   Theme::current().categoryColor(transform.category()));
}

QIcon Icons::forNode(const Node &node)
{
    const Theme &theme = Theme::current();
    switch (node.kind()) {
    case ItemKind::Input:
        return colored(QStringLiteral("input"), theme.input);
    case ItemKind::Output:
        return colored(QStringLiteral("output"), theme.output);
    case ItemKind::Note:
        return colored(QStringLiteral("note"), theme.note);
    case ItemKind::Transform:
        break;
    }
    return forTransform(static_cast<const TransformNode &>(node).transform());
}

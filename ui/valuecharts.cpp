#include "valuecharts.h"

#include "texts.h"
#include "theme.h"

#include <QCoreApplication>
#include <QGridLayout>
#include <QHelpEvent>
#include <QLabel>
#include <QLocale>
#include <QPainter>
#include <QToolTip>

namespace {

/// Blocks of the accent colour that text can stand on.
QColor softAccent()
{
    QColor color = Theme::current().accent;
    color.setAlphaF(Theme::current().isDark ? 0.34 : 0.22);
    return color;
}

} // namespace

QString shareText(double share)
{
    const QLocale locale;
    if (share > 0 && share < 0.001) {
        return QCoreApplication::translate("ColumnValues", "<%1 %")
            .arg(locale.toString(0.1, 'f', 1));
    }
    return QCoreApplication::translate("ColumnValues", "%1 %")
        .arg(locale.toString(share * 100, 'f', 1));
}

ElidedLabel::ElidedLabel(const QString &text, QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
    setText(text);
}

void ElidedLabel::setText(const QString &text)
{
    m_text = text;
    setAccessibleName(text);
    updateGeometry();
    update();
}

QSize ElidedLabel::sizeHint() const
{
    // The true width may lie between two pixels.
    return {fontMetrics().horizontalAdvance(m_text) + 2, fontMetrics().height()};
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 4, fontMetrics().height()};
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(rect(), int(Qt::AlignLeft) | int(Qt::AlignVCenter) | int(Qt::TextSingleLine),
                     fontMetrics().elidedText(m_text, Qt::ElideRight, width()));
}

ShareBar::ShareBar(double share, QWidget *parent)
    : QWidget(parent)
    , m_share(share)
{
    setMinimumWidth(40);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

void ShareBar::paintEvent(QPaintEvent *)
{
    const Theme &theme = Theme::current();
    QPainter painter(this);
    const QRect groove(0, height() / 2 - 3, width(), 6);
    painter.fillRect(groove, theme.grid);
    const int filled = qMax(m_share > 0 ? 2 : 0, int(m_share * groove.width()));
    painter.fillRect(QRect(groove.topLeft(), QSize(filled, groove.height())), theme.accent);
}

KindBars::KindBars(QWidget *parent)
    : QWidget(parent)
    , m_grid(new QGridLayout(this))
{
    m_grid->setContentsMargins(0, 0, 0, 0);
    m_grid->setHorizontalSpacing(8);
    m_grid->setVerticalSpacing(4);
    m_grid->setColumnStretch(1, 1);
}

void KindBars::setCounts(const KindCounts &counts)
{
    while (QLayoutItem *const item = m_grid->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    int line = 0;
    for (int i = 0; i < valueKindCount; ++i) {
        const qint64 count = counts.counts[size_t(i)];
        if (count == 0) {
            continue;
        }
        const double share = double(count) / double(counts.total());
        auto *const number = new QLabel(Texts::count(count), this);
        auto *const percent = new QLabel(shareText(share), this);
        number->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        percent->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        m_grid->addWidget(new QLabel(valueKindLabel(ValueKind(i)), this), line, 0);
        m_grid->addWidget(new ShareBar(share, this), line, 1);
        m_grid->addWidget(number, line, 2);
        m_grid->addWidget(percent, line, 3);
        ++line;
    }
}

Histogram::Histogram(QWidget *parent)
    : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void Histogram::setBins(const std::vector<qint64> &bins, const QString &from, const QString &to,
                        const QStringList &labels)
{
    m_bins = bins;
    m_from = from;
    m_to = to;
    m_labels = labels;
    setAccessibleName(tr("Distribution from %1 to %2").arg(from, to));
    setAccessibleDescription(labels.join(QLatin1String("; ")));
    setFixedHeight(fontMetrics().height() * 5 + 4);
    update();
}

QRect Histogram::barArea() const
{
    return rect().adjusted(0, 0, 0, -fontMetrics().height() - 4);
}

void Histogram::paintEvent(QPaintEvent *)
{
    if (m_bins.empty()) {
        return;
    }
    const Theme &theme = Theme::current();
    QPainter painter(this);
    const QRect area = barArea();
    const qint64 highest = qMax(qint64(1), *std::max_element(m_bins.begin(), m_bins.end()));
    const int count = int(m_bins.size());
    for (int i = 0; i < count; ++i) {
        const int from = area.width() * i / count;
        const int to = area.width() * (i + 1) / count;
        const double share = double(m_bins[size_t(i)]) / double(highest);
        const int height = m_bins[size_t(i)] > 0 ? qMax(2, int(share * area.height())) : 0;
        painter.fillRect(QRect(from, area.bottom() + 1 - height, to - from - 1, height),
                         theme.accent);
    }
    painter.setPen(theme.border);
    painter.drawLine(area.bottomLeft() + QPoint(0, 1), area.bottomRight() + QPoint(0, 1));
    painter.setPen(theme.secondaryText);
    const QRect texts(0, area.bottom() + 3, width(), fontMetrics().height());
    const int half = width() / 2 - 4;
    painter.drawText(texts, int(Qt::AlignLeft),
                     fontMetrics().elidedText(m_from, Qt::ElideRight, half));
    painter.drawText(texts, int(Qt::AlignRight),
                     fontMetrics().elidedText(m_to, Qt::ElideRight, half));
}

bool Histogram::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip || m_bins.empty()) {
        return QWidget::event(event);
    }
    const auto *const help = static_cast<QHelpEvent *>(event);
    const int bin = help->x() * int(m_bins.size()) / qMax(1, width());
    QToolTip::showText(help->globalPos(), m_labels.value(bin).toHtmlEscaped(), this);
    return true;
}

void ShareDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const
{
    QStyledItemDelegate::paint(painter, option, index);
    const QVariant data = index.data(Qt::UserRole);
    if (!data.isValid() || (option.state & QStyle::State_Selected) != 0) {
        return;
    }
    const double share = data.toDouble();
    const QRect area = option.rect.adjusted(2, 3, -2, -3);
    const int width = qMax(2, int(share * area.width()));
    painter->fillRect(QRect(area.topLeft(), QSize(width, area.height())), softAccent());
}

QSize ShareDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    return QStyledItemDelegate::sizeHint(option, index) + QSize(0, 4);
}

#pragma once

#include "valuekinds.h"

#include <QColor>
#include <QStyledItemDelegate>
#include <QWidget>
#include <vector>

class QGridLayout;

/// A label that gives up its end when there is too little room.
class ElidedLabel final : public QWidget
{
    Q_OBJECT

public:
    explicit ElidedLabel(const QString &text, QWidget *parent = nullptr);
    void setText(const QString &text);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_text;
};

/// A share between 0 and 1 as a bar.
class ShareBar final : public QWidget
{
    Q_OBJECT

public:
    explicit ShareBar(double share, QWidget *parent = nullptr);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    double m_share;
};

/// Kinds of value with their counts and shares, a line for each that occurs.
class KindBars final : public QWidget
{
    Q_OBJECT

public:
    explicit KindBars(QWidget *parent = nullptr);
    void setCounts(const KindCounts &counts);

private:
    QGridLayout *m_grid;
};

/// How many values lie in each part of a range.
class Histogram final : public QWidget
{
    Q_OBJECT

public:
    explicit Histogram(QWidget *parent = nullptr);
    /// `from` and `to` are the ends of the range as texts, `labels` what each part is.
    void setBins(const std::vector<qint64> &bins, const QString &from, const QString &to,
                 const QStringList &labels);

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    QRect barArea() const;

    std::vector<qint64> m_bins;
    QString m_from;
    QString m_to;
    QStringList m_labels;
};

/// Draws a share (Qt::UserRole, 0 to 1; none when it is not set) as a bar over the text of a cell.
class ShareDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

/// "12.5 %"; "<0.1 %" for a share that is not nothing.
QString shareText(double share);

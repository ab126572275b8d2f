#pragma once

#include "parametercolumns.h"

#include <QListWidget>

class QToolButton;

/// A list of columns, as high as they need up to a limit; with check boxes, or to be put in order.
class ColumnList final : public QListWidget
{
    Q_OBJECT

public:
    struct Item
    {
        ColumnRef column;
        Qt::CheckState state = Qt::Unchecked;
    };

    explicit ColumnList(QWidget *parent = nullptr);

    /// Shows check boxes unless the list is for ordering. Emits nothing; the current column and
    /// what is scrolled to stay when the columns are the same.
    void setItems(const ParameterColumns &columns, const QList<Item> &items);
    QList<Item> items() const;
    /// The user orders the list by dragging.
    void setOrdered();
    void filter(const QString &text);
    /// Of the columns that the filter shows.
    void checkShown(Qt::CheckState state);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

Q_SIGNALS:
    void dropped();

protected:
    void dropEvent(QDropEvent *event) override;

private:
    ParameterColumns m_columns;
    bool m_isOrdered = false;
};

/// A button with a picture and a tooltip, which is its accessible name too.
QToolButton *makeToolButton(const QString &icon, const QString &toolTip);
/// The same with a short text.
QToolButton *makeTextButton(const QString &text, const QString &toolTip);

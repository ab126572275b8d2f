#pragma once

#include <QStyledItemDelegate>

/// Edits the cells of a RowsModel: every key is stored at once, Escape brings the earlier text
/// back.
class RowsDelegate final : public QStyledItemDelegate
{
    Q_OBJECT

public:
    explicit RowsDelegate(QObject *parent);

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option,
                          const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *editor, QAbstractItemModel *model,
                      const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;

protected:
    bool eventFilter(QObject *object, QEvent *event) override;
};

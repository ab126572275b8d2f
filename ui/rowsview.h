#pragma once

#include <QTableView>

class RowsModel;

/// The table of a RowsTable: as high as its rows, its fields share the width, one click or Enter
/// edits a cell.
class RowsView final : public QTableView
{
    Q_OBJECT

public:
    explicit RowsView(RowsModel *model);

    void shareWidth();
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void fitRows();
    void editClicked(const QModelIndex &index);

    RowsModel *m_rows;
};

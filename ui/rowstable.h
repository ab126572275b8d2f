#pragma once

#include "rowsmodel.h"

#include <QWidget>

class QAction;
class QHBoxLayout;
class QToolButton;
class RowsView;

/// What the buttons below a table of rows say. "%1" stands for the keys. A button without a text is
/// not there.
struct RowsTexts
{
    QString name; ///< of the table, for screen readers
    QString add = {};
    QString remove = {};
    QString removeAll = {};
    QString up = {};
    QString down = {};
};

/// A small table of rows with buttons to add, remove and move them; as high as its rows, up to a
/// limit. Insert and Delete add and remove, Alt+Up and Alt+Down move, Enter edits a cell.
class RowsTable final : public QWidget
{
    Q_OBJECT

public:
    explicit RowsTable(const RowsTexts &texts, QWidget *parent = nullptr);

    RowsModel *model() const { return m_model; }
    /// What a new row holds; called with the row that is current, -1 for none.
    void setNewRow(const std::function<QStringList(int)> &newRow) { m_newRow = newRow; }
    void setFields(const QVector<RowField> &fields);
    QToolButton *addButton(const QString &icon, const QString &toolTip);
    void addButton(QToolButton *button);
    QWidget *view() const;
    int currentRow() const;
    void setCurrentRow(int row);
    /// In ascending order.
    QList<int> selectedRows() const;
    /// Hides the rows for which it answers false.
    void filter(const std::function<bool(int row)> &isShown);

Q_SIGNALS:
    /// By the user.
    void edited();
    void currentRowChanged(int row);

private:
    QToolButton *addAction(const QString &icon, const QString &toolTip, const QKeySequence &keys,
                           void (RowsTable::*slot)());
    void add();
    void remove();
    void removeAll();
    void moveUp() { move(-1); }
    void moveDown() { move(1); }
    void move(int by);
    void enableButtons();

    RowsModel *m_model;
    RowsView *m_view;
    QHBoxLayout *m_buttons;
    std::function<QStringList(int)> m_newRow;
    QAction *m_remove = nullptr;
    QAction *m_removeAll = nullptr;
    QAction *m_up = nullptr;
    QAction *m_down = nullptr;
    QAction *m_lastAction = nullptr;
};

#pragma once

#include "dataset.h"

#include <QStringList>
#include <QWidget>

class ColumnValues;
class DataTableModel;
class DataTableView;
class ElidedLabel;
class QLabel;
class QLineEdit;
class QSplitter;
class QToolButton;
class TableFind;
struct CellPlace;

/// The table of an item with its caption, a search, and the values of a column on request.
class DataPane : public QWidget
{
    Q_OBJECT

public:
    explicit DataPane(QWidget *parent = nullptr);

    /// Cells that differ from `input` are marked; it may be empty, and only counts with the same
    /// number of rows and columns. `emptyText` says why there are no rows.
    void showData(const Dataset &table, const Dataset &input, const QString &emptyText);
    /// Dims what is shown while a newer table is on its way.
    void setOutdated(bool outdated);
    void setDateFormats(const QStringList &patterns);
    void focusTable();
    void showFind();

Q_SIGNALS:
    void filterWanted(const QString &column, const QString &value);

protected:
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QWidget *makeToolBar();
    QWidget *makeNoteBar();
    void makeFindBox();
    void connectParts();
    QToolButton *makeButton(const QString &text, const QString &tip);
    void updateIcons();
    void updateCaption();
    void updateCaptionWidth();
    void updateNote();
    void updateFindState();
    void startFind();
    void findNext(bool forward);
    void showColumnValues(int column);

    DataTableModel *m_model;
    TableFind *m_find;
    DataTableView *m_view;
    ColumnValues *m_values = nullptr;
    QSplitter *m_splitter = nullptr;
    ElidedLabel *m_caption = nullptr;
    QLineEdit *m_findEdit = nullptr;
    QLabel *m_findState = nullptr;
    QToolButton *m_previous = nullptr;
    QToolButton *m_next = nullptr;
    QToolButton *m_copy = nullptr;
    QToolButton *m_blanks = nullptr;
    QWidget *m_noteBar = nullptr;
    QLabel *m_note = nullptr;
    QToolButton *m_noteButton = nullptr;
    QString m_passingNote;
    QString m_valuesColumn;
    bool m_wrapped = false;
};

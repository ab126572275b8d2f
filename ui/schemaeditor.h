#pragma once

#include <QDialog>
#include <QStringList>
#include <functional>

class QLabel;
class QPushButton;
class QTableWidget;

/// The columns that an input is expected to have: their names in order, and what fills a column
/// that is missing.
class SchemaEditor final : public QDialog
{
    Q_OBJECT

public:
    /// Answers the columns that the input has now; false when they are not to be had.
    using ColumnsOfInput = std::function<bool(QStringList *columns)>;

    explicit SchemaEditor(ColumnsOfInput columnsOfInput, QWidget *parent = nullptr);

    void setSchema(const QStringList &names, const QStringList &missingValues);
    QStringList names() const;
    QStringList missingValues() const;

    /// Refused while a name is blank.
    void accept() override;
    /// Asks what becomes of changes.
    void reject() override;

private:
    void addButtons(class QBoxLayout *layout);
    void import();
    void addRow();
    void removeRows();
    void moveRow(int by);
    void copy();
    void paste();
    void clear();
    void insert(int row, const QString &name, const QString &missingValue);
    int rowBelowSelection() const;
    QList<int> selectedRows() const;
    QString text(int row, int column) const;
    QString problem() const;
    void changed();
    void updateButtons();

    ColumnsOfInput m_columnsOfInput;
    QTableWidget *m_table;
    QLabel *m_problem;
    QPushButton *m_delete = nullptr;
    QPushButton *m_up = nullptr;
    QPushButton *m_down = nullptr;
    QPushButton *m_copy = nullptr;
    QPushButton *m_clear = nullptr;
};

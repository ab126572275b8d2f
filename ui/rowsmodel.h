#pragma once

#include "choicebox.h"

#include <QAbstractTableModel>
#include <QStringList>
#include <functional>

/// A column of a table of rows.
struct RowField
{
    enum class Kind {
        Text,
        Choice,
        /// A text with a check box before it. Checked cells hold "=" and the text, others nothing.
        CheckedText,
        /// Never edited; shown as RowsModel::setDisplay() says.
        Label
    };

    Kind kind = Kind::Text;
    QString title;
    QVector<Choice> choices = {};
    /// How the width is shared among the fields; 0: as narrow as the contents.
    int share = 1;
};

/// The rows that an option's value consists of, as stored texts. A row may have more texts than
/// there are fields. Only what the user does is told by edited().
class RowsModel final : public QAbstractTableModel
{
    Q_OBJECT

public:
    using Rows = QList<QStringList>;
    using Display = std::function<QString(const QStringList &cells, int row, int field)>;
    using IsUsed = std::function<bool(const QStringList &cells, int field)>;

    explicit RowsModel(QObject *parent = nullptr);

    void setFields(const QVector<RowField> &fields);
    const RowField &field(int index) const { return m_fields[index]; }
    void setRows(const Rows &rows);
    const Rows &rows() const { return m_rows; }
    /// The texts of labels, and of check-box cells that are not checked.
    void setDisplay(const Display &display) { m_display = display; }
    /// Which cells mean something; the others are empty and cannot be edited.
    void setIsUsed(const IsUsed &isUsed) { m_isUsed = isUsed; }
    /// What is wrong with a cell; empty: nothing.
    void setProblem(const Display &problem) { m_problem = problem; }
    /// The first thing that is wrong.
    QString firstProblem() const;

    void insertRowAt(int row, const QStringList &cells);
    void removeRowsAt(const QList<int> &rows);
    /// Moves rows one place up (-1) or down (1); answers where they are then.
    QList<int> moveRowsAt(const QList<int> &rows, int by);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

Q_SIGNALS:
    void edited();

private:
    QString cell(int row, int field) const { return m_rows[row].value(field); }
    bool isUsed(int row, int field) const { return !m_isUsed || m_isUsed(m_rows[row], field); }
    QString problem(int row, int field) const;
    QString shown(int row, int field) const;
    const Choice *choice(int row, int field) const;
    void store(int row, int field, const QString &text);

    QVector<RowField> m_fields;
    Rows m_rows;
    Display m_display;
    IsUsed m_isUsed;
    Display m_problem;
};

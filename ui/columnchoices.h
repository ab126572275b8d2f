#pragma once

#include <QStringList>
#include <QVector>
#include <QWidget>

class ColumnChoiceModel;
class QTableView;

/// A small table of columns with a choice for each. A choice made while several rows are selected
/// is made for all of them.
class ColumnChoices final : public QWidget
{
    Q_OBJECT

public:
    ColumnChoices(const QString &choiceTitle, const QStringList &choices,
                  QWidget *parent = nullptr);

    /// Columns without a choice have the first one. Choices beyond the columns are shown, too.
    void setColumns(const QStringList &names, const QVector<int> &chosen);
    QVector<int> chosen() const;

Q_SIGNALS:
    void edited();

private:
    QTableView *m_view;
    ColumnChoiceModel *m_model;
};

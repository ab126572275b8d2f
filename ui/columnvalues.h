#pragma once

#include "dataset.h"
#include "idlework.h"

#include <QStringList>
#include <QWidget>
#include <memory>

class ColumnStatistics;
class Histogram;
class KindBars;
class QFormLayout;
class QLabel;
class QPushButton;
class QToolButton;
class QTreeWidget;
class QTreeWidgetItem;
class QVBoxLayout;

/// What one column holds: kinds of value, extremes, how numbers and dates spread, and the most
/// frequent values. Worked out in idle time.
class ColumnValues : public QWidget
{
    Q_OBJECT

public:
    explicit ColumnValues(QWidget *parent = nullptr);
    ~ColumnValues() override;

    void showColumn(const Dataset &table, ColIndex column);
    /// Shows no column and lets the table go.
    void clear();
    void setDateFormats(const QStringList &patterns);
    bool isWorking() const { return m_work.isRunning(); }

Q_SIGNALS:
    void filterWanted(const QString &column, const QString &value);
    void closeWanted();

protected:
    void changeEvent(QEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void makeHeader(QVBoxLayout *layout);
    void makeContent(QVBoxLayout *layout);
    void makeList();
    void updateIcons();
    void start();
    void showProgress();
    void showResult();
    void showFacts();
    void showHistogram();
    void showFrequent();
    void addFact(const QString &name, const QString &value, const QString &tip = {});
    void fitList();
    void filterByCurrent();
    void showListMenu(const QPoint &position);

    Dataset m_data;
    ColIndex m_column;
    QString m_columnName;
    QStringList m_dateFormats;
    std::unique_ptr<ColumnStatistics> m_statistics;
    IdleWork m_work;

    QLabel *m_title = nullptr;
    QToolButton *m_close = nullptr;
    QLabel *m_progress = nullptr;
    QWidget *m_content = nullptr;
    KindBars *m_kinds = nullptr;
    QFormLayout *m_facts = nullptr;
    Histogram *m_histogram = nullptr;
    QLabel *m_listTitle = nullptr;
    QTreeWidget *m_list = nullptr;
    QPushButton *m_filter = nullptr;
};

#pragma once

#include "dataset.h"
#include "inputoptions.h"

#include <QTimer>
#include <QWidget>

class QLabel;
class QTableView;
class QToolButton;

/// The first rows of what an input would read with its options as they are now, without the input
/// being run. Reads at most the beginning of the file, a moment after the last change.
class InputPreview final : public QWidget
{
    Q_OBJECT

public:
    explicit InputPreview(QWidget *parent = nullptr);

    /// `path`: absolute; empty when it is not known.
    void setInput(const InputOptions &options, const QString &path);
    /// The most that the table takes in height, of which a few rows are shown in any case.
    void limitTable(int height);
    /// Does at once what is due.
    void refresh();
    const Dataset &dataset() const { return m_dataset; }

protected:
    void showEvent(QShowEvent *event) override;

private:
    void setOpen(bool open);
    void tell(const QString &text, bool isProblem);

    InputOptions m_options;
    QString m_path;
    Dataset m_dataset;
    QTimer m_timer;
    bool m_open = true;
    QToolButton *m_title;
    QTableView *m_table;
    QLabel *m_message;
};

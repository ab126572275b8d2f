#pragma once

#include <QWidget>
#include <functional>

class QCheckBox;
class QLineEdit;

/// A path that is typed, or chosen in a dialog that opens in the folder used last. A path in the
/// document's folder can be kept relative to it; one that is chosen there is from the start.
class PathField final : public QWidget
{
    Q_OBJECT

public:
    enum class Purpose { Open, Save };
    /// `label` names the field for the dialog's title and for screen readers.
    PathField(Purpose purpose, const QString &label, QWidget *parent = nullptr);

    QLineEdit *edit() const { return m_edit; }
    /// Tells the folder of the document; empty while it has never been saved.
    void setDocumentFolder(const std::function<QString()> &folder);
    /// "CSV files (*.csv)", as for QFileDialog.
    void setFilter(const QString &filter) { m_filter = filter; }
    /// To be called when the text was set by the program.
    void showRelation();

Q_SIGNALS:
    /// Chosen in the dialog, or turned from relative to absolute or back.
    void chosen(const QString &path, bool isAnotherFile);

private:
    void browse();
    void setRelative(bool relative);
    QString startFolder() const;
    QString folder() const { return m_folder ? m_folder() : QString(); }

    Purpose m_purpose;
    QString m_label;
    std::function<QString()> m_folder;
    QString m_filter;
    QLineEdit *m_edit;
    QCheckBox *m_relative;
};

#pragma once

#include <QDialog>

class PreferencesStore;
class QCheckBox;
class QComboBox;
class QDoubleSpinBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPlainTextEdit;
class QSpinBox;
class QTableWidget;

/// The user's preferences, with a search over their names.
class PreferencesDialog final : public QDialog
{
    Q_OBJECT

public:
    PreferencesDialog(PreferencesStore *store, QWidget *parent);

    void accept() override;

private:
    struct Row
    {
        QLabel *label;
        QWidget *field;
        QString words;
    };

    void addRow(const QString &text, QWidget *field, const QString &hint, const QString &words);
    void addFields();
    void show(const QString &search);
    void load();
    void addTypeRow(const QString &extension, int type);

    PreferencesStore *m_store;
    QFormLayout *m_form;
    QList<Row> m_rows;
    QComboBox *m_theme;
    QSpinBox *m_fontSize;
    QComboBox *m_locale;
    QPlainTextEdit *m_dateFormats;
    QDoubleSpinBox *m_memory;
    QComboBox *m_optimize;
    QDoubleSpinBox *m_delay;
    QCheckBox *m_sound;
    QLineEdit *m_blockedInputs;
    QLineEdit *m_blockedOutputs;
    QTableWidget *m_types;
};

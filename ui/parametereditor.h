#pragma once

#include "parametercolumns.h"
#include "transformparameter.h"

#include <QWidget>

class NoticeLabel;
class QVBoxLayout;

/// Edits the value of one option. Every valid change by the user is told at once; what is shown but
/// cannot be stored is marked with a sentence, and the last valid value stays in force. There is
/// one kind for each type of option; see parametereditors.h.
class ParameterEditor : public QWidget
{
    Q_OBJECT

public:
    explicit ParameterEditor(QWidget *parent = nullptr);

    /// Shows an option, without emitting anything. Fields that show it already are left alone, with
    /// what is being typed in them.
    virtual void setParameter(const TransformParameter &parameter) = 0;
    /// True when the editor shows the option's label itself.
    virtual bool showsLabel() const { return false; }
    /// What the label stands for.
    QWidget *mainField() const { return m_mainField; }
    QString key() const { return m_parameter.key; }
    QString help() const { return m_parameter.help; }
    /// What is wrong with what the field shows; empty when nothing is.
    QString problem() const;

Q_SIGNALS:
    /// A valid value that the user chose.
    void edited(const QString &key, const QVariant &value);
    /// The focused option's help.
    void helpWanted(const QString &help);

protected:
    /// Takes over an option; false when all of it is shown already.
    bool take(const TransformParameter &parameter);
    const TransformParameter &parameter() const { return m_parameter; }
    template <class T>
    T value() const
    {
        return m_parameter.value.value<T>();
    }
    const ParameterColumns &columns() const { return m_columns; }
    QVBoxLayout *contents() const { return m_contents; }
    /// Gives the main field its name for screen readers. It is no focus proxy: with one, the Tab
    /// key would skip the fields before it.
    void setMainField(QWidget *field);
    /// Tells the value that the user chose.
    void choose(const QVariant &value);
    /// Marks the field; empty: nothing is wrong.
    void showProblem(const QString &sentence, QWidget *field = nullptr);
    /// The field is as it should be again.
    void clearProblem(const QWidget *field);
    /// A remark that leaves the value in force.
    void showNotice(const QString &sentence, bool isWarning);
    /// Tells blanks, which nobody can see in a field; empty for other texts.
    static QString blanksText(const QString &text);

private:
    void focusMoved(const QWidget *before, const QWidget *now);

    TransformParameter m_parameter;
    ParameterColumns m_columns;
    bool m_hasParameter = false;
    QVBoxLayout *m_contents;
    NoticeLabel *m_problem;
    NoticeLabel *m_notice;
    QWidget *m_markedField = nullptr;
    QWidget *m_mainField = nullptr;
};

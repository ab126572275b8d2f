#pragma once

#include "optionfield.h"

#include <QBoxLayout>
#include <QCheckBox>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QSignalBlocker>
#include <QSpinBox>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

/// A heading for a group of options, with a line that explains it.
QWidget *makeHeading(const QString &text, const QString &explanation, QWidget *parent);
/// A box whose texts may be wider than the pane.
QComboBox *makeBox(QWidget *parent);
/// Shows a text without moving the caret further than needed.
void showText(QLineEdit *edit, const QString &text);
void showText(QPlainTextEdit *edit, const QString &text);
/// A few lines of text; Tab leaves it.
QPlainTextEdit *makeTextBox(int lines, QWidget *parent);

/// The fields for the options of one item: which of them mean something, what they show, and what
/// an edit changes. `Options` is a plain struct; a field edits one member.
///
/// A text that is refused stays in its field with the reason, and the item keeps its last valid
/// one, until the option changes by other means.
template <class Options>
class OptionForm
{
public:
    /// Answers false when there is nothing to change.
    using Change = std::function<bool(Options *)>;

    struct Field
    {
        OptionField *widget = nullptr;
        QWidget *heading = nullptr;
        /// Null: always.
        std::function<bool(const Options &)> shown;
        /// What is wrong with a valid choice as things are; null: nothing.
        std::function<QString(const Options &)> notice;
        /// Why a typed text cannot be taken; null: any can.
        std::function<QString(const QString &)> refuses;
        std::function<void(const Options &, bool force)> load;
        QString refusal;
        /// What the item held when it was last shown; a field with a refused text keeps it until
        /// this changes.
        QString loaded;

        Field &shownIf(std::function<bool(const Options &)> test)
        {
            shown = std::move(test);
            return *this;
        }
        Field &noticing(std::function<QString(const Options &)> test)
        {
            notice = std::move(test);
            return *this;
        }
        Field &refusing(std::function<QString(const QString &)> test)
        {
            refuses = std::move(test);
            return *this;
        }
        Field &hint(const QString &text)
        {
            widget->setHint(text);
            return *this;
        }
    };

    /// `edit` changes the item's options; `layout` is that of `owner`.
    OptionForm(QWidget *owner, QBoxLayout *layout,
               std::function<void(const QString &label, const Change &)> edit)
        : m_owner(owner)
        , m_layout(layout)
        , m_edit(std::move(edit))
    {
    }

    void addHeading(const QString &text, const QString &explanation = {})
    {
        m_heading = makeHeading(text, explanation, m_owner);
        m_headings.push_back(m_heading);
        m_layout->addWidget(m_heading);
    }

    /// `key` names the field for tests.
    Field &add(const char *key, const QString &label, QWidget *editor)
    {
        m_fields.push_back(std::make_unique<Field>());
        Field &field = *m_fields.back();
        field.widget = new OptionField(label, editor, m_owner);
        field.widget->setObjectName(QLatin1String(key));
        field.heading = m_heading;
        m_layout->addWidget(field.widget);
        return field;
    }

    Field &addCheck(const char *key, const QString &label, bool Options::*member)
    {
        auto *box = new QCheckBox(label, m_owner);
        box->setAccessibleName(label);
        Field &field = add(key, QString(), box);
        field.load = [box, member](const Options &options, bool) {
            box->setChecked(options.*member);
        };
        QObject::connect(box, &QCheckBox::clicked, m_owner, [this, member, label](bool checked) {
            m_edit(label, assigning(member, checked));
        });
        return field;
    }

    /// `also` makes what else follows from a choice; it is given the options with the old one.
    template <class T>
    Field &addChoice(const char *key, const QString &label, T Options::*member,
                     const QList<T> &choices, const std::function<QString(T)> &labelOf,
                     const std::function<void(Options *, T)> &also = {})
    {
        QComboBox *box = makeBox(m_owner);
        for (const T choice : choices) {
            box->addItem(labelOf(choice), int(choice));
        }
        Field &field = add(key, label, box);
        field.load = [box, member, labelOf](const Options &options, bool) {
            const int number = int(options.*member);
            if (box->findData(number) < 0) {
                box->addItem(labelOf(options.*member), number);
            }
            box->setCurrentIndex(box->findData(number));
        };
        QObject::connect(box, qOverload<int>(&QComboBox::activated), m_owner,
                         [this, box, member, label, also](int index) {
                             const auto value = T(box->itemData(index).toInt());
                             m_edit(label, [member, value, also](Options *options) {
                                 if (also && options->*member != value) {
                                     also(options, value);
                                 }
                                 return assigning(member, value)(options);
                             });
                         });
        return field;
    }

    Field &addNumber(const char *key, const QString &label, int Options::*member, QSpinBox *box)
    {
        ignoreWheelUnlessFocused(box);
        Field &field = add(key, label, box);
        field.load = [box, member](const Options &options, bool) {
            const QSignalBlocker blocker(box);
            if (box->value() != options.*member) {
                box->setValue(options.*member);
            }
        };
        QObject::connect(
            box, qOverload<int>(&QSpinBox::valueChanged), m_owner,
            [this, member, label](int value) { m_edit(label, assigning(member, value)); });
        return field;
    }

    Field &addText(const char *key, const QString &label, QString Options::*member)
    {
        auto *edit = new QLineEdit(m_owner);
        return addText(key, label, member, edit, edit);
    }
    /// `edit` is the part of `editor` that holds the text.
    Field &addText(const char *key, const QString &label, QString Options::*member, QWidget *editor,
                   QLineEdit *edit)
    {
        return addText(
            key, label, [member](const Options &options) { return options.*member; },
            [member](Options *options, const QString &text) { options->*member = text; }, editor,
            edit);
    }
    /// For options that are not texts: they are read from one and written as one.
    Field &addText(const char *key, const QString &label,
                   const std::function<QString(const Options &)> &textOf,
                   const std::function<void(Options *, const QString &)> &setText, QWidget *editor,
                   QLineEdit *edit)
    {
        return addLine(
            key, label, textOf,
            [this, label, textOf, setText](const QString &text) {
                m_edit(label, [textOf, setText, text](Options *options) {
                    const bool changes = textOf(*options) != text;
                    setText(options, text);
                    return changes;
                });
            },
            editor, edit);
    }
    /// For what does not stand in the options.
    Field &addLine(const char *key, const QString &label,
                   const std::function<QString(const Options &)> &textOf,
                   const std::function<void(const QString &)> &commit, QWidget *editor,
                   QLineEdit *edit)
    {
        Field &field = add(key, label, editor);
        field.load = [&field, edit, textOf](const Options &options, bool force) {
            const QString text = textOf(options);
            if (force || text != field.loaded) {
                field.loaded = text;
                field.refusal.clear();
                showText(edit, text);
            }
        };
        const auto take = [&field, commit](const QString &text) {
            field.refusal = field.refuses ? field.refuses(text) : QString();
            field.widget->setProblem(field.refusal);
            if (field.refusal.isEmpty()) {
                field.loaded = text;
                commit(text);
            }
        };
        QObject::connect(edit, &QLineEdit::textEdited, m_owner, take);
        if (auto *box = qobject_cast<QComboBox *>(editor)) {
            QObject::connect(box, qOverload<int>(&QComboBox::activated), m_owner,
                             [box, take](int) { take(box->currentText()); });
        }
        return field;
    }

    Field &addLongText(const char *key, const QString &label, QString Options::*member)
    {
        QPlainTextEdit *edit = makeTextBox(3, m_owner);
        Field &field = add(key, label, edit);
        // Not compared with the box's text, which spells line ends its own way.
        field.load = [&field, edit, member](const Options &options, bool force) {
            const QString &text = options.*member;
            if (force || text != field.loaded) {
                field.loaded = text;
                showText(edit, text);
            }
        };
        QObject::connect(edit, &QPlainTextEdit::textChanged, m_owner,
                         [this, &field, edit, member, label] {
                             field.loaded = edit->toPlainText();
                             m_edit(label, assigning(member, field.loaded));
                         });
        return field;
    }

    /// `force`: of another item, so that nothing of what was typed stays.
    void show(const Options &options, bool force)
    {
        for (QWidget *heading : m_headings) {
            heading->setProperty("used", false);
        }
        for (const std::unique_ptr<Field> &field : m_fields) {
            if (field->load) {
                field->load(options, force);
            }
            const bool isShown = !field->shown || field->shown(options);
            field->widget->setVisible(isShown);
            if (isShown && field->heading) {
                field->heading->setProperty("used", true);
            }
            const QString notice = field->notice ? field->notice(options) : QString();
            field->widget->setProblem(field->refusal.isEmpty() ? notice : field->refusal);
        }
        for (QWidget *heading : m_headings) {
            heading->setVisible(heading->property("used").toBool());
        }
    }

    /// For editors of their own.
    void edit(const QString &label, const Change &change) { m_edit(label, change); }

private:
    template <class T>
    static Change assigning(T Options::*member, const T &value)
    {
        return [member, value](Options *options) {
            const bool changes = options->*member != value;
            options->*member = value;
            return changes;
        };
    }

    QWidget *m_owner;
    QBoxLayout *m_layout;
    std::function<void(const QString &label, const Change &)> m_edit;
    QWidget *m_heading = nullptr;
    std::vector<QWidget *> m_headings;
    std::vector<std::unique_ptr<Field>> m_fields;
};

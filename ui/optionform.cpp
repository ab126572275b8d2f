#include "optionform.h"

#include "theme.h"

QLabel *makeHeading(const QString &text, QWidget *parent)
{
    auto *heading = new QLabel(text, parent);
    QFont font = Theme::titleFont(heading->font());
    heading->setFont(font);
    heading->setContentsMargins(0, 8, 0, 0);
    return heading;
}

QComboBox *makeBox(QWidget *parent)
{
    auto *box = new QComboBox(parent);
    box->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    box->setMinimumContentsLength(8);
    ignoreWheelUnlessFocused(box);
    return box;
}

void showText(QLineEdit *edit, const QString &text)
{
    if (edit->text() != text) {
        const int caret = edit->cursorPosition();
        edit->setText(text);
        edit->setCursorPosition(qMin(caret, text.size()));
    }
}

void showText(QPlainTextEdit *edit, const QString &text)
{
    const QSignalBlocker blocker(edit);
    const int caret = edit->textCursor().position();
    edit->setPlainText(text);
    QTextCursor cursor = edit->textCursor();
    cursor.setPosition(qMin(caret, edit->document()->characterCount() - 1));
    edit->setTextCursor(cursor);
}

QPlainTextEdit *makeTextBox(int lines, QWidget *parent)
{
    auto *edit = new QPlainTextEdit(parent);
    edit->setTabChangesFocus(true);
    edit->setFixedHeight(edit->fontMetrics().lineSpacing() * lines + 12);
    return edit;
}

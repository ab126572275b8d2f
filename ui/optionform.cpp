#include "optionform.h"

#include "theme.h"

#include <QLabel>

QWidget *makeHeading(const QString &text, const QString &explanation, QWidget *parent)
{
    auto *heading = new QWidget(parent);
    auto *layout = new QVBoxLayout(heading);
    layout->setContentsMargins(0, 12, 0, 0);
    layout->setSpacing(0);
    auto *title = new QLabel(text, heading);
    title->setFont(Theme::titleFont(title->font()));
    layout->addWidget(title);
    if (!explanation.isEmpty()) {
        auto *line = new QLabel(explanation, heading);
        line->setFont(Theme::hintFont(line->font()));
        line->setForegroundRole(QPalette::PlaceholderText);
        line->setWordWrap(true);
        layout->addWidget(line);
    }
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

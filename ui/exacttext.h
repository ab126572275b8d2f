#pragma once

#include <QPlainTextEdit>
#include <QTextDocument>

/// The text as it was typed. QPlainTextEdit::toPlainText() would turn non-breaking blanks into
/// common ones.
inline QString exactText(const QPlainTextEdit &field)
{
    QString text = field.document()->toRawText();
    text.replace(QChar(QChar::ParagraphSeparator), QLatin1Char('\n'));
    text.replace(QChar(QChar::LineSeparator), QLatin1Char('\n'));
    return text;
}

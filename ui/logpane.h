#pragma once

#include "userinterface.h"

#include <QWidget>

class QPlainTextEdit;

/// The lines of runs, the newest at the end.
class LogPane final : public QWidget
{
    Q_OBJECT

public:
    explicit LogPane(QWidget *parent = nullptr);

    void add(LogLevel level, const QString &text);
    void focusText();

private:
    QPlainTextEdit *m_text;
};

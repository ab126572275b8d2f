#pragma once

#include <QPlainTextEdit>

/// A text of equally wide characters with line numbers. The Tab key indents; Ctrl+Tab and
/// Shift+Tab go to the next and the previous field.
class ScriptEdit final : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit ScriptEdit(QWidget *parent = nullptr);

protected:
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    int marginWidth() const;
    void setMargins();
    void paintMargin();

    QWidget *m_margin;
};

#pragma once

#include <QCheckBox>

/// A check box whose text takes as many lines as it needs.
class WrappingCheckBox final : public QCheckBox
{
    Q_OBJECT

public:
    explicit WrappingCheckBox(QWidget *parent = nullptr);

    void setWrappedText(const QString &text);
    int heightForWidth(int width) const override;
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    QString wrapped(int width) const;
    void wrap();

    QString m_text;
};

#pragma once

#include <QCheckBox>

/// A check box whose text takes as many lines as it needs.
class WrappingCheckBox final : public QCheckBox
{
    Q_OBJECT

public:
    using QCheckBox::QCheckBox;

    void setWrappedText(const QString &text);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void wrap();

    QString m_text;
};

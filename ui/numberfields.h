#pragma once

#include <QSpinBox>

/// A whole number with arrows. Anything can be typed, so that what cannot be used can be explained;
/// when the field is left it shows the last valid number again. The wheel changes it only while it
/// has the focus.
class IntField final : public QSpinBox
{
    Q_OBJECT

public:
    explicit IntField(QWidget *parent = nullptr);

    QValidator::State validate(QString &text, int &pos) const override;

Q_SIGNALS:
    /// What stands in the field is not a number within the bounds.
    void refused();
    /// It is one again.
    void accepted();

protected:
    void focusOutEvent(QFocusEvent *event) override;

private:
    void check();
};

/// The same for any number; without rounding it to a number of decimals.
class RealField final : public QAbstractSpinBox
{
    Q_OBJECT

public:
    explicit RealField(QWidget *parent = nullptr);

    void setRange(double minimum, double maximum);
    void setValue(double value);
    /// The shortest text that reads back as the number, with the locale's decimal point.
    static QString written(double value);

    QValidator::State validate(QString &text, int &pos) const override;
    void stepBy(int steps) override;

Q_SIGNALS:
    void edited(double value);
    void refused();
    void accepted();

protected:
    StepEnabled stepEnabled() const override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    void read(const QString &text);

    double m_minimum = 0;
    double m_maximum = 100;
    double m_value = 0;
};

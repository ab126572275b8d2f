#include "numberfields.h"

#include "optionfield.h"

#include <QLineEdit>
#include <QLocale>

IntField::IntField(QWidget *parent)
    : QSpinBox(parent)
{
    ignoreWheelUnlessFocused(this);
    connect(lineEdit(), &QLineEdit::textEdited, this, &IntField::check);
}

QValidator::State IntField::validate(QString &text, int &pos) const
{
    const QValidator::State state = QSpinBox::validate(text, pos);
    return state == QValidator::Invalid ? QValidator::Intermediate : state;
}

void IntField::check()
{
    if (hasAcceptableInput()) {
        Q_EMIT accepted();
    } else {
        Q_EMIT refused();
    }
}

void IntField::focusOutEvent(QFocusEvent *event)
{
    QSpinBox::focusOutEvent(event);
    check();
}

RealField::RealField(QWidget *parent)
    : QAbstractSpinBox(parent)
{
    ignoreWheelUnlessFocused(this);
    connect(lineEdit(), &QLineEdit::textEdited, this, &RealField::read);
}

void RealField::setRange(double minimum, double maximum)
{
    m_minimum = minimum;
    m_maximum = maximum;
}

void RealField::setValue(double value)
{
    m_value = value;
    lineEdit()->setText(written(value));
}

QString RealField::written(double value)
{
    QLocale locale;
    locale.setNumberOptions(QLocale::OmitGroupSeparator);
    return locale.toString(value, 'g', QLocale::FloatingPointShortest);
}

QValidator::State RealField::validate(QString &, int &) const
{
    return QValidator::Acceptable;
}

void RealField::stepBy(int steps)
{
    const double stepped = qBound(m_minimum, m_value + steps, m_maximum);
    setValue(stepped);
    Q_EMIT edited(stepped);
}

QAbstractSpinBox::StepEnabled RealField::stepEnabled() const
{
    StepEnabled enabled = StepNone;
    enabled.setFlag(StepUpEnabled, m_value < m_maximum);
    enabled.setFlag(StepDownEnabled, m_value > m_minimum);
    return enabled;
}

void RealField::focusOutEvent(QFocusEvent *event)
{
    QAbstractSpinBox::focusOutEvent(event);
    setValue(m_value);
    Q_EMIT accepted();
}

void RealField::read(const QString &text)
{
    bool ok = false;
    const double number = QLocale().toDouble(text.trimmed(), &ok);
    // Written so that NaN is refused too.
    if (!ok || !(number >= m_minimum && number <= m_maximum)) {
        Q_EMIT refused();
        return;
    }
    m_value = number;
    Q_EMIT edited(number);
}

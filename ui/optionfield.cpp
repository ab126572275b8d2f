#include "optionfield.h"

#include "theme.h"

#include <QAbstractSpinBox>
#include <QEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

namespace {

/// A sentence behind a triangle with "!".
class ProblemLabel final : public QLabel
{
public:
    explicit ProblemLabel(QWidget *parent)
        : QLabel(parent)
    {
        setWordWrap(true);
        setTextFormat(Qt::PlainText);
        setTextInteractionFlags(Qt::TextSelectableByMouse);
        setForegroundRole(QPalette::BrightText);
        setFont(Theme::hintFont(font()));
        setContentsMargins(signSize() + 6, 0, 0, 0);
    }

protected:
    void paintEvent(QPaintEvent *event) override
    {
        QLabel::paintEvent(event);
        const qreal size = signSize();
        QPainterPath sign;
        sign.moveTo(size / 2, 0);
        sign.lineTo(size, size);
        sign.lineTo(0, size);
        sign.closeSubpath();
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(1, (fontMetrics().height() - size) / 2);
        const QColor color = palette().color(QPalette::BrightText);
        painter.fillPath(sign, color);
        painter.setPen(QPen(Theme::textOn(color), size / 8, Qt::SolidLine, Qt::RoundCap));
        painter.drawLine(QPointF(size / 2, size * 0.38), QPointF(size / 2, size * 0.66));
        painter.drawPoint(QPointF(size / 2, size * 0.84));
    }

private:
    int signSize() const { return fontMetrics().ascent(); }
};

class WheelGuard final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        const auto *widget = qobject_cast<QWidget *>(watched);
        if (event->type() == QEvent::Wheel && widget && !widget->hasFocus()) {
            event->ignore();
            return true;
        }
        return QObject::eventFilter(watched, event);
    }
};

} // namespace

OptionField::OptionField(const QString &label, QWidget *editor, QWidget *parent)
    : QWidget(parent)
    , m_editor(editor)
    , m_hint(new QLabel(this))
    , m_problem(new ProblemLabel(this))
{
    auto *layout = new QVBoxLayout(this);
    // Check boxes stand closer together than fields with labels.
    layout->setContentsMargins(0, label.isEmpty() ? 0 : 4, 0, 0);
    layout->setSpacing(4);
    if (!label.isEmpty()) {
        auto *title = new QLabel(label, this);
        title->setTextFormat(Qt::PlainText);
        title->setWordWrap(true);
        title->setBuddy(focusWidgetOf(editor));
        layout->addWidget(title);
        focusWidgetOf(editor)->setAccessibleName(label);
    }
    layout->addWidget(editor);
    m_hint->setWordWrap(true);
    m_hint->setForegroundRole(QPalette::PlaceholderText);
    m_hint->setFont(Theme::hintFont(font()));
    layout->addWidget(m_hint);
    layout->addWidget(m_problem);
    m_hint->hide();
    m_problem->hide();
}

void OptionField::setHint(const QString &hint)
{
    m_hint->setText(hint);
    m_hint->setVisible(!hint.isEmpty());
    describe();
}

void OptionField::setProblem(const QString &problem)
{
    if (problem != m_problem->text()) {
        m_problem->setText(problem);
        m_problem->setVisible(!problem.isEmpty());
        describe();
    }
}

QString OptionField::problem() const
{
    return m_problem->text();
}

void OptionField::describe()
{
    QStringList texts{m_problem->text(), m_hint->text()};
    texts.removeAll(QString());
    focusWidgetOf(m_editor)->setAccessibleDescription(texts.join(QLatin1Char(' ')));
}

QWidget *focusWidgetOf(QWidget *editor)
{
    return editor->focusProxy() ? editor->focusProxy() : editor;
}

void ignoreWheelUnlessFocused(QWidget *widget)
{
    widget->setFocusPolicy(Qt::StrongFocus);
    widget->installEventFilter(new WheelGuard(widget));
}

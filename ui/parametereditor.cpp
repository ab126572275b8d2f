#include "parametereditor.h"

#include "noticelabel.h"
#include "texts.h"
#include "theme.h"

#include <QApplication>
#include <QVBoxLayout>

namespace {

/// True when both look the same in an editor.
bool areAlike(const TransformParameter &a, const TransformParameter &b)
{
    return a.type == b.type && a.key == b.key && a.label == b.label && a.help == b.help &&
           a.options == b.options && a.intMinimum == b.intMinimum && a.intMaximum == b.intMaximum &&
           qFuzzyCompare(1 + a.realMinimum, 1 + b.realMinimum) &&
           qFuzzyCompare(1 + a.realMaximum, 1 + b.realMaximum) && a.suffix == b.suffix &&
           a.noneText == b.noneText && a.valueText() == b.valueText() &&
           a.columnNames() == b.columnNames();
}

} // namespace

ParameterEditor::ParameterEditor(QWidget *parent)
    : QWidget(parent)
    , m_parameter(ParameterType::Text, {}, {}, QString())
    , m_contents(new QVBoxLayout)
    , m_problem(new NoticeLabel)
    , m_notice(new NoticeLabel)
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    m_contents->setSpacing(4);
    layout->addLayout(m_contents);
    layout->addWidget(m_problem);
    layout->addWidget(m_notice);
    connect(qApp, &QApplication::focusChanged, this, &ParameterEditor::focusMoved);
}

QString ParameterEditor::problem() const
{
    return m_problem->text();
}

bool ParameterEditor::take(const TransformParameter &parameter)
{
    const ParameterColumns columns =
        m_columns.areOf(parameter.input) ? m_columns : ParameterColumns(parameter.input);
    if (m_hasParameter && areAlike(parameter, m_parameter) && columns == m_columns) {
        return false;
    }
    m_hasParameter = true;
    m_parameter = parameter;
    // The item may be gone before the next option comes.
    m_parameter.input = nullptr;
    m_columns = columns;
    showProblem({});
    if (m_mainField) {
        setMainField(m_mainField);
    }
    return true;
}

void ParameterEditor::setMainField(QWidget *field)
{
    m_mainField = field;
    field->setAccessibleName(m_parameter.label);
    field->setAccessibleDescription(m_parameter.help);
}

void ParameterEditor::choose(const QVariant &value)
{
    showProblem({});
    m_parameter.value = value;
    Q_EMIT edited(m_parameter.key, value);
}

void ParameterEditor::showProblem(const QString &sentence, QWidget *field)
{
    if (m_markedField && m_markedField != field) {
        m_markedField->setPalette({});
    }
    m_markedField = field;
    if (field) {
        QPalette palette = field->palette();
        palette.setColor(QPalette::Text, Theme::current().error);
        field->setPalette(palette);
    }
    m_problem->setNotice(NoticeLabel::Kind::Problem, sentence);
    if (m_mainField) {
        m_mainField->setAccessibleDescription(sentence.isEmpty() ? m_parameter.help : sentence);
    }
}

void ParameterEditor::clearProblem(const QWidget *field)
{
    if (m_markedField == field) {
        showProblem({});
    }
}

void ParameterEditor::showNotice(const QString &sentence, bool isWarning)
{
    m_notice->setNotice(isWarning ? NoticeLabel::Kind::Warning : NoticeLabel::Kind::Hint, sentence);
}

QString ParameterEditor::blanksText(const QString &text)
{
    const bool isBlank =
        std::all_of(text.begin(), text.end(), [](QChar c) { return c == QLatin1Char(' '); });
    return text.isEmpty() || !isBlank ? QString()
           : text.size() == 1         ? tr("One blank.")
                                      : tr("%1 blanks.").arg(Texts::count(text.size()));
}

void ParameterEditor::focusMoved(const QWidget *before, const QWidget *now)
{
    const bool isHere = now && (now == this || isAncestorOf(now));
    const bool wasHere = before && (before == this || isAncestorOf(before));
    if (isHere && !wasHere) {
        Q_EMIT helpWanted(m_parameter.help);
    }
}

#include "splitrowseditor.h"

#include "choicebox.h"
#include "numberfields.h"
#include "parametersummary.h"

#include <QLabel>
#include <QVBoxLayout>

namespace {

QString stored(SplitRowsSpec::Mode mode)
{
    return QString::number(int(mode));
}

} // namespace

SplitRowsParameterWidget::SplitRowsParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_mode(new ChoiceBox)
    , m_fixed(new QWidget)
    , m_first(new ChoiceBox)
    , m_width(new IntField)
    , m_times(new IntField)
{
    constexpr int most = 999999999;
    m_mode->setChoices(
        {{stored(SplitRowsSpec::Mode::Fixed), tr("Every so many columns")},
         {stored(SplitRowsSpec::Mode::Automatic), tr("Automatically by column names")},
         {stored(SplitRowsSpec::Mode::Matching), tr("By matching column names")}});
    m_width->setRange(0, most);
    m_width->setSpecialValueText(tr("All"));
    m_times->setRange(1, most);
    auto *const fields = new QVBoxLayout(m_fixed);
    fields->setContentsMargins(0, 0, 0, 0);
    fields->setSpacing(4);
    const auto addField = [fields](const QString &text, QWidget *field) {
        auto *const label = new QLabel(text);
        label->setBuddy(field);
        field->setAccessibleName(text);
        fields->addWidget(label);
        fields->addWidget(field);
    };
    addField(tr("First column"), m_first);
    addField(tr("Columns of each part"), m_width);
    addField(tr("Number of parts"), m_times);
    contents()->addWidget(m_mode);
    contents()->addWidget(m_fixed);
    setMainField(m_mode);

    for (ChoiceBox *const box : {m_mode, m_first}) {
        connect(box, QOverload<int>::of(&ChoiceBox::activated), this,
                &SplitRowsParameterWidget::tell);
    }
    for (IntField *const field : {m_width, m_times}) {
        connect(field, QOverload<int>::of(&IntField::valueChanged), this,
                &SplitRowsParameterWidget::tell);
        connect(field, &IntField::accepted, this, [this, field] { clearProblem(field); });
        connect(field, &IntField::refused, this, [this, field] {
            showProblem(
                tr("Type a whole number from %1 upwards. %2 stays in force.")
                    .arg(QString::number(field->minimum()), QString::number(field->value())),
                field);
        });
    }
}

void SplitRowsParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    const auto spec = value<SplitRowsSpec>();
    const QSignalBlocker widthBlocker(m_width);
    const QSignalBlocker timesBlocker(m_times);
    const bool isNone = spec.first.number < 0 && spec.first.name.isEmpty();
    m_mode->setStored(stored(spec.mode));
    m_first->setChoices(QVector<Choice>{{QString(), parameter.noneText}} +
                        columns().choices({spec.first}));
    m_first->setStored(isNone ? QString() : columns().key(spec.first));
    m_width->setValue(spec.width);
    m_times->setValue(spec.times);
    m_fixed->setVisible(spec.mode == SplitRowsSpec::Mode::Fixed);
    showFirst();
}

void SplitRowsParameterWidget::tell()
{
    SplitRowsSpec spec;
    spec.mode = SplitRowsSpec::Mode(m_mode->stored().toInt());
    const QString first = m_first->stored();
    spec.first = first.isEmpty() ? ColumnRef() : columns().fromKey(first);
    spec.width = m_width->value();
    spec.times = m_times->value();
    m_fixed->setVisible(spec.mode == SplitRowsSpec::Mode::Fixed);
    choose(QVariant::fromValue(spec));
    showFirst();
}

void SplitRowsParameterWidget::showFirst()
{
    const ColumnRef first = value<SplitRowsSpec>().first;
    if (columns().isMissing(first)) {
        showProblem(ParameterColumns::notFoundText(nameOf(first)), m_first);
    }
}

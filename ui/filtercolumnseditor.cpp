#include "filtercolumnseditor.h"

#include "choicebox.h"
#include "noticelabel.h"
#include "rowstable.h"
#include "termstable.h"
#include "transformfilter.h"

#include <QHBoxLayout>

namespace {

const QString yes = QStringLiteral("1");
const QString no = QStringLiteral("0");

} // namespace

FilterColumnsParameterWidget::FilterColumnsParameterWidget(QWidget *parent)
    : ParameterEditor(parent)
    , m_keep(new ChoiceBox)
    , m_match(new ChoiceBox)
    , m_terms(new TermsTable(tr("Filter terms")))
    , m_summary(new NoticeLabel)
{
    m_keep->setChoices({{yes, tr("Keep")}, {no, tr("Remove")}});
    m_keep->setAccessibleName(tr("Keep or remove rows"));
    m_match->setChoices({{yes, tr("Matching all")}, {no, tr("Matching any")}});
    m_match->setAccessibleName(tr("Rows matching all or any terms"));
    auto *const boxes = new QHBoxLayout;
    boxes->setSpacing(4);
    boxes->addWidget(m_keep, 2);
    boxes->addWidget(m_match, 3);
    contents()->addLayout(boxes);
    contents()->addWidget(m_terms);
    contents()->addWidget(m_summary);
    setMainField(m_terms->table()->view());
    for (ChoiceBox *const box : {m_keep, m_match}) {
        connect(box, QOverload<int>::of(&ChoiceBox::activated), this,
                &FilterColumnsParameterWidget::tell);
    }
    connect(m_terms, &TermsTable::edited, this, &FilterColumnsParameterWidget::tell);
    connect(m_terms, &TermsTable::helpWanted, this, &ParameterEditor::helpWanted);
}

void FilterColumnsParameterWidget::setParameter(const TransformParameter &parameter)
{
    if (!take(parameter)) {
        return;
    }
    const auto spec = value<FilterSpec>();
    m_keep->setStored(spec.keep ? yes : no);
    m_match->setStored(spec.matchAll ? yes : no);
    m_terms->setTerms(spec.terms);
    m_terms->setColumns(columns());
    showSpec();
}

FilterSpec FilterColumnsParameterWidget::spec() const
{
    return {m_keep->stored() == yes, m_match->stored() == yes, m_terms->terms()};
}

void FilterColumnsParameterWidget::tell()
{
    choose(QVariant::fromValue(spec()));
    showSpec();
}

void FilterColumnsParameterWidget::showSpec()
{
    m_summary->setNotice(NoticeLabel::Kind::Hint,
                         TransformFilter::summaryText(spec(), columns().names()));
    const QString problem = m_terms->problem();
    showNotice(problem, true);
}

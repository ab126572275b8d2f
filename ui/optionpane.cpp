#include "optionpane.h"

#include "graphscene.h"
#include "inputnode.h"
#include "outputnode.h"

#include <QCoreApplication>
#include <QScrollBar>
#include <QVBoxLayout>

OptionPane::OptionPane(QWidget *parent)
    : QScrollArea(parent)
{
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::NoFocus);
    auto *content = new QWidget(this);
    auto *layout = new QVBoxLayout(content);
    layout->setContentsMargins(8, 0, 8, 8);
    layout->setSpacing(4);
    setWidget(content);
}

QBoxLayout *OptionPane::column() const
{
    return static_cast<QBoxLayout *>(widget()->layout());
}

QSize OptionPane::minimumSizeHint() const
{
    const int width = widget()->minimumSizeHint().width() + verticalScrollBar()->sizeHint().width();
    return {width, fontMetrics().lineSpacing() * 6};
}

QString aliasProblem(const GraphScene &scene, const IONode *node, const QString &text)
{
    if (text.isEmpty()) {
        return QString();
    }
    for (const Node *other : scene.nodes()) {
        const auto *item = qobject_cast<const IONode *>(other);
        if (item && item != node && item->alias() == text) {
            return OptionPane::tr("'%1' has the alias '%2' already.")
                .arg(item->displayName(), text);
        }
    }
    return QString();
}

QString customDelimiterProblem(const QString &text)
{
    return text.toUcs4().size() == 1 ? QString() : OptionPane::tr("Type one character.");
}

#include "inputnode.h"
#include "node.h"
#include "nodeitem.h"
#include "texts.h"
#include "transform.h"
#include "transformnode.h"

#include <QCoreApplication>

namespace {

constexpr int shownRows = 5;
constexpr int shownColumns = 6;
constexpr int shownCharacters = 24;

QString translated(const char *text)
{
    return QCoreApplication::translate("NodeItem", text);
}

QString shortened(QString text)
{
    text = text.simplified();
    if (text.size() > shownCharacters) {
        text = text.left(shownCharacters - 1) + QChar(0x2026);
    }
    return text.toHtmlEscaped();
}

QString row(const QStringList &cells, const char *tag)
{
    const QString open = QStringLiteral("<%1 align=\"left\">").arg(QLatin1String(tag));
    return QStringLiteral("<tr>") + open + cells.join(open) + QStringLiteral("</tr>");
}

/// The first rows as a table; empty when there are none.
QString firstRows(const Dataset &table)
{
    const int columns = qMin(table.columnCount().value(), shownColumns);
    const int rows = qMin(table.rowCount(), shownRows);
    if (columns == 0 || rows == 0) {
        return {};
    }
    QStringList names;
    for (int c = 0; c < columns; ++c) {
        names.append(shortened(table.columnName(ColIndex(c))));
    }
    QString html = row(names, "th");
    for (int r = 0; r < rows; ++r) {
        QStringList cells;
        for (int c = 0; c < columns; ++c) {
            cells.append(shortened(table.cell(RowIndex(r), ColIndex(c))));
        }
        html += row(cells, "td");
    }
    return QStringLiteral("<table cellspacing=\"4\">%1</table>").arg(html);
}

} // namespace

QString NodeItem::summaryText() const
{
    if (const auto *transform = qobject_cast<const TransformNode *>(m_node)) {
        return transform->transform().summary();
    }
    const auto *input = qobject_cast<const InputNode *>(m_node);
    return input && input->options().showMeta ? input->options().metaText : QString();
}

QString NodeItem::spokenText() const
{
    if (m_node->kind() == ItemKind::Note) {
        return translated(QT_TRANSLATE_NOOP("NodeItem", "Note: %1")).arg(m_node->comment());
    }
    QStringList parts{translated(QT_TRANSLATE_NOOP("NodeItem", "%1 '%2'"))
                          .arg(itemKindLabel(m_node->kind()), m_node->displayName()),
                      itemStatusText(m_node->status()), m_node->sizeLabel()};
    const int warnings = m_node->warnings().size();
    if (warnings > 0) {
        parts.append(
            translated(QT_TRANSLATE_NOOP("NodeItem", "%1 warning(s)")).arg(Texts::count(warnings)));
    }
    const auto names = [&parts](const char *text, const QList<Node *> &nodes) {
        QStringList list;
        for (const Node *node : nodes) {
            list.append(node->displayName());
        }
        if (!list.isEmpty()) {
            parts.append(translated(text).arg(list.join(QStringLiteral(", "))));
        }
    };
    names(QT_TRANSLATE_NOOP("NodeItem", "from %1"), m_node->upstreamNodes());
    names(QT_TRANSLATE_NOOP("NodeItem", "to %1"), m_node->downstreamNodes());
    return parts.join(QStringLiteral(", "));
}

QString NodeItem::tooltip() const
{
    if (m_node->kind() == ItemKind::Note) {
        return {};
    }
    QStringList lines{QStringLiteral("<b>%1</b>").arg(m_node->displayName().toHtmlEscaped()),
                      itemStatusText(m_node->status()).toHtmlEscaped() + QStringLiteral(", ") +
                          m_node->sizeLabel().toHtmlEscaped()};
    for (const QString &text : {summaryText(), m_node->comment()}) {
        if (!text.isEmpty()) {
            lines.append(text.left(300).toHtmlEscaped());
        }
    }
    for (const QString &warning : m_node->warnings().mid(0, 3)) {
        lines.append(translated(QT_TRANSLATE_NOOP("NodeItem", "Warning: %1"))
                         .arg(warning.left(300).toHtmlEscaped()));
    }
    return lines.join(QStringLiteral("<br>")) + firstRows(m_node->dataset());
}

#pragma once

#include "node.h"

enum class NoteArrow : qint32 { None = 0, Up = 1, Right = 2, Down = 3, Left = 4 };

/// A text on the canvas (its comment). Has no connections and is never run.
class NoteNode final : public Node
{
    Q_OBJECT

public:
    NoteNode();

    /// The colour as text, as stored ("#ffffcc").
    QString color() const { return m_color; }
    NoteArrow arrow() const { return m_arrow; }
    void setAppearance(const QString &color, NoteArrow arrow);

    ItemKind kind() const override { return ItemKind::Note; }
    std::unique_ptr<Node> clone() const override;
    QString resultText() const override { return {}; }

protected:
    Dataset run(const ProcessContext &context, Messages *messages) override;

private:
    QString m_color = QStringLiteral("#ffffcc");
    NoteArrow m_arrow = NoteArrow::None;
};

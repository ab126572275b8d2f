#pragma once

#include <QScrollArea>

class GraphScene;
class IONode;
class QBoxLayout;
class QLineEdit;

/// A column of options that scrolls up and down and is never wider than its place.
class OptionPane final : public QScrollArea
{
    Q_OBJECT

public:
    explicit OptionPane(QWidget *parent = nullptr);

    QBoxLayout *column() const;
    QSize minimumSizeHint() const override;
};

/// Why a text cannot be the alias of an item; empty when it can.
QString aliasProblem(const GraphScene &scene, const IONode *node, const QString &text);
/// Why a text is no custom delimiter; empty when it is one.
QString customDelimiterProblem(const QString &text);

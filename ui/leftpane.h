#pragma once

#include <QWidget>

class QAction;
class QComboBox;
class QLabel;
class QLineEdit;
class QScrollArea;
class QVBoxLayout;
class TransformButton;
class TransformCatalogue;

/// Buttons for inputs, outputs and notes, and the palette of transforms with its search and its
/// filter by category.
class LeftPane final : public QWidget
{
    Q_OBJECT

public:
    /// The actions stand at the top as buttons. All arguments must outlive the pane.
    LeftPane(const TransformCatalogue *catalogue, const QList<QAction *> &actions,
             QWidget *parent = nullptr);

    void focusSearch();

Q_SIGNALS:
    void transformWanted(const QString &typeName);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Group
    {
        int category;
        QLabel *title;
        QList<TransformButton *> buttons;
    };

    QWidget *makeActionButtons(const QList<QAction *> &actions);
    QWidget *makePalette(const TransformCatalogue &catalogue);
    void filter();
    QList<TransformButton *> shownButtons() const;
    void moveFocus(int step);

    QLineEdit *m_search;
    QComboBox *m_category;
    QScrollArea *m_area;
    QLabel *m_nothing;
    QList<Group> m_groups;
};

#pragma once

#include <QComboBox>
#include <QString>
#include <QVector>

class QFrame;
class QLineEdit;
class QListView;
class QSortFilterProxyModel;

/// One thing that can be chosen from a list.
struct Choice
{
    QString stored;
    QString text;
    /// What a narrow cell shows; empty: the text.
    QString shortText = {};
    /// A few faint words beside the text in the list.
    QString hint = {};
    /// What is wrong with choosing this; mostly empty.
    QString problem = {};

    friend bool operator==(const Choice &a, const Choice &b)
    {
        return a.stored == b.stored && a.text == b.text && a.shortText == b.shortText &&
               a.hint == b.hint && a.problem == b.problem;
    }
};

/// A combo box whose list is as wide as its texts, shows hints and is searched by typing. The wheel
/// changes it only while it has the focus, so that scrolling past it is harmless. Emits activated()
/// when the user has chosen.
class ChoiceBox final : public QComboBox
{
    Q_OBJECT

public:
    static constexpr int hintRole = Qt::UserRole + 1;

    explicit ChoiceBox(QWidget *parent = nullptr);

    void setChoices(const QVector<Choice> &choices);
    /// The stored text of what is chosen.
    QString stored() const { return currentData().toString(); }
    /// Nothing is chosen when there is no such choice.
    void setStored(const QString &stored);

    void showPopup() override;
    void hidePopup() override;

protected:
    void paintEvent(QPaintEvent *event) override;
    bool eventFilter(QObject *object, QEvent *event) override;

private:
    void makePopup();
    void placePopup();
    void filter(const QString &text);
    void choose(const QModelIndex &index);

    QVector<Choice> m_choices;
    QFrame *m_popup = nullptr;
    QLineEdit *m_search = nullptr;
    QListView *m_list = nullptr;
    QSortFilterProxyModel *m_found = nullptr;
};

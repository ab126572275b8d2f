#pragma once

#include <QFrame>
#include <QIcon>
#include <QVector>

class QLineEdit;
class QListWidget;
class QListWidgetItem;
class TransformCatalogue;

/// A small box to type a few letters of what is to be added: all transforms that are built, found
/// by name and search words, and the other kinds of item.
class QuickAdd final : public QFrame
{
    Q_OBJECT

public:
    /// What chosen() says beside the stored names of transforms, none of which begins like these.
    static const QString inputChoice;
    static const QString outputChoice;
    static const QString noteChoice;

    /// `oneInputOnly`: just what can be put into a connection.
    QuickAdd(const TransformCatalogue &catalogue, bool oneInputOnly, QWidget *parent = nullptr);

    void openAt(const QPoint &globalPos);

Q_SIGNALS:
    void chosen(const QString &choice);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    struct Entry
    {
        QString choice;
        QString name;
        QString description;
        QStringList words;
        QIcon icon;
    };

    void addKind(const QString &choice, const QString &name, const QString &picture,
                 const QColor &color, const QStringList &words);
    void addTransforms(const TransformCatalogue &catalogue, bool oneInputOnly);
    void fill(const QString &text);
    void choose(const QListWidgetItem *item);

    QVector<Entry> m_entries;
    QLineEdit *m_edit;
    QListWidget *m_list;
};

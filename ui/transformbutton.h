#pragma once

#include <QToolButton>

class Transform;

/// A button of the palette that adds a transform of one type; it can be dragged onto the canvas.
class TransformButton final : public QToolButton
{
    Q_OBJECT

public:
    /// Type of the data that is dragged: the stored type name as UTF-8.
    static QString mimeType();

    /// `prototype` must outlive the button.
    explicit TransformButton(const Transform *prototype, QWidget *parent = nullptr);

    const Transform &prototype() const { return *m_prototype; }
    /// Whether every typed word begins a search word or the name.
    bool matches(const QStringList &words) const;

protected:
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    const Transform *m_prototype;
    QStringList m_keywords;
    QPoint m_pressedAt;
};

/// The tooltip of a transform type: name, what it does and what has to be selected.
QString transformToolTip(const Transform &transform);
/// The typed search as words in lower case.
QStringList searchWords(const QString &text);
/// The words by which a transform is found, its name included.
QStringList transformKeywords(const Transform &transform);
/// Whether every searched word begins one of the keywords.
bool matchesSearch(const QStringList &keywords, const QStringList &words);

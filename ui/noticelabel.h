#pragma once

#include <QWidget>

class QLabel;

/// A sentence at a field: a small picture tells its kind without colours. Hidden while there is
/// nothing to say.
class NoticeLabel final : public QWidget
{
    Q_OBJECT

public:
    enum class Kind { Hint, Warning, Problem };

    explicit NoticeLabel(QWidget *parent = nullptr);

    void setNotice(Kind kind, const QString &text);
    /// A colour other than that of the kind.
    void setColor(const QColor &color);
    QString text() const;

protected:
    void changeEvent(QEvent *event) override;

private:
    void paintAnew();

    QLabel *m_picture;
    QLabel *m_text;
    Kind m_kind = Kind::Hint;
    QColor m_color;
};

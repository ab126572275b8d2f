#include "noticelabel.h"

#include "icons.h"
#include "theme.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>

NoticeLabel::NoticeLabel(QWidget *parent)
    : QWidget(parent)
    , m_picture(new QLabel)
    , m_text(new QLabel)
{
    m_text->setTextFormat(Qt::PlainText);
    m_text->setWordWrap(true);
    m_text->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(4);
    layout->addWidget(m_picture, 0, Qt::AlignTop);
    layout->addWidget(m_text, 1);
    hide();
}

void NoticeLabel::setNotice(Kind kind, const QString &text)
{
    m_kind = kind;
    m_text->setText(text);
    m_text->setAccessibleName(text);
    paintAnew();
    setVisible(!text.isEmpty());
}

void NoticeLabel::setColor(const QColor &color)
{
    m_color = color;
    paintAnew();
}

QString NoticeLabel::text() const
{
    return m_text->text();
}

void NoticeLabel::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::FontChange) {
        paintAnew();
    }
}

void NoticeLabel::paintAnew()
{
    const Theme &theme = Theme::current();
    QColor color = theme.secondaryText;
    QString picture;
    if (m_kind == Kind::Problem) {
        color = theme.error;
        picture = QStringLiteral("notice-problem");
    } else if (m_kind == Kind::Warning) {
        color = theme.warning;
        picture = QStringLiteral("notice-warning");
    }
    if (m_color.isValid()) {
        color = m_color;
    }
    QPalette colors = palette();
    colors.setColor(QPalette::WindowText, color);
    m_text->setPalette(colors);
    m_text->setFont(Theme::hintFont(font()));
    const int side = m_text->fontMetrics().height();
    m_picture->setVisible(!picture.isEmpty());
    m_picture->setPixmap(Icons::colored(picture, color).pixmap(side, side));
}

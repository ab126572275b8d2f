#include "transformbutton.h"

#include "icons.h"
#include "transform.h"

#include <QApplication>
#include <QDrag>
#include <QMimeData>
#include <QMouseEvent>
#include <algorithm>

QString TransformButton::mimeType()
{
    return QStringLiteral("application/x-tabweave-transform");
}

TransformButton::TransformButton(const Transform *prototype, QWidget *parent)
    : QToolButton(parent)
    , m_prototype(prototype)
    , m_keywords(transformKeywords(*prototype))
{
    // The style leaves no room between picture and text.
    setText(QLatin1Char(' ') + prototype->name());
    setIcon(Icons::forTransform(*prototype));
    setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    setAutoRaise(true);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setToolTip(transformToolTip(*prototype));
    setAccessibleName(tr("Add %1").arg(prototype->name()));
    setAccessibleDescription(prototype->description());
    setFocusPolicy(Qt::StrongFocus);
}

bool TransformButton::matches(const QStringList &words) const
{
    return matchesSearch(m_keywords, words);
}

void TransformButton::mousePressEvent(QMouseEvent *event)
{
    m_pressedAt = event->pos();
    QToolButton::mousePressEvent(event);
}

void TransformButton::mouseMoveEvent(QMouseEvent *event)
{
    const int distance = (event->pos() - m_pressedAt).manhattanLength();
    if ((event->buttons() & Qt::LeftButton) == 0 || distance < QApplication::startDragDistance()) {
        QToolButton::mouseMoveEvent(event);
        return;
    }
    auto *const dragged = new QMimeData;
    dragged->setData(mimeType(), m_prototype->typeName().toUtf8());
    auto *const drag = new QDrag(this);
    drag->setMimeData(dragged);
    constexpr int size = 32;
    drag->setPixmap(icon().pixmap(size));
    drag->exec(Qt::CopyAction);
    setDown(false);
}

void TransformButton::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::PaletteChange) {
        setIcon(Icons::forTransform(*m_prototype));
    }
    QToolButton::changeEvent(event);
}

QString transformToolTip(const Transform &transform)
{
    return QStringLiteral("<p style='white-space:pre-wrap'><b>%1</b>\n%2\n\n%3</p>")
        .arg(transform.name().toHtmlEscaped(), transform.description().toHtmlEscaped(),
             transform.inputsText().toHtmlEscaped());
}

QStringList searchWords(const QString &text)
{
    return text.toLower().simplified().split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

QStringList transformKeywords(const Transform &transform)
{
    const QSet<QString> keywords = transform.keywords();
    QStringList words(keywords.begin(), keywords.end());
    words.append(transform.name().toLower());
    return words;
}

bool matchesSearch(const QStringList &keywords, const QStringList &words)
{
    return std::all_of(words.begin(), words.end(), [&](const QString &word) {
        return std::any_of(keywords.begin(), keywords.end(),
                           [&word](const QString &keyword) { return keyword.startsWith(word); });
    });
}

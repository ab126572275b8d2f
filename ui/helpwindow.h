#pragma once

#include <QString>
#include <QWidget>

class QTextBrowser;

/// Shows the user's guide.
class HelpWindow final : public QWidget
{
    Q_OBJECT

public:
    explicit HelpWindow(QWidget *parent);

    /// A page by its file's name, with an optional "#section". False when the guide is not there.
    bool showPage(const QString &page);
    /// The page or section of a transform, by its name.
    bool showTransform(const QString &name);

private:
    QTextBrowser *m_text;
    QString m_folder;
};

#include "fixedwidtheditor.h"

#include "fixedwidthguess.h"
#include "fixedwidthview.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace {

// Far wider than any line that people look at, and small enough for sums.
constexpr int largestWidth = 1000000;
constexpr int mostWidths = 1000;

QList<int> boundariesOf(const QList<int> &widths)
{
    QList<int> boundaries;
    int end = 0;
    for (const int width : widths) {
        if (width > 0 && width <= largestWidth && boundaries.size() < mostWidths) {
            end += width;
            boundaries.append(end);
        }
    }
    return boundaries;
}

} // namespace

QString widthsText(const QList<int> &widths)
{
    QStringList texts;
    for (const int width : widths) {
        texts.append(QString::number(width));
    }
    return texts.join(QStringLiteral(", "));
}

bool readWidths(const QString &text, QList<int> *widths)
{
    QList<int> read;
    for (const QString &part : text.split(QLatin1Char(','))) {
        bool ok = false;
        const int width = part.trimmed().toInt(&ok);
        if (!ok || width <= 0 || width > largestWidth || read.size() == mostWidths) {
            return false;
        }
        read.append(width);
    }
    *widths = read;
    return true;
}

QString widthsProblem(const QString &text)
{
    QList<int> widths;
    return readWidths(text, &widths)
               ? QString()
               : FixedWidthEditor::tr("Type widths above 0, with commas between them.");
}

FixedWidthEditor::FixedWidthEditor(const QStringList &lines, int ignoredRows, QWidget *parent)
    : QDialog(parent)
    , m_linesToGuess(lines.mid(ignoredRows))
    , m_view(new FixedWidthView(this))
    , m_edit(new QLineEdit(this))
    , m_problem(new QLabel(this))
{
    setWindowTitle(tr("Columns"));
    auto *layout = new QVBoxLayout(this);
    auto *hint = new QLabel(tr("Click to set a boundary, drag to move it, double-click to remove "
                               "it. With the keyboard: arrows move the mark, Space sets or removes "
                               "a boundary, Shift and an arrow moves it."),
                            this);
    hint->setWordWrap(true);
    hint->setForegroundRole(QPalette::PlaceholderText);
    layout->addWidget(hint);
    m_view->setLines(lines, ignoredRows);
    layout->addWidget(m_view, 1);

    auto *label = new QLabel(tr("Column &widths"), this);
    label->setBuddy(m_edit);
    m_edit->setAccessibleName(tr("Column widths"));
    layout->addWidget(label);
    layout->addWidget(m_edit);
    m_problem->setForegroundRole(QPalette::BrightText);
    m_problem->setWordWrap(true);
    m_problem->hide();
    layout->addWidget(m_problem);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
    buttons->addButton(tr("Use"), QDialogButtonBox::AcceptRole)->setDefault(true);
    QPushButton *guess = buttons->addButton(tr("&Guess"), QDialogButtonBox::ActionRole);
    guess->setToolTip(tr("Find the columns by the blanks between them."));
    QPushButton *clear = buttons->addButton(tr("C&lear"), QDialogButtonBox::ActionRole);
    clear->setToolTip(tr("Remove all boundaries. The columns are then found automatically."));
    layout->addWidget(buttons);

    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(guess, &QPushButton::clicked, this,
            [this] { setWidths(guessColumnWidths(m_linesToGuess)); });
    connect(clear, &QPushButton::clicked, this, [this] { setWidths({}); });
    connect(m_edit, &QLineEdit::textEdited, this, &FixedWidthEditor::takeText);
    connect(m_view, &FixedWidthView::boundariesEdited, this, &FixedWidthEditor::showWidths);
    m_view->setFocus();
    resize(fontMetrics().averageCharWidth() * 110, fontMetrics().lineSpacing() * 28);
}

void FixedWidthEditor::setWidths(const QList<int> &widths)
{
    m_view->setBoundaries(boundariesOf(widths));
    showWidths();
}

QList<int> FixedWidthEditor::widths() const
{
    QList<int> widths;
    int from = 0;
    for (const int boundary : m_view->boundaries()) {
        widths.append(boundary - from);
        from = boundary;
    }
    return widths;
}

void FixedWidthEditor::takeText(const QString &text)
{
    QList<int> widths;
    const QString problem = text.trimmed().isEmpty() ? QString() : widthsProblem(text);
    m_problem->setText(problem);
    m_problem->setVisible(!problem.isEmpty());
    if (problem.isEmpty()) {
        readWidths(text, &widths);
        m_view->setBoundaries(boundariesOf(widths));
    }
}

void FixedWidthEditor::showWidths()
{
    m_edit->setText(widthsText(widths()));
    m_problem->hide();
}

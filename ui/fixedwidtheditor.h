#pragma once

#include <QDialog>
#include <QList>
#include <QStringList>

class FixedWidthView;
class QLineEdit;
class QLabel;

/// "10, 5, 8"
QString widthsText(const QList<int> &widths);
/// False when the text is not a list of numbers above 0.
bool readWidths(const QString &text, QList<int> *widths);
/// Why a text is no list of widths; empty when it is one.
QString widthsProblem(const QString &text);

/// Where the columns of a fixed-width input end, set on its first lines or as numbers.
class FixedWidthEditor final : public QDialog
{
    Q_OBJECT

public:
    FixedWidthEditor(const QStringList &lines, int ignoredRows, QWidget *parent = nullptr);

    void setWidths(const QList<int> &widths);
    QList<int> widths() const;

private:
    void takeText(const QString &text);
    void showWidths();

    QStringList m_linesToGuess;
    FixedWidthView *m_view;
    QLineEdit *m_edit;
    QLabel *m_problem;
};

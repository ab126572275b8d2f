#pragma once

#include "choicebox.h"
#include "parametereditor.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QFrame>
#include <QLineEdit>
#include <QTableView>
#include <QTest>
#include <QToolButton>

/// Keyboard and mouse for the option editors.
namespace EditorDriver {

/// A stored list: items divided by "|" here.
inline QString list(const QString &items)
{
    return QString(items).replace("|", QChar(0x1f));
}

/// The first child of a class that can be seen.
template <class Widget>
Widget *child(QWidget *parent, int number = 0)
{
    QList<Widget *> found;
    for (Widget *each : parent->findChildren<Widget *>()) {
        if (each->isVisibleTo(parent)) {
            found.append(each);
        }
    }
    return found.value(number);
}

inline void typeInto(QWidget *field, const QString &text)
{
    field->setFocus();
    if (auto *const line = qobject_cast<QLineEdit *>(field)) {
        line->selectAll();
    }
    QTest::keyClicks(field, text);
}

/// Opens the box with the keyboard, searches and takes the first find.
inline void pick(QWidget *box, const QString &search)
{
    box->setFocus();
    QTest::keyClick(box, Qt::Key_Space);
    auto *const popup = qobject_cast<QFrame *>(QApplication::activePopupWidget());
    QVERIFY(popup);
    auto *const searched = popup->findChild<QLineEdit *>();
    auto *const choices = popup->findChild<QAbstractItemView *>();
    if (searched->isVisible()) {
        QTest::keyClicks(searched, search);
    } else {
        choices->keyboardSearch(search);
    }
    QTest::keyClick(searched->isVisible() ? static_cast<QWidget *>(searched) : choices,
                    Qt::Key_Return);
    QVERIFY(!QApplication::activePopupWidget());
}

/// The widget that edits the current cell.
template <class Widget>
Widget *editing(QTableView *table)
{
    return table->viewport()->findChild<Widget *>();
}

inline void goTo(QTableView *table, int row, int column)
{
    table->setFocus();
    table->setCurrentIndex(table->model()->index(row, column));
}

inline void typeCell(ParameterEditor *editor, int row, int column, const QString &text,
                     int number = 0)
{
    auto *const table = child<QTableView>(editor, number);
    goTo(table, row, column);
    QTest::keyClick(table, Qt::Key_Return);
    auto *const line = editing<QLineEdit>(table);
    QVERIFY(line);
    QTest::keyClicks(line, text);
    QTest::keyClick(line, Qt::Key_Return);
}

inline void pickCell(ParameterEditor *editor, int row, int column, const QString &search,
                     int number = 0)
{
    auto *const table = child<QTableView>(editor, number);
    goTo(table, row, column);
    QTest::keyClick(table, Qt::Key_Return);
    auto *const box = editing<ChoiceBox>(table);
    QVERIFY(box);
    QTRY_VERIFY(QApplication::activePopupWidget());
    QApplication::activePopupWidget()->hide();
    pick(box, search);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

inline void press(ParameterEditor *editor, const QString &toolTip)
{
    for (QToolButton *const button : editor->findChildren<QToolButton *>()) {
        if (button->toolTip().contains(toolTip)) {
            QVERIFY2(button->isEnabled(), qPrintable(toolTip));
            QTest::mouseClick(button, Qt::LeftButton);
            return;
        }
    }
    QFAIL(qPrintable("no button " + toolTip));
}

} // namespace EditorDriver

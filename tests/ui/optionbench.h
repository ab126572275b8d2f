#pragma once

#include "graphscene.h"
#include "optionfield.h"
#include "scriptedinterface.h"

#include <QLineEdit>
#include <QTest>
#include <QUndoStack>

/// A scene with one item and the editor of its options, shown in a narrow pane and active.
template <class Item, class Options, class Editor>
struct OptionBench
{
    explicit OptionBench(const Options &options = {}, Node *upstream = nullptr)
    {
        scene.document().autoRun = false;
        node = scene.insert(std::make_unique<Item>(options));
        if (upstream) {
            scene.connectNodes(scene.insert(std::unique_ptr<Node>(upstream)), node);
        }
        editor.setNode(node);
        editor.resize(300, 900);
        editor.show();
        editor.activateWindow();
        (void)QTest::qWaitForWindowActive(&editor);
    }

    OptionField *field(const QByteArray &key)
    {
        return editor.template findChild<OptionField *>(QString(key));
    }
    QLineEdit *line(const QByteArray &key)
    {
        auto *edit = qobject_cast<QLineEdit *>(field(key)->editor());
        return edit ? edit : field(key)->editor()->template findChild<QLineEdit *>();
    }
    QStringList shownFields()
    {
        QStringList shown;
        for (const OptionField *each : editor.template findChildren<OptionField *>()) {
            if (!each->isHidden()) {
                shown.append(each->objectName());
            }
        }
        shown.sort();
        return shown;
    }
    /// Controls that the keyboard reaches and a screen reader has no name for.
    QStringList unnamedControls()
    {
        QStringList unnamed;
        for (const QWidget *widget : editor.template findChildren<QWidget *>()) {
            const bool isPart = widget->parentWidget()->inherits("QComboBox") ||
                                widget->parentWidget()->inherits("QSpinBox");
            const bool hasText = widget->inherits("QAbstractButton") &&
                                 !widget->property("text").toString().isEmpty();
            if (widget->isVisible() && widget->focusPolicy() & Qt::TabFocus &&
                !widget->focusProxy() && !isPart && !hasText &&
                widget->accessibleName().isEmpty()) {
                unnamed.append(widget->metaObject()->className());
            }
        }
        return unnamed;
    }
    /// Fields that need more room than they have.
    QStringList cutFields()
    {
        QStringList cut;
        if (editor.minimumSizeHint().width() > 300) {
            cut.append("editor");
        }
        for (const OptionField *each : editor.template findChildren<OptionField *>()) {
            if (each->isVisible() && each->minimumSizeHint().width() > each->width()) {
                cut.append(each->objectName());
            }
        }
        return cut;
    }

    ScriptedInterface user;
    GraphScene scene{&user};
    Item *node;
    Editor editor{&scene};
};

/// What a user does at a field: "click", "space", "down", "up", or a text to type.
inline void act(QWidget *editor, const QString &action)
{
    if (action == "click") {
        QTest::mouseClick(editor, Qt::LeftButton, {}, QPoint(8, editor->height() / 2));
    } else if (action == "space") {
        QTest::keyClick(editor, Qt::Key_Space);
    } else if (action == "down") {
        QTest::keyClick(editor, Qt::Key_Down);
    } else if (action == "up") {
        QTest::keyClick(editor, Qt::Key_Up);
    } else {
        QTest::keyClick(editor, Qt::Key_A, Qt::ControlModifier);
        QTest::keyClicks(editor, action);
    }
}

/// An edit arrives in the item as one step, and undo takes it back in item and field.
template <class Bench, class Stored>
void checkEdit(Bench *bench, const QByteArray &key, const QString &action, const QString &expected,
               const Stored &stored)
{
    const QString before = stored(*bench->node, key);
    QVERIFY(before != expected);
    QVERIFY(!bench->field(key)->isHidden());
    QWidget *editor = focusWidgetOf(bench->field(key)->editor());
    act(editor, action);
    QCOMPARE(stored(*bench->node, key), expected);
    QCOMPARE(bench->scene.undoStack().count(), 1);
    QVERIFY(!bench->scene.undoStack().undoText().isEmpty());
    bench->scene.undo();
    QCOMPARE(stored(*bench->node, key), before);
    bench->scene.redo();
    QCOMPARE(stored(*bench->node, key), expected);
    bench->scene.undo();
    // From the same state the same action has the same effect: the field shows what is stored.
    act(editor, action);
    QCOMPARE(stored(*bench->node, key), expected);
}

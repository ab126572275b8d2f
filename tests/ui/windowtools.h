#pragma once

#include "canvasview.h"
#include "documentcontroller.h"
#include "documentfile.h"
#include "graphscene.h"
#include "icons.h"
#include "mainwindow.h"
#include "preferencesstore.h"
#include "runcontroller.h"
#include "testsupport.h"
#include "theme.h"
#include "transformcatalogue.h"
#include "windowactions.h"

#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QFile>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTimer>

/// A main window with preferences of its own.
class TestWindow
{
public:
    TestWindow()
    {
        Icons::prepare();
        // Found beside the program, it is used in place of the user's settings.
        makeFile("tabweave.ini", QByteArray());
        m_store = std::make_unique<PreferencesStore>(m_folder.path());
        m_window = std::make_unique<MainWindow>(m_store.get(), &m_catalogue);
        m_window->resize(1280, 800);
        m_window->show();
        if (!QTest::qWaitForWindowExposed(m_window.get())) {
            qFatal("the window does not appear");
        }
    }

    MainWindow *operator->() { return m_window.get(); }
    MainWindow *get() { return m_window.get(); }
    GraphScene &scene() { return *m_window->scene(); }
    const TransformCatalogue &catalogue() const { return m_catalogue; }
    PreferencesStore &store() { return *m_store; }

    QString path(const QString &name) const { return m_folder.filePath(name); }
    QString makeFile(const QString &name, const QByteArray &content) const
    {
        QFile file(path(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
            qFatal("the test cannot write its own files");
        }
        return file.fileName();
    }
    QByteArray content(const QString &name) const
    {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// The items and connections as a document holds them.
    QByteArray document()
    {
        return DocumentFile::copyOf(m_window->scene()->nodesByAddition(), *m_window->scene());
    }

private:
    QTemporaryDir m_folder;
    TransformCatalogue m_catalogue;
    std::unique_ptr<PreferencesStore> m_store;
    std::unique_ptr<MainWindow> m_window;
};

/// Presses a button of the next message box, by its text, and keeps what the box said.
class BoxAnswer : public QObject
{
public:
    explicit BoxAnswer(const QString &button)
        : m_button(button)
    {
        connect(&m_timer, &QTimer::timeout, this, [this] { press(); });
        m_timer.start(10);
    }
    QString text() const { return m_text; }
    int count() const { return m_count; }

private:
    void press()
    {
        auto *const box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        if (!box) {
            return;
        }
        for (QAbstractButton *const button : box->buttons()) {
            if (button->text().remove('&') == m_button) {
                m_text = box->text();
                ++m_count;
                button->click();
                return;
            }
        }
        qFatal("the box '%s' has no button '%s'", qPrintable(box->text()), qPrintable(m_button));
    }

    QString m_button;
    QString m_text;
    int m_count = 0;
    QTimer m_timer;
};

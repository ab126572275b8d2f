#include "windowapplication.h"

#include "texts.h"

#include <new>

WindowApplication::WindowApplication(int &argc, char **argv)
    : QApplication(argc, argv)
    , m_reserve(new char[reserveSize])
    , m_outOfMemory(new QMessageBox(QMessageBox::Critical, tr("Out of memory"),
                                    tr("%1 ran out of memory!").arg(Texts::productName()),
                                    QMessageBox::Ok))
{
}

bool WindowApplication::notify(QObject *receiver, QEvent *event)
{
    try {
        return QApplication::notify(receiver, event);
    } catch (const std::bad_alloc &) {
        m_reserve.reset();
        m_outOfMemory->exec();
        m_reserve.reset(new (std::nothrow) char[reserveSize]);
        return false;
    }
}

bool hasDisplay()
{
    for (const char *name : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
        if (!qEnvironmentVariableIsEmpty(name)) {
            return true;
        }
    }
    return false;
}

#pragma once

#include <QApplication>
#include <QMessageBox>
#include <memory>

/// The application of a start with a window. Keeps a reserve of memory and a dialog made in
/// advance, so that running out of memory can still be told.
class WindowApplication final : public QApplication
{
    Q_OBJECT

public:
    WindowApplication(int &argc, char **argv);

    /// Answers false, having told it, when memory ran out while an event was handled.
    bool notify(QObject *receiver, QEvent *event) override;

private:
    static constexpr int reserveSize = 262144;

    std::unique_ptr<char[]> m_reserve;
    std::unique_ptr<QMessageBox> m_outOfMemory;
};

/// Whether a window can be shown at all.
bool hasDisplay();

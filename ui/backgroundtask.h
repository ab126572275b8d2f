#pragma once

#include "progress.h"

#include <QString>

class QWidget;

/// Does long work in another thread, which must touch nothing that the window uses meanwhile, and
/// shows a dialog with "Cancel" when it takes longer. Answers false when the user cancelled.
bool runInBackground(QWidget *parent, const QString &text,
                     const std::function<void(const Progress &progress)> &work);

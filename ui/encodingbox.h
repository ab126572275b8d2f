#pragma once

#include <QString>

class QComboBox;
class QWidget;

/// An editable list of encodings, the usual ones first.
QComboBox *makeEncodingBox(bool withAutomatic, QWidget *parent);
/// Why a text is no encoding; empty when it is one.
QString encodingProblem(const QString &text, bool withAutomatic);

#pragma once

#include "parametervalues.h"

#include <QList>
#include <QString>

/// Terms as text on the clipboard: a term a line, with tabs between column, operator and value, as
/// spreadsheets have it. A field with a tab, a line end or a quote in it stands in quotes.
namespace TermClipboard {

QString write(const QList<FilterTerm> &terms);
/// Reads what write() gives. A line of one field is a value for the pattern's column and operator;
/// of two fields they are column and value, or column and an operator without a value.
QList<FilterTerm> read(const QString &text, const FilterTerm &pattern);
/// The same for users.
QString help();

} // namespace TermClipboard

#pragma once

#include <QString>
#include <QStringList>

/// Short texts that several layers show.
namespace Texts {

QString productName();
QString productVersion();

/// A count with the group separators of the user's locale.
QString count(qint64 number);
/// "row" or "rows".
QString rows(qint64 number);
/// "column" or "columns".
QString columns(qint64 number);
/// "12 cols x 3,400 rows".
QString size(int columns, int rows);
/// "0.25 second(s)": up to six significant digits; "<0.001 second(s)" for 0 milliseconds.
QString elapsed(qint64 milliseconds);
/// "%1 changed, %2 unchanged", or "No changes".
QString changed(qint64 changedCells, qint64 unchangedCells);
QString noChanges();
/// "%1 %2 removed" with "row"/"rows", or "No changes" for 0.
QString rowsRemoved(qint64 number);
QString rowsAdded(qint64 number);
QString columnsRemoved(qint64 number);
QString columnsAdded(qint64 number);

/// "Yes" or "No".
QString yesNo(bool value);

} // namespace Texts

#pragma once

#include "xlsxrows.h"

#include <QByteArray>

class XlsxStyles;
class XlsxWorkbook;
struct Messages;
struct SheetTarget;

/// Takes over the styles of the workbook that the options name as a template, and the look of its
/// sheet: of its first row for the header, of its second for the data. Tells and answers false when
/// that is not possible.
bool copyTemplateStyles(const SheetJob &job, const SheetTarget &target, XlsxStyles *styles,
                        XlsxLook *look, QByteArray *theme, Messages *messages);

/// The same for a workbook that is changed, whose own sheets alone can serve as a template.
bool copyTemplateLook(const SheetJob &job, const SheetTarget &target, XlsxWorkbook *workbook,
                      XlsxLook *look, Messages *messages);

/// For workbooks that cannot take over the look of others: tells, and answers false.
bool refuseTemplate(const SheetJob &job, const SheetTarget &target, Messages *messages);

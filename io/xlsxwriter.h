#pragma once

#include "textoutput.h"

class SheetJob;
struct SheetTarget;

/// Writes a sheet of an XLSX workbook: of a new one, or of the one that is there, of which then
/// everything else is carried over unchanged.
WriteResult writeXlsx(SheetJob *job, const SheetTarget &target, Messages *messages,
                      const Progress &progress);

#include "spreadsheetinput.h"

#include "inputoptions.h"
#include "inputreader.h"

Dataset readSpreadsheet(const InputOptions &options, const QString &, Messages *messages,
                        const Progress &)
{
    messages->fail(notBuiltText(options.fileType));
    return {};
}

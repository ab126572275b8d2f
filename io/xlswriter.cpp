#include "xlswriter.h"

#include "messages.h"
#include "sheetjob.h"

WriteResult writeXls(SheetJob *, const SheetTarget &, Messages *messages, const Progress &)
{
    messages->fail(QCoreApplication::translate("XlsWriter", "Writing XLS workbooks is not built "
                                                            "yet in this version."));
    return WriteResult::Failed;
}

#include "fixedwidthreader.h"

#include "inputreader.h"

Dataset readFixedWidth(const InputOptions &, const QString &, TextSource *, Messages *messages,
                       const Progress &)
{
    messages->fail(notBuiltText(FileType::FixedWidth));
    return {};
}

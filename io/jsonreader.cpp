#include "jsonreader.h"

#include "inputreader.h"

Dataset readJson(const InputOptions &, const QString &, TextSource *, Messages *messages,
                 const Progress &)
{
    messages->fail(notBuiltText(FileType::Json));
    return {};
}

#include "vcardreader.h"

#include "inputreader.h"

Dataset readVCards(const InputOptions &, const QString &, TextSource *, Messages *messages,
                   const Progress &)
{
    messages->fail(notBuiltText(FileType::VCard));
    return {};
}

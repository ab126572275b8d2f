#include "plaintextreader.h"

#include "inputreader.h"

Dataset readPlainText(const InputOptions &, const QString &, TextSource *, Messages *messages,
                      const Progress &)
{
    messages->fail(notBuiltText(FileType::PlainText));
    return {};
}

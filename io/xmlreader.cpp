#include "xmlreader.h"

#include "inputreader.h"

Dataset readXml(const InputOptions &, const QString &, TextSource *, Messages *messages,
                const Progress &)
{
    messages->fail(notBuiltText(FileType::Xml));
    return {};
}

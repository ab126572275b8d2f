#include "plaintextreader.h"

#include "delimitedparser.h"
#include "rowcollector.h"
#include "textinput.h"

Dataset readPlainText(const InputOptions &options, const QString &path, TextSource *source,
                      Messages *messages, const Progress &progress)
{
    noteEncoding(options, *source, messages);
    DelimitedParser lines(source, progress);
    lines.setLines();
    RowCollector collector(options, source);
    while (lines.next()) {
        const CutRow line = lines.row();
        collector.add(line.values, line.count, line.clean);
    }
    return tellEnding(lines.ending(), path, *source, messages) ? collector.finish(messages)
                                                               : Dataset();
}

#include "valueparts.h"

#include "distinctvalues.h"
#include "tablebuilder.h"
#include "utf8.h"

#include <limits>

ValueParts::Result ValueParts::cut(const Dataset &table, ColIndex column, const Options &options,
                                   const Progress &progress)
{
    DistinctValues distinct;
    if (!distinct.read(table, column, progress)) {
        return Result::Stopped;
    }
    TableBuilder builder;
    m_starts.assign(1, 0);
    m_isEmpty.clear();
    const auto add = [&](std::string_view part) {
        if (options.trim) {
            part = Utf8::trimmed(part);
        }
        m_isEmpty.push_back(part.empty());
        builder.appendRow(&part, 1);
    };
    for (size_t i = 0; i < distinct.values.size(); ++i) {
        if (i % progressInterval == 0 && !reportProgress(progress, 1.0)) {
            return Result::Stopped;
        }
        const std::string_view value = distinct.values[i];
        size_t from = 0;
        while (!options.delimiter.empty()) {
            const size_t at = value.find(options.delimiter, from);
            if (at == std::string_view::npos) {
                break;
            }
            if (builder.rowCount() >= std::numeric_limits<qint32>::max() - 1) {
                return Result::TooMany;
            }
            add(value.substr(from, at - from));
            from = at + options.delimiter.size();
        }
        if (builder.rowCount() >= std::numeric_limits<qint32>::max() - 1) {
            return Result::TooMany;
        }
        add(value.substr(from));
        m_starts.push_back(builder.rowCount());
    }
    m_valueOfRow = std::move(distinct.ofRow);
    m_parts = builder.take();
    return Result::Cut;
}

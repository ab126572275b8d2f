#pragma once

#include "jsonparser.h"
#include "nestedrecords.h"
#include "progress.h"

/// What is at the top of the text.
enum class Top {
    /// An array, whose elements are the records, or an object that may hold just one array of
    /// objects, which are then the records.
    Document,
    /// An object that is a record itself.
    OneRecord,
    /// Nothing: each document is a record.
    Lines
};

/// Finds the records among the values of a document.
class RecordFinder final : public JsonHandler
{
public:
    /// `share`: how much of the progress has been reported before.
    RecordFinder(Top top, NestedRecords *records, const Progress &progress, double size,
                 double share)
        : m_top(top)
        , m_records(records)
        , m_progress(progress)
        , m_size(size)
        , m_share(share)
    {
    }

    /// Where the position is read for the progress.
    void setParser(const JsonParser *parser, qint64 start)
    {
        m_parser = parser;
        m_start = start;
    }
    /// True when the document was stopped because its object is a record itself.
    bool isOneRecord() const { return m_isOneRecord; }
    /// An element of the outermost array is parsed again from its start.
    void restartElement()
    {
        m_depth = 1;
        m_records->forgetRecord();
    }

    bool beginObject() override
    {
        if (m_depth == 0 && m_top == Top::Document) {
            m_recordDepth = 2; // until something other than one array of objects is met
        } else if (m_depth < m_recordDepth) {
            return refuse();
        } else {
            beginValue();
            m_records->beginObject();
        }
        ++m_depth;
        return step();
    }
    bool key(std::string_view name) override
    {
        if (m_depth < m_recordDepth) {
            return ++m_outerKeys == 1 || refuse();
        }
        m_records->key(name);
        return true;
    }
    bool endObject() override
    {
        --m_depth;
        if (m_depth < m_recordDepth) {
            return m_anyRecord || refuse();
        }
        m_records->endObject();
        return endValue();
    }
    bool beginArray() override
    {
        if (m_depth == 0 && m_top == Top::Document) {
            m_recordDepth = 1;
        } else if (m_recordDepth == 2 && m_depth == 2) {
            return refuse();
        } else if (m_depth >= m_recordDepth) {
            beginValue();
            m_records->beginArray();
        }
        ++m_depth;
        return step();
    }
    bool endArray() override
    {
        --m_depth;
        if (m_depth < m_recordDepth) {
            return true;
        }
        m_records->endArray();
        return endValue();
    }
    bool value(std::string_view text) override
    {
        if (!beginScalar()) {
            return false;
        }
        m_records->value(text);
        return endValue() && step();
    }
    bool null() override
    {
        if (!beginScalar()) {
            return false;
        }
        m_records->null();
        return endValue() && step();
    }

private:
    bool refuse()
    {
        m_isOneRecord = true;
        return false;
    }
    bool beginScalar()
    {
        if (m_recordDepth == 2 && m_depth <= 2) {
            return refuse();
        }
        beginValue();
        return true;
    }
    void beginValue()
    {
        if (m_depth == m_recordDepth) {
            m_anyRecord = true;
            m_records->beginRecord();
        }
    }
    bool endValue()
    {
        if (m_depth == m_recordDepth) {
            m_records->endRecord();
        }
        return true;
    }
    bool step()
    {
        constexpr int stepsBetweenReports = 8 * progressInterval;
        if (++m_steps % stepsBetweenReports != 0) {
            return true;
        }
        const double done = double(m_start + m_parser->position()) / m_size;
        return reportProgress(m_progress, m_share + (1 - m_share) * done);
    }

    Top m_top;
    NestedRecords *m_records;
    const Progress &m_progress;
    double m_size;
    double m_share;
    const JsonParser *m_parser = nullptr;
    qint64 m_start = 0;
    int m_depth = 0;
    /// The number of containers around a record.
    int m_recordDepth = 0;
    int m_outerKeys = 0;
    bool m_anyRecord = false;
    bool m_isOneRecord = false;
    qint64 m_steps = 0;
};

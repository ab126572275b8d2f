#pragma once

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

/// What the process of a script tells its parent, one after the other in a pipe.
struct ScriptRecord
{
    enum class Kind : char {
        Alive = 'A',      ///< work goes on, nothing to tell yet
        Values = 'V',     ///< the values of the next row of the result
        Kept = 'K',       ///< the next row of the input is kept
        Dropped = 'D',    ///< it is not
        RowError = 'E',   ///< the script threw for the next row of the input; text and line
        Failure = 'F',    ///< nothing comes of it; text and line
        Header = 'H',     ///< the names of the result
        Calculated = 'N', ///< how many numbers could not be calculated, in `number`
        End = 'Z'         ///< all has been told
    };

    Kind kind = Kind::Alive;
    qint32 number = 0;
    /// UTF-8; valid as long as the bytes they were read from.
    std::vector<std::string_view> texts;

    /// Appends the record's bytes. The form is for one machine only.
    void appendTo(std::string *bytes) const
    {
        const auto put = [bytes](quint32 value) {
            bytes->append(reinterpret_cast<const char *>(&value), sizeof value);
        };
        const size_t start = bytes->size();
        put(0);
        bytes->push_back(char(kind));
        put(quint32(number));
        put(quint32(texts.size()));
        for (const std::string_view text : texts) {
            put(quint32(text.size()));
            bytes->append(text);
        }
        const auto size = quint32(bytes->size() - start);
        std::memcpy(&(*bytes)[start], &size, sizeof size);
    }

    /// Takes the next whole record off the bytes; false when there is none yet.
    bool takeFrom(std::string_view *bytes)
    {
        const auto get = [](const char *at) {
            quint32 value = 0;
            std::memcpy(&value, at, sizeof value);
            return value;
        };
        if (bytes->size() < sizeof(quint32) || bytes->size() < get(bytes->data())) {
            return false;
        }
        const quint32 size = get(bytes->data());
        const char *at = bytes->data() + sizeof(quint32);
        kind = Kind(*at++);
        number = qint32(get(at));
        at += sizeof(quint32);
        texts.resize(get(at));
        at += sizeof(quint32);
        for (std::string_view &text : texts) {
            const quint32 length = get(at);
            text = {at + sizeof length, length};
            at += sizeof length + length;
        }
        bytes->remove_prefix(size);
        return true;
    }
};

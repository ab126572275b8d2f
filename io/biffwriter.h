#pragma once

#include "spilledbytes.h"

#include <QtEndian>
#include <string>
#include <string_view>
#include <vector>

/// Appends a number in the way of the file, the low byte first.
template <class Number>
void appendBiff(Number number, std::string *out)
{
    char bytes[sizeof number];
    qToLittleEndian(number, bytes);
    out->append(bytes, sizeof number);
}

/// Puts a number in place of the one that is there.
template <class Number>
void patchBiff(Number number, size_t at, std::string *out)
{
    qToLittleEndian(number, out->data() + at);
}

/// Appends a record whose data are not longer than one can have.
void appendBiffRecord(quint16 id, std::string_view data, std::string *out);

/// A text as the file keeps it: one byte for each character when all of them fit, else two.
struct BiffText
{
    /// Keeps its buffers, so that many texts can be made one after the other.
    void set(std::string_view utf8);

    bool wide = false;
    size_t count = 0;
    std::string bytes;
};

/// Appends a text whose length takes one or two bytes.
void appendBiffText(std::string_view utf8, int lengthBytes, std::string *out);

/// Collects the texts that the cells of a workbook share, as the records that hold them. Equal
/// texts are shared as long as there are not very many different ones, so that the memory that
/// this takes has a limit.
class BiffTexts
{
public:
    BiffTexts();

    /// The texts go on behind old ones, which are in the workbook already.
    void continueAfter(quint32 oldTexts);
    /// The number of a text for one more cell. The bytes must stay until the workbook is written.
    quint32 add(std::string_view utf8);

    quint32 uses() const { return m_uses; }
    /// Old texts and new ones.
    quint32 count() const { return m_count; }
    /// To be called when all texts are there.
    void finish();
    /// The first record, when there are no old texts. It is empty when there are no texts at all.
    const std::string &firstRecord() const { return m_first; }
    /// The records that go on with it, or with the old texts.
    SpilledBytes &moreRecords() { return m_more; }
    bool hasFailed() const { return m_failed; }

private:
    struct Known
    {
        const char *bytes;
        quint32 size;
        quint32 number;
        size_t hash;
    };

    void write(std::string_view utf8);
    void endRecord();
    size_t room() const;
    void grow();
    size_t slotOf(std::string_view utf8, size_t hash) const;

    std::vector<Known> m_known;
    size_t m_knownCount = 0;
    quint32 m_uses = 0;
    quint32 m_oldCount = 0;
    quint32 m_count = 0;
    BiffText m_text;
    std::string m_data;
    std::string m_record;
    std::string m_first;
    SpilledBytes m_more;
    bool m_continues = false;
    bool m_failed = false;
};

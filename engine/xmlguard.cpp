#include "xmlguard.h"

#include <QCoreApplication>
#include <QStringView>
#include <QVarLengthArray>
#include <algorithm>

namespace {

// The parser recurses, and a document of ours is five elements deep.
constexpr int maximumDepth = 200;
constexpr int maximumAttributes = 1000;

class XmlGuard
{
    Q_DECLARE_TR_FUNCTIONS(XmlGuard)

public:
    explicit XmlGuard(const QString &text)
        : m_text(text)
        , m_view(text)
    {
    }

    bool check(XmlFault *fault);

private:
    bool startsWith(QLatin1String start) const { return m_view.mid(m_at).startsWith(start); }
    bool skipPast(QLatin1String end);
    bool skipDocumentType();
    bool skipStartTag();
    bool readAttribute();
    bool skipQuoted();
    void skipSpace();
    bool atEnd() const { return m_at >= m_view.size(); }
    QChar now() const { return m_view[m_at]; }
    bool fail(const QString &message);

    const QString &m_text;
    QStringView m_view;
    qsizetype m_at = 0;
    int m_depth = 0;
    QVarLengthArray<QStringView, 64> m_attributes;
    QString m_message;
};

bool XmlGuard::check(XmlFault *fault)
{
    bool ok = true;
    while (ok) {
        const int next = m_text.indexOf(QLatin1Char('<'), int(m_at));
        if (next < 0) {
            return true;
        }
        m_at = next;
        if (startsWith(QLatin1String("<!--"))) {
            m_at += 4;
            ok = skipPast(QLatin1String("-->"));
        } else if (startsWith(QLatin1String("<![CDATA["))) {
            ok = skipPast(QLatin1String("]]>"));
        } else if (startsWith(QLatin1String("<?"))) {
            ok = skipPast(QLatin1String("?>"));
        } else if (startsWith(QLatin1String("<!"))) {
            ok = skipDocumentType();
        } else if (startsWith(QLatin1String("</"))) {
            --m_depth;
            ok = skipPast(QLatin1String(">"));
        } else {
            ok = skipStartTag();
        }
    }
    if (m_message.isEmpty()) {
        return true;
    }
    const QStringView before = m_view.left(m_at);
    fault->message = m_message;
    fault->line = 1 + int(std::count(before.begin(), before.end(), QLatin1Char('\n')));
    fault->column = int(m_at - (m_text.lastIndexOf(QLatin1Char('\n'), int(m_at) - 1) + 1)) + 1;
    return false;
}

// An end that never comes stops the check without a fault: the parser has the words for it.
bool XmlGuard::skipPast(QLatin1String end)
{
    const int found = m_text.indexOf(end, int(m_at));
    m_at = found < 0 ? m_view.size() : found + end.size();
    return found >= 0;
}

bool XmlGuard::skipDocumentType()
{
    while (!atEnd()) {
        if (now() == QLatin1Char('[')) {
            return fail(tr("entity declarations are not accepted"));
        }
        if (now() == QLatin1Char('>')) {
            ++m_at;
            return true;
        }
        if (now() != QLatin1Char('"') && now() != QLatin1Char('\'')) {
            ++m_at;
        } else if (!skipQuoted()) {
            return false;
        }
    }
    return false;
}

bool XmlGuard::skipStartTag()
{
    if (++m_depth > maximumDepth) {
        return fail(tr("elements are nested too deeply"));
    }
    m_attributes.clear();
    ++m_at;
    while (!atEnd() && !now().isSpace() && now() != QLatin1Char('>') && now() != QLatin1Char('/')) {
        ++m_at;
    }
    for (skipSpace(); !atEnd(); skipSpace()) {
        if (now() == QLatin1Char('>')) {
            ++m_at;
            std::sort(m_attributes.begin(), m_attributes.end());
            const auto twice = std::adjacent_find(m_attributes.begin(), m_attributes.end());
            return twice == m_attributes.end() ||
                   fail(tr("attribute '%1' occurs twice").arg(twice->toString()));
        }
        if (now() == QLatin1Char('/')) {
            --m_depth;
            ++m_at;
        } else if (!readAttribute()) {
            return false;
        }
    }
    return false;
}

bool XmlGuard::readAttribute()
{
    const qsizetype start = m_at;
    while (!atEnd() && !now().isSpace() && now() != QLatin1Char('=') && now() != QLatin1Char('>')) {
        ++m_at;
    }
    m_attributes.append(m_view.mid(start, m_at - start));
    if (m_attributes.size() > maximumAttributes) {
        return fail(tr("an element has too many attributes"));
    }
    skipSpace();
    if (atEnd() || now() != QLatin1Char('=')) {
        return fail(tr("attribute without a value"));
    }
    ++m_at;
    skipSpace();
    if (atEnd() || (now() != QLatin1Char('"') && now() != QLatin1Char('\''))) {
        return fail(tr("attribute value without quotes"));
    }
    return skipQuoted();
}

bool XmlGuard::skipQuoted()
{
    const int end = m_text.indexOf(now(), int(m_at) + 1);
    m_at = end < 0 ? m_view.size() : end + 1;
    return end >= 0;
}

void XmlGuard::skipSpace()
{
    while (!atEnd() && now().isSpace()) {
        ++m_at;
    }
}

bool XmlGuard::fail(const QString &message)
{
    m_message = message;
    return false;
}

} // namespace

bool checkXml(const QString &text, XmlFault *fault)
{
    return XmlGuard(text).check(fault);
}

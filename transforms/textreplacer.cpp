#include "textreplacer.h"

#include "codepoints.h"
#include "messages.h"

#include <QCoreApplication>
#include <algorithm>

namespace {

bool isWordCharacter(uint c)
{
    return QChar::isLetterOrNumber(c) || c == '_';
}

/// The character that ends before a place.
uint codePointBefore(const QString &text, int place)
{
    const bool isPair =
        place > 1 && text[place - 1].isLowSurrogate() && text[place - 2].isHighSurrogate();
    return isPair ? CodePoints::at(text, place - 2) : text[place - 1].unicode();
}

} // namespace

TextReplacer::TextReplacer(const ReplaceTerm &term, const Dataset &table, bool caseSensitive,
                           Messages *messages)
    : m_term(term)
    , m_sensitivity(caseSensitive ? Qt::CaseSensitive : Qt::CaseInsensitive)
    , m_regexReplacement(term.replace)
{
    if (term.kind != ReplaceTerm::Kind::Regex) {
        m_templates.emplace_back(term.replace, table);
        return;
    }
    const auto regex = Regex::compiled(term.find, caseSensitive, messages);
    m_isValid = regex.has_value();
    m_regex = regex.value_or(QRegularExpression());
    for (const RegexReplacement::Part &part : m_regexReplacement.parts()) {
        m_templates.emplace_back(part.text, table);
    }
}

bool TextReplacer::dependsOnRow() const
{
    return std::any_of(m_templates.begin(), m_templates.end(),
                       [](const ColumnTemplate &each) { return each.hasVariables(); });
}

QString TextReplacer::replaced(const QString &text, int row)
{
    if (m_term.kind == ReplaceTerm::Kind::Cell) {
        if (text.compare(m_term.find, m_sensitivity) != 0) {
            return text;
        }
        m_found = true;
        return m_templates.front().expanded(row);
    }
    if (m_term.find.isEmpty()) {
        return text;
    }
    return m_term.kind == ReplaceTerm::Kind::Regex ? replacedRegex(text, row)
                                                   : replacedText(text, row);
}

QString TextReplacer::replacedText(const QString &text, int row)
{
    int at = text.indexOf(m_term.find, 0, m_sensitivity);
    if (at < 0) {
        return text;
    }
    const bool wholeWords = m_term.kind == ReplaceTerm::Kind::Word;
    QString result;
    QString replacement;
    bool isExpanded = false;
    int done = 0;
    while (at >= 0) {
        if (wholeWords && !isWholeWord(text, at)) {
            at = text.indexOf(m_term.find, at + 1, m_sensitivity);
            continue;
        }
        if (!isExpanded) {
            replacement = m_templates.front().expanded(row);
            isExpanded = true;
        }
        m_found = true;
        result += text.midRef(done, at - done);
        result += replacement;
        done = at + m_term.find.size();
        at = text.indexOf(m_term.find, done, m_sensitivity);
    }
    result += text.midRef(done);
    return result;
}

QString TextReplacer::replacedRegex(const QString &text, int row)
{
    const auto result =
        m_regexReplacement.replaced(text, m_regex, &m_found, [this, row](size_t part) {
            return m_templates[part].expanded(row);
        });
    m_failures += result ? 0 : 1;
    return result.value_or(text);
}

bool TextReplacer::isWholeWord(const QString &text, int at) const
{
    const int end = at + m_term.find.size();
    return (at == 0 || !isWordCharacter(codePointBefore(text, at))) &&
           (end == text.size() || !isWordCharacter(CodePoints::at(text, end)));
}

void TextReplacer::report(Messages *messages) const
{
    if (!m_found) {
        messages->note(
            QCoreApplication::translate("TextReplacer", "Term '%1' not found.").arg(m_term.find));
    }
    Regex::tellFailures(m_term.find, m_failures, messages);
}

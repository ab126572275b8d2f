#include "regexreplacement.h"

#include "messages.h"
#include "texts.h"

#include <QCoreApplication>

std::optional<QRegularExpression> Regex::compiled(const QString &pattern, bool caseSensitive,
                                                  Messages *messages)
{
    QRegularExpression::PatternOptions patternOptions =
        QRegularExpression::UseUnicodePropertiesOption;
    if (!caseSensitive) {
        patternOptions |= QRegularExpression::CaseInsensitiveOption;
    }
    QRegularExpression regex(pattern, patternOptions);
    if (!regex.isValid()) {
        messages->warn(
            QCoreApplication::translate("Regex",
                                        "Regular expression '%1' is invalid: %2 at position %3.")
                .arg(pattern, regex.errorString(), Texts::count(regex.patternErrorOffset())));
        return std::nullopt;
    }
    regex.optimize();
    return regex;
}

void Regex::tellFailures(const QString &pattern, qint64 count, Messages *messages)
{
    if (count > 0) {
        messages->warn(QCoreApplication::translate(
                           "Regex", "Regular expression '%1' needs too many steps for %2 value(s), "
                                    "which are left as they are.")
                           .arg(pattern, Texts::count(count)));
    }
}

RegexReplacement::RegexReplacement(const QString &text)
{
    Part part;
    for (int i = 0; i < text.size(); ++i) {
        const QChar next = i + 1 < text.size() ? text[i + 1] : QChar();
        if (text[i] != QLatin1Char('\\')) {
            part.text += text[i];
            continue;
        }
        if (next >= QLatin1Char('0') && next <= QLatin1Char('9')) {
            part.group = next.digitValue();
            m_parts.push_back(part);
            part = Part();
        } else if (next == QLatin1Char('t')) {
            part.text += QLatin1Char('\t');
        } else if (next == QLatin1Char('n')) {
            part.text += QLatin1Char('\n');
        } else if (next == QLatin1Char('\\')) {
            part.text += next;
        } else {
            part.text += text[i];
            continue;
        }
        ++i;
    }
    m_parts.push_back(part);
}

std::optional<QString> RegexReplacement::replaced(const QString &text,
                                                  const QRegularExpression &regex, bool *found,
                                                  const PartText &partText) const
{
    QString result;
    int done = 0;
    QRegularExpressionMatchIterator matches = regex.globalMatch(text);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        *found = true;
        result += text.midRef(done, match.capturedStart() - done);
        for (size_t i = 0; i < m_parts.size(); ++i) {
            result += partText ? partText(i) : m_parts[i].text;
            if (m_parts[i].group >= 0) {
                result += match.capturedRef(m_parts[i].group);
            }
        }
        done = match.capturedEnd();
    }
    // An iterator is also invalid behind an empty match at the end of the text.
    if (!matches.isValid() && !regex.match(text, done).isValid()) {
        return std::nullopt;
    }
    result += text.midRef(done);
    return result;
}

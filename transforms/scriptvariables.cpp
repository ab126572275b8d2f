#include "scriptvariables.h"

#include <QHash>

namespace {

/// Walks through a script and tells code from quotes, comments and regular expressions.
class ScriptScanner
{
public:
    ScriptScanner(const QString &script, const Dataset &table)
        : m_script(script)
        , m_table(table)
    {
    }

    ScriptVariables scanned()
    {
        while (m_at < m_script.size()) {
            step();
        }
        return m_result;
    }

private:
    QChar now() const { return m_script[m_at]; }
    bool isAt(const char *text) const
    {
        return m_script.midRef(m_at).startsWith(QLatin1String(text));
    }

    void step()
    {
        const QChar c = now();
        if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            copyText(quoteEnd(c));
        } else if (isAt("//")) {
            const int end = m_script.indexOf(QLatin1Char('\n'), m_at);
            copy(end < 0 ? m_script.size() : end);
        } else if (isAt("/*")) {
            const int end = m_script.indexOf(QLatin1String("*/"), m_at + 2);
            copy(end < 0 ? m_script.size() : end + 2);
        } else if (c == QLatin1Char('/') && expectsValue()) {
            copyText(regexEnd());
        } else if (c == QLatin1Char('`')) {
            copyText(templateTextEnd());
        } else if (isAt("$(")) {
            copyVariable();
        } else {
            if (c == QLatin1Char('{')) {
                m_braces.append(false);
            } else if (c == QLatin1Char('}') && !m_braces.isEmpty() && m_braces.takeLast()) {
                copyText(templateTextEnd()); // the template goes on behind its expression
                return;
            }
            copy(m_at + 1);
        }
    }

    /// After an operator, an opening bracket or a word such as "return" a slash begins a regular
    /// expression, elsewhere it divides.
    bool expectsValue() const
    {
        int last = m_at - 1;
        while (last >= 0 && m_script[last].isSpace()) {
            --last;
        }
        if (last < 0) {
            return true;
        }
        if (QStringLiteral("(,=:[!&|?{};+-*%<>~^").contains(m_script[last])) {
            return true;
        }
        int first = last;
        while (first >= 0 && m_script[first].isLetter()) {
            --first;
        }
        const QString word = m_script.mid(first + 1, last - first);
        return word == QLatin1String("return") || word == QLatin1String("typeof") ||
               word == QLatin1String("case") || word == QLatin1String("in");
    }

    /// The end of a quoted text; it cannot go over a line end.
    int quoteEnd(QChar quote) const
    {
        for (int i = m_at + 1; i < m_script.size(); ++i) {
            if (m_script[i] == QLatin1Char('\\')) {
                ++i;
            } else if (m_script[i] == quote) {
                return i + 1;
            } else if (m_script[i] == QLatin1Char('\n')) {
                return i;
            }
        }
        return m_script.size();
    }

    int regexEnd() const
    {
        bool inClass = false;
        for (int i = m_at + 1; i < m_script.size() && m_script[i] != QLatin1Char('\n'); ++i) {
            if (m_script[i] == QLatin1Char('\\')) {
                ++i;
            } else if (m_script[i] == QLatin1Char('[')) {
                inClass = true;
            } else if (m_script[i] == QLatin1Char(']')) {
                inClass = false;
            } else if (m_script[i] == QLatin1Char('/') && !inClass) {
                return i + 1;
            }
        }
        return m_at + 1;
    }

    /// The end of a template's text: behind its last quote, or behind "${", where code begins.
    int templateTextEnd()
    {
        for (int i = m_at + 1; i < m_script.size(); ++i) {
            if (m_script[i] == QLatin1Char('\\')) {
                ++i;
            } else if (m_script[i] == QLatin1Char('`')) {
                return i + 1;
            } else if (m_script[i] == QLatin1Char('$') && i + 1 < m_script.size() &&
                       m_script[i + 1] == QLatin1Char('{')) {
                m_braces.append(true);
                return i + 2;
            }
        }
        return m_script.size();
    }

    void copy(int end)
    {
        m_result.script += m_script.midRef(m_at, end - m_at);
        m_at = end;
    }

    /// Copies text, and notes the columns that the user may have meant in it.
    void copyText(int end)
    {
        for (int i = m_script.indexOf(QLatin1String("$("), m_at); i >= 0 && i < end;
             i = m_script.indexOf(QLatin1String("$("), i + 2)) {
            const int close = m_script.indexOf(QLatin1Char(')'), i);
            if (close > 0 && close < end &&
                columnOf(m_script.mid(i + 2, close - i - 2)).isValid()) {
                addOnce(m_script.mid(i, close - i + 1), &m_result.quoted);
            }
        }
        copy(end);
    }

    void copyVariable()
    {
        const int close = m_script.indexOf(QLatin1Char(')'), m_at);
        if (close < 0) {
            copy(m_at + 2);
            return;
        }
        const QString name = m_script.mid(m_at + 2, close - m_at - 2);
        const ColIndex column = columnOf(name);
        if (!column.isValid()) {
            addOnce(m_script.mid(m_at, close - m_at + 1), &m_result.unknown);
            copy(m_at + 2);
            return;
        }
        m_result.script += identifierOf(column);
        m_at = close + 1;
    }

    ColIndex columnOf(const QString &name) const
    {
        bool isNumber = false;
        const int number = name.toInt(&isNumber);
        if (isNumber && number >= 1 && number <= m_table.columnCount().value()) {
            return ColIndex(number - 1);
        }
        return m_table.columnIndex(name);
    }

    QString identifierOf(ColIndex column)
    {
        for (size_t i = 0; i < m_result.columns.size(); ++i) {
            if (m_result.columns[i] == column) {
                return m_result.identifiers[int(i)];
            }
        }
        m_result.columns.push_back(column);
        m_result.identifiers.append(QStringLiteral("$column%1").arg(column.value() + 1));
        return m_result.identifiers.last();
    }

    static void addOnce(const QString &text, QStringList *list)
    {
        if (!list->contains(text)) {
            list->append(text);
        }
    }

    const QString &m_script;
    const Dataset &m_table;
    int m_at = 0;
    QList<bool> m_braces; // open ones; true: of an expression in a template
    ScriptVariables m_result;
};

} // namespace

ScriptVariables ScriptVariables::replaced(const QString &script, const Dataset &table)
{
    return ScriptScanner(script, table).scanned();
}

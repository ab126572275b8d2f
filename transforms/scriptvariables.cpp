#include "scriptvariables.h"

#include "columnvariables.h"

#include <QSet>

namespace {

bool isNamePart(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_') || c == QLatin1Char('$') ||
           c.isSurrogate();
}

/// After these words a slash begins a regular expression; after other names it divides.
bool isOperatorWord(const QString &word)
{
    static const QSet<QString> words = [] {
        QSet<QString> set;
        for (const char *const each : {"return", "typeof", "case", "in", "of", "delete", "void",
                                       "throw", "new", "instanceof", "else", "do", "yield"}) {
            set.insert(QLatin1String(each));
        }
        return set;
    }();
    return words.contains(word);
}

/// Walks through a script once, token by token, and writes the changed one.
class Rewriter
{
public:
    Rewriter(const QString &source, const Dataset &table, ScriptVariables *result)
        : m_source(source)
        , m_names(table)
        , m_result(result)
        , m_prefix(QStringLiteral("cell_"))
    {
        while (source.contains(m_prefix)) {
            m_prefix += QLatin1Char('_');
        }
    }

    void run()
    {
        while (m_at < m_source.size()) {
            step();
        }
    }

private:
    QChar at(int position) const
    {
        return position < m_source.size() ? m_source[position] : QChar();
    }
    bool startsHere(const char *text) const
    {
        return m_source.midRef(m_at).startsWith(QLatin1String(text));
    }
    void copyTo(int end)
    {
        end = qMin(end, m_source.size());
        m_result->script += m_source.midRef(m_at, end - m_at);
        m_at = end;
    }

    void step()
    {
        const QChar c = at(m_at);
        if (c.isSpace()) {
            copyTo(m_at + 1);
        } else if (startsHere("//")) {
            const int end = m_source.indexOf(QLatin1Char('\n'), m_at);
            copyTo(end < 0 ? m_source.size() : end);
        } else if (startsHere("/*")) {
            const int end = m_source.indexOf(QLatin1String("*/"), m_at + 2);
            copyTo(end < 0 ? m_source.size() : end + 2);
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            quoted(c);
        } else if (c == QLatin1Char('`') || (c == QLatin1Char('}') && endsInTemplate())) {
            templateText();
        } else if (c == QLatin1Char('/') && !m_afterValue) {
            regularExpression();
        } else if (startsHere("$(") && variable(QString(), QString())) {
            m_afterValue = true;
        } else if (isNamePart(c)) {
            name();
        } else {
            symbol(c);
        }
    }

    void name()
    {
        int end = m_at;
        while (end < m_source.size() && isNamePart(m_source[end])) {
            ++end;
        }
        m_afterValue = !isOperatorWord(m_source.mid(m_at, end - m_at));
        m_last = QLatin1Char('a');
        copyTo(end);
    }

    void symbol(QChar c)
    {
        if (!m_templates.empty() && c == QLatin1Char('{')) {
            ++m_templates.back();
        } else if (!m_templates.empty() && c == QLatin1Char('}')) {
            --m_templates.back();
        }
        m_afterValue = c == QLatin1Char(')') || c == QLatin1Char(']') || c == QLatin1Char('}');
        m_last = c;
        copyTo(m_at + 1);
    }

    /// Replaces the variable that begins here, if it names a column.
    bool variable(const QString &before, const QString &after)
    {
        int end = 0;
        const int column = m_names.findAt(m_source, m_at + 2, &end);
        if (column < 0) {
            ColumnNames::addUnknown(m_source, m_at + 2, &m_result->unknown);
            return false;
        }
        const QString lines(m_source.midRef(m_at, end - m_at).count(QLatin1Char('\n')),
                            QLatin1Char('\n'));
        m_result->script +=
            before + QLatin1Char('(') + parameter(column) + lines + QLatin1Char(')') + after;
        m_at = end;
        return true;
    }

    QString parameter(int column)
    {
        const QString result = m_prefix + QString::number(column + 1);
        if (!m_result->parameters.contains(result)) {
            m_result->parameters.append(result);
            m_result->columns.push_back(ColIndex(column));
        }
        return result;
    }

    void quoted(QChar quote)
    {
        const int begin = m_result->script.size();
        const QString before = quote + QStringLiteral("+");
        const QString after = QStringLiteral("+") + quote;
        bool changed = false;
        copyTo(m_at + 1);
        while (m_at < m_source.size() && at(m_at) != QLatin1Char('\n')) {
            if (at(m_at) == quote) {
                copyTo(m_at + 1);
                break;
            }
            if (at(m_at) == QLatin1Char('\\')) {
                copyTo(m_at + 2);
            } else if (startsHere("$(") && variable(before, after)) {
                changed = true;
            } else {
                copyTo(m_at + 1);
            }
        }
        if (changed) {
            const bool isKey = isPropertyKey();
            m_result->script.insert(begin, QLatin1Char(isKey ? '[' : '('));
            m_result->script += QLatin1Char(isKey ? ']' : ')');
        }
        m_afterValue = true;
        m_last = QLatin1Char('a');
    }

    /// A quoted text just read is the name in `{"name": value}`, where an expression needs "[ ]".
    bool isPropertyKey() const
    {
        int next = m_at;
        while (at(next).isSpace()) {
            ++next;
        }
        return at(next) == QLatin1Char(':') &&
               (m_last == QLatin1Char('{') || m_last == QLatin1Char(','));
    }

    bool endsInTemplate() const { return !m_templates.empty() && m_templates.back() == 0; }

    /// From the backquote, or from the bracket that ends a `${ }`, to the next one.
    void templateText()
    {
        if (at(m_at) == QLatin1Char('}')) {
            m_templates.pop_back();
        }
        copyTo(m_at + 1);
        while (m_at < m_source.size()) {
            if (at(m_at) == QLatin1Char('\\')) {
                copyTo(m_at + 2);
            } else if (at(m_at) == QLatin1Char('`')) {
                copyTo(m_at + 1);
                m_afterValue = true;
                m_last = QLatin1Char('a');
                return;
            } else if (startsHere("${")) {
                copyTo(m_at + 2);
                m_templates.push_back(0);
                m_afterValue = false;
                m_last = QLatin1Char('(');
                return;
            } else if (!startsHere("$(") || !variable(QStringLiteral("${"), QStringLiteral("}"))) {
                copyTo(m_at + 1);
            }
        }
    }

    void regularExpression()
    {
        bool inClass = false;
        int end = m_at + 1;
        while (end < m_source.size() && m_source[end] != QLatin1Char('\n')) {
            const QChar c = m_source[end];
            if (c == QLatin1Char('\\')) {
                ++end;
            } else if (c == QLatin1Char('[') || c == QLatin1Char(']')) {
                inClass = c == QLatin1Char('[');
            } else if (c == QLatin1Char('/') && !inClass) {
                ++end;
                break;
            }
            ++end;
        }
        copyTo(end);
        m_afterValue = true;
        m_last = QLatin1Char('a');
    }

    const QString &m_source;
    ColumnNames m_names;
    ScriptVariables *m_result;
    QString m_prefix;
    int m_at = 0;
    /// The last token ends a value: a slash divides.
    bool m_afterValue = false;
    /// The last symbol; 'a' stands for names and texts.
    QChar m_last;
    /// For each template that is open: the brackets open in its present `${ }`.
    std::vector<int> m_templates;
};

} // namespace

ScriptVariables::ScriptVariables(const QString &source, const Dataset &table)
{
    Rewriter(source, table, this).run();
}

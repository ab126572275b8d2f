#pragma once

#include <QRegularExpression>
#include <QString>
#include <functional>
#include <optional>
#include <vector>

struct Messages;

/// Regular expressions as all options of transforms understand them.
namespace Regex {

/// Compiled for a run, matching anywhere. Nothing, and a warning, when it is invalid.
std::optional<QRegularExpression> compiled(const QString &pattern, bool caseSensitive,
                                           Messages *messages);

/// Warns that the expression gave up on some values, if it did, because it needed too many steps.
void tellFailures(const QString &pattern, qint64 count, Messages *messages);

} // namespace Regex

/// A replacement text for regular expressions: `\0` stands for the match, `\1` to `\9` for groups,
/// `\t`, `\n` and `\\` for themselves; other backslashes are plain.
class RegexReplacement
{
public:
    explicit RegexReplacement(const QString &text);

    /// A text to be put in, then the group after it (-1: none).
    struct Part
    {
        QString text;
        int group = -1;
    };
    const std::vector<Part> &parts() const { return m_parts; }

    /// Gives the text of a part; by default it is taken as it stands.
    using PartText = std::function<QString(size_t part)>;
    /// The text with all matches replaced. Null when the expression gave up, because it needed too
    /// many steps. `found` becomes true when there is a match.
    std::optional<QString> replaced(const QString &text, const QRegularExpression &regex,
                                    bool *found, const PartText &partText = {}) const;

private:
    std::vector<Part> m_parts;
};

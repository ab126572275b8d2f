#include "xmlnames.h"

#include "textencoder.h"
#include "utf8.h"
#include "xmlevents.h"

#include <QCoreApplication>
#include <QVector>

namespace {

constexpr int mostProblems = 10;

struct XmlNames
{
    Q_DECLARE_TR_FUNCTIONS(XmlNames)
};

class Ignore final : public XmlHandler
{
public:
    bool beginElement(std::string_view, const char *const *) override { return true; }
    bool endElement() override { return true; }
    bool text(std::string_view) override { return true; }
};

bool isAscii(uint c)
{
    return c < 0x80;
}

bool isDigit(uint c)
{
    return c >= '0' && c <= '9';
}

QString characterText(uint codePoint)
{
    return QString::fromUcs4(&codePoint, 1);
}

bool isParsed(const QString &name)
{
    Ignore handler;
    XmlError error;
    return parseXml('<' + Utf8::encoded(name) + "/>", &handler, {}, &error) == XmlOutcome::Done;
}

bool mayFollow(uint c)
{
    return QChar::isLetter(c) || isDigit(c) || c == '_' || c == '-' || c == '.';
}

/// The letters of XML are fewer than those of Unicode.
bool isLetterOfXml(uint c, bool isFirst)
{
    return isAscii(c) || isParsed((isFirst ? QString() : QStringLiteral("a")) + characterText(c));
}

} // namespace

QStringList xmlNameProblems(const QString &name, const OutputCodec &codec)
{
    if (name.isEmpty()) {
        return {XmlNames::tr("empty name")};
    }
    QStringList problems;
    if (name.startsWith(QLatin1String("xml"), Qt::CaseInsensitive)) {
        problems.append(XmlNames::tr("starts with 'xml'"));
    }
    const QVector<uint> characters = name.toUcs4();
    const bool startsWithLetter = QChar::isLetter(characters.first()) || characters.first() == '_';
    if (!startsWithLetter) {
        problems.append(XmlNames::tr("doesn't start with a letter"));
    }
    const bool isUsual = std::all_of(characters.begin(), characters.end(), isAscii) ||
                         (isParsed(name) && codec.holds(name));
    for (int i = startsWithLetter ? 0 : 1; i < characters.size(); ++i) {
        const uint c = characters.at(i);
        if (mayFollow(c) && (isUsual || (codec.holds(c) && isLetterOfXml(c, i == 0)))) {
            continue;
        }
        const QString problem = XmlNames::tr("invalid character '%1'").arg(characterText(c));
        if (problems.size() >= mostProblems) {
            break;
        }
        if (!problems.contains(problem)) {
            problems.append(problem);
        }
    }
    return problems;
}

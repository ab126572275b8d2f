#include "vcardwriter.h"

#include "messages.h"
#include "outputoptions.h"
#include "texts.h"
#include "utf8.h"

#include <QCoreApplication>

namespace {

QString translated(const char *text)
{
    return QCoreApplication::translate("VCardWriter", text);
}

/// A name can neither end the line nor the property.
bool isPropertyName(const QString &name)
{
    return !name.isEmpty() && !name.contains(QLatin1Char(':')) &&
           !name.contains(QLatin1Char('\n')) && !name.contains(QLatin1Char('\r'));
}

} // namespace

VCardWriter::VCardWriter(const TextJob &job)
    : RecordFormat(job)
{
    useRealLineEnds();
    watchFor(":\n\r");
}

QString VCardWriter::syntax() const
{
    return QStringLiteral("BEGIN:VCARD VERSION:3.0 END:VCARD\\\r\n");
}

bool VCardWriter::prepare(Messages *messages, const Progress &)
{
    int odd = 0;
    QString example;
    bool hasVersion = false;
    for (QString name : dataset().columnNames()) {
        if (!isPropertyName(name)) {
            example = odd == 0 ? name : example;
            ++odd;
        }
        hasVersion = hasVersion || name.compare(QLatin1String("VERSION"), Qt::CaseInsensitive) == 0;
        name.replace(QLatin1Char('\n'), QLatin1Char(' '))
            .replace(QLatin1Char('\r'), QLatin1Char(' '));
        Field field;
        field.before = encodable(name) + ':';
        field.after = lineEnd();
        fields().push_back(std::move(field));
    }
    frame().firstRow = "BEGIN:VCARD" + lineEnd() + "VERSION:3.0" + lineEnd();
    frame().nextRow = frame().firstRow;
    frame().rowEnd = "END:VCARD" + lineEnd();
    frame().omitsEmpty = true;
    if (odd > 0) {
        warnOnce(messages,
                 translated(QT_TRANSLATE_NOOP("VCardWriter",
                                              "%1 column name(s) cannot be the name of a property, "
                                              "such as '%2'. Programs may misread the cards."))
                     .arg(Texts::count(odd), example));
    }
    if (hasVersion) {
        warnOnce(messages, translated(QT_TRANSLATE_NOOP(
                               "VCardWriter", "Every card begins with its version. The column "
                                              "'VERSION' gives it a second time; you may want to "
                                              "leave it out with a 'Remove Cols' transform.")));
    }
    return true;
}

void VCardWriter::begin(bool) {}

bool VCardWriter::canContinue(const OldText &old, QString *)
{
    return old.head.trimmed().startsWith(QLatin1String("BEGIN:VCARD"), Qt::CaseInsensitive) &&
           old.tail.trimmed().endsWith(QLatin1String("END:VCARD"), Qt::CaseInsensitive);
}

bool VCardWriter::escapeCharacter(uint codePoint, std::string *out)
{
    if (codePoint == ':') {
        out->append("\\:");
        return true;
    }
    if (codePoint == '\n' || codePoint == '\r') {
        out->push_back(' ');
        return true;
    }
    return false;
}

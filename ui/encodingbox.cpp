#include "encodingbox.h"

#include "optionform.h"
#include "textdecoder.h"

#include <QCompleter>
#include <QCoreApplication>
#include <QTextCodec>
#include <set>

namespace {

struct EncodingBox
{
    Q_DECLARE_TR_FUNCTIONS(EncodingBox)
};

constexpr const char *usualEncodings[] = {
    "UTF-8",        "UTF-16",     "UTF-16LE",    "UTF-16BE",     "UTF-32",
    "windows-1252", "ISO-8859-1", "ISO-8859-15", "windows-1250", "windows-1251",
    "Shift_JIS",    "GB18030",    "Big5",        "EUC-KR"};

/// Each encoding once, under the name that the codec gives itself.
QStringList otherEncodings(const QStringList &usual)
{
    std::set<QString> names;
    for (const int mib : QTextCodec::availableMibs()) {
        if (const QTextCodec *codec = QTextCodec::codecForMib(mib)) {
            names.insert(QString::fromLatin1(codec->name()));
        }
    }
    QStringList others;
    for (const QString &name : names) {
        if (!usual.contains(name, Qt::CaseInsensitive) && name != QLatin1String("System")) {
            others.append(name);
        }
    }
    return others;
}

} // namespace

QComboBox *makeEncodingBox(bool withAutomatic, QWidget *parent)
{
    QComboBox *box = makeBox(parent);
    box->setEditable(true);
    box->setInsertPolicy(QComboBox::NoInsert);
    QStringList usual;
    for (const char *name : usualEncodings) {
        if (QTextCodec::codecForName(name)) {
            usual.append(QLatin1String(name));
        }
    }
    if (withAutomatic) {
        box->addItem(QStringLiteral("Automatic"));
    }
    box->addItems(usual);
    box->insertSeparator(box->count());
    box->addItems(otherEncodings(usual));
    box->completer()->setCompletionMode(QCompleter::PopupCompletion);
    box->completer()->setFilterMode(Qt::MatchContains);
    return box;
}

QString encodingProblem(const QString &text, bool withAutomatic)
{
    if (text.trimmed().isEmpty()) {
        return EncodingBox::tr("Choose an encoding, or type its name.");
    }
    const bool isKnown = (withAutomatic && TextSource::isAutomatic(text)) ||
                         QTextCodec::codecForName(text.toLatin1());
    return isKnown ? QString() : EncodingBox::tr("Encoding '%1' is not known.").arg(text);
}

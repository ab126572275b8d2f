#include "delimitertext.h"

QString delimiterFromText(const QString &typed)
{
    QString result;
    for (int i = 0; i < typed.size(); ++i) {
        const QString escapes = QStringLiteral("tnr\\");
        const int escape = typed[i] == QLatin1Char('\\') && i + 1 < typed.size()
                               ? escapes.indexOf(typed[i + 1])
                               : -1;
        if (escape < 0) {
            result += typed[i];
        } else {
            result += QStringLiteral("\t\n\r\\").at(escape);
            ++i;
        }
    }
    return result;
}

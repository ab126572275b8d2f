#pragma once

#include "tables.h"
#include "transform.h"
#include "transformparameter.h"

#include <QList>
#include <QPair>
#include <memory>

/// A text in which a bar stands for U+001F, the separator of stored lists.
inline QString stored(const QString &text)
{
    return QString(text).replace(QLatin1Char('|'), QChar(0x1F));
}

/// Keys and stored texts of options.
using OptionTexts = QList<QPair<const char *, QString>>;

/// A transform with some options set, ready to run.
template <class Type>
std::unique_ptr<Type> transformWith(const OptionTexts &options, const UpstreamItem *item = nullptr)
{
    auto transform = std::make_unique<Type>();
    transform->defineParameters(item ? QList<const UpstreamItem *>{item}
                                     : QList<const UpstreamItem *>());
    for (const auto &[key, value] : options) {
        TransformParameter *const parameter = transform->parameter(QString::fromLatin1(key));
        if (!parameter || !parameter->setValueText(stored(value))) {
            qFatal("option %s does not take '%s'", key, qPrintable(value));
        }
    }
    transform->resetRun();
    return transform;
}

/// "a|b|c" as cells.
inline QStringList cells(const char *utf8)
{
    return QString::fromUtf8(utf8).split(QLatin1Char('|'));
}

/// Rows separated by ";", cells by "|".
inline QList<QStringList> rowsOf(const char *utf8)
{
    QList<QStringList> rows;
    const QStringList lines = QString::fromUtf8(utf8).split(QLatin1Char(';'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        rows.append(line.split(QLatin1Char('|')));
    }
    return rows;
}

/// "A|B:1|2;3|4" as a table; without ":" there is no header.
inline Dataset parsed(const QString &text)
{
    const int colon = text.indexOf(QLatin1Char(':'));
    const QStringList names = colon > 0 ? text.left(colon).split(QLatin1Char('|')) : QStringList();
    return table(names, rowsOf(text.mid(colon + 1).toUtf8().constData()));
}

inline QString written(const Dataset &dataset)
{
    QStringList rows;
    for (int row = 0; row < dataset.rowCount(); ++row) {
        QStringList values;
        for (ColIndex column(0); column < dataset.columnCount(); ++column) {
            values.append(dataset.cell(RowIndex(row), column));
        }
        rows.append(values.join(QLatin1Char('|')));
    }
    const QString body = rows.join(QLatin1Char(';'));
    return dataset.hasHeader()
               ? QStringLiteral("%1:%2").arg(dataset.header().join(QLatin1Char('|')), body)
               : body;
}

Q_DECLARE_METATYPE(Dataset)
Q_DECLARE_METATYPE(OptionTexts)

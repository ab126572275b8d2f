#pragma once

#include <QList>
#include <QString>
#include <QStringList>

/// The groups of transform types, in the order of the palette's menu and filter.
enum class TransformCategory : qint32 {
    Merge = 1,
    Column = 2,
    Row = 3,
    Format = 4,
    Analysis = 5,
    Other = 6
};

namespace TransformCategories {

QList<TransformCategory> all();
/// "Merge".
QString label(TransformCategory category);
/// "&Merge".
QString menuText(TransformCategory category);
/// "&All", the first entry of the filter.
QString allMenuText();
/// Words that find every transform of the category.
QStringList searchWords(TransformCategory category);

} // namespace TransformCategories

#include "transformcategory.h"

#include <QCoreApplication>
#include <iterator>

namespace {

struct Category
{
    TransformCategory category;
    const char *menuText;
    const char *searchWords;
};

constexpr Category categories[] = {
    {TransformCategory::Merge, QT_TRANSLATE_NOOP("TransformCategory", "&Merge"), "blends merges"},
    {TransformCategory::Column, QT_TRANSLATE_NOOP("TransformCategory", "&Column"), "columns"},
    {TransformCategory::Row, QT_TRANSLATE_NOOP("TransformCategory", "&Row"), "rows"},
    {TransformCategory::Format, QT_TRANSLATE_NOOP("TransformCategory", "&Format"),
     "formatting formats"},
    {TransformCategory::Analysis, QT_TRANSLATE_NOOP("TransformCategory", "Anal&ysis"),
     "analyse analyze analysis"},
    {TransformCategory::Other, QT_TRANSLATE_NOOP("TransformCategory", "&Other"), ""},
};

const Category &entry(TransformCategory category)
{
    const int index = int(category) - int(TransformCategory::Merge);
    Q_ASSERT(index >= 0 && index < int(std::size(categories)));
    return categories[index];
}

} // namespace

QList<TransformCategory> TransformCategories::all()
{
    QList<TransformCategory> list;
    for (const Category &category : categories) {
        list.append(category.category);
    }
    return list;
}

QString TransformCategories::label(TransformCategory category)
{
    return menuText(category).remove(QLatin1Char('&'));
}

QString TransformCategories::menuText(TransformCategory category)
{
    return QCoreApplication::translate("TransformCategory", entry(category).menuText);
}

QString TransformCategories::allMenuText()
{
    return QCoreApplication::translate("TransformCategory", "&All");
}

QStringList TransformCategories::searchWords(TransformCategory category)
{
    return QString::fromLatin1(entry(category).searchWords)
        .split(QLatin1Char(' '), Qt::SkipEmptyParts);
}

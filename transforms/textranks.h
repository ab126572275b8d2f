#pragma once

#include "progress.h"

#include <QtGlobal>
#include <string_view>
#include <vector>

/// How texts are put in order.
struct TextOrder
{
    bool caseSensitive = true;
    /// By the collation of the default locale, else by UTF-16 code units.
    bool localeAware = false;
};

/// Sets the place of each text among the distinct texts in their order, from 0; texts that compare
/// equal get the same. False when the user asked to stop.
bool rankTexts(const std::vector<std::string_view> &texts, const TextOrder &order,
               const Progress &progress, std::vector<quint32> *ranks);

/// The same for items whose order `less` gives, numbered in `sorted`.
template <class Item, class Less>
void rankSorted(const std::vector<Item> &sorted, const Less &less, std::vector<quint32> *ranks)
{
    ranks->resize(sorted.size());
    quint32 rank = 0;
    for (size_t i = 0; i < sorted.size(); ++i) {
        if (i > 0 && less(sorted[i - 1], sorted[i])) {
            ++rank;
        }
        (*ranks)[sorted[i].number] = rank;
    }
}

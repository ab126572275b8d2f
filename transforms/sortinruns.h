#pragma once

#include "progress.h"

#include <algorithm>
#include <cstddef>
#include <vector>

/// Sorts short runs with `sortRun(begin, end)` and merges them, and asks before each step whether
/// to go on; false when not, with the items in any order. Safe with an order that contradicts
/// itself when `sortRun` is.
template <class Item, class Less, class SortRun>
bool sortInRuns(std::vector<Item> *items, const Less &less, const SortRun &sortRun,
                const Progress &progress)
{
    constexpr size_t runSize = size_t(1) << 16;
    const size_t size = items->size();
    int passes = 1;
    for (size_t width = runSize; width < size; width *= 2) {
        ++passes;
    }
    const auto goOn = [&](int pass, size_t at) {
        return reportProgress(progress, (pass + double(at) / double(size)) / passes);
    };

    const auto at = [](std::vector<Item> *list, size_t place) {
        return list->begin() + std::ptrdiff_t(place);
    };
    for (size_t begin = 0; begin < size; begin += runSize) {
        if (!goOn(0, begin)) {
            return false;
        }
        sortRun(at(items, begin), at(items, std::min(size, begin + runSize)));
    }
    std::vector<Item> merged(passes > 1 ? size : 0);
    int pass = 1;
    for (size_t width = runSize; width < size; width *= 2, ++pass) {
        for (size_t begin = 0; begin < size; begin += 2 * width) {
            if (!goOn(pass, begin)) {
                return false;
            }
            const auto middle = at(items, std::min(size, begin + width));
            const auto end = at(items, std::min(size, begin + 2 * width));
            std::merge(at(items, begin), middle, middle, end, at(&merged, begin), less);
        }
        items->swap(merged);
    }
    return true;
}

/// The same with std::sort, for orders without contradictions.
template <class Item, class Less>
bool sortInRuns(std::vector<Item> *items, const Less &less, const Progress &progress)
{
    return sortInRuns(
        items, less, [&less](auto begin, auto end) { std::sort(begin, end, less); }, progress);
}

#pragma once

#include <QStringView>

/// The Levenshtein distance of two texts (insertions, deletions and substitutions of one UTF-16
/// code unit), or limit + 1 when it is greater than the limit. Cheap when the limit is small.
int editDistance(QStringView a, QStringView b, int limit);

/// How alike two texts are, from 0 to 100 per cent of the longer one's length, rounded down; -1
/// when they are further apart than the threshold (in per cent) allows. Two empty texts are 100.
int fuzzySimilarity(QStringView a, QStringView b, int threshold);

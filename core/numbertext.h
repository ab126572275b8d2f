#pragma once

#include <QString>

/// A number in the default locale's form. `format` and `precision` as for QLocale::toString():
/// 'f' with decimals, 'e' and 'g' with digits. Without `keepGroupSeparator` every group separator
/// is left out.
QString numberToText(double number, char format, int precision, bool keepGroupSeparator);

/// How transforms write a calculated number: whole numbers below 1e15 as such, others with up to
/// 15 significant digits, so that 0.1 + 0.2 gives 0.3; no group separators. NaN and the infinities
/// give an empty text.
QString plainNumberText(double number);

#pragma once

#include <string>
#include <string_view>

/// Makes the tokens of an XLS workbook (BIFF8) from a formula as one types it, without the "=":
/// numbers, texts, TRUE and FALSE, cells and ranges of the same sheet, operators and the most usual
/// functions. Answers false, and leaves `tokens` undefined, for anything else.
bool compileBiffFormula(std::string_view formula, std::string *tokens);

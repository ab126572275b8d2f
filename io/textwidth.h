#pragma once

#include <string_view>

/// How many columns of a fixed-width font a text takes: two for East Asian wide characters and
/// pictures, none for combining marks and control characters.
int textWidth(std::string_view utf8);

#include "textformat.h"

bool TextFormat::check(Messages *) const
{
    return true;
}

bool TextFormat::prepare(Messages *, const Progress &)
{
    return true;
}

bool TextFormat::canContinue(const OldText &, QString *)
{
    return true;
}

void TextFormat::resume(bool) {}

void TextFormat::end() {}

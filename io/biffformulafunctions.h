#pragma once

#include <QtGlobal>
#include <string>

/// A function of formulas, as the tokens of an XLS workbook know it.
struct BiffFunction
{
    const char *name;
    quint16 number;
    int least;
    int most;
    /// Classes of the arguments; the last one stands for all that follow.
    const char *classes;
    /// Its result may differ each time that it is calculated.
    bool isVolatile = false;
};

/// The function of that name, in capitals; null for one that is not known here.
const BiffFunction *findBiffFunction(const std::string &name);

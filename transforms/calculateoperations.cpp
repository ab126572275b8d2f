#include "calculateoperations.h"

#include <QtGlobal>

namespace {

void add(const char *group, CalculationOperations operations, CalculationOperations *all)
{
    for (CalculationOperation &operation : operations) {
        operation.group = group;
        all->push_back(std::move(operation));
    }
}

CalculationOperations made()
{
    using namespace CalculateOperations;
    CalculationOperations list;
    add(QT_TRANSLATE_NOOP("Calculate", "Arithmetic"), arithmetic(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Rounding"), rounding(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Exponents and logs"), logarithms(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Trigonometry"), trigonometry(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Bits"), bits(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Comparison"), comparisons(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Logic"), logic(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Text"), texts(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Date to number"), dateToNumber(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Date to text"), dateToText(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "To a date"), toDate(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Between dates"), betweenDates(), &list);
    add(QT_TRANSLATE_NOOP("Calculate", "Times"), times(), &list);
    return list;
}

} // namespace

const CalculationOperations &CalculateOperations::all()
{
    static const CalculationOperations list = made();
    return list;
}

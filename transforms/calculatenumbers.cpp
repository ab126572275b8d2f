#include "calculateoperations.h"

#include <QtMath>
#include <cmath>
#include <limits>
#include <numeric>
#include <optional>

namespace {

using Operand = CalculationOperand;
using Operation = CalculationOperation;
using Result = CalculationResult;
using Takes = CalculationOperation::Takes;

constexpr double noNumber = std::numeric_limits<double>::quiet_NaN();

Operation number(const char *name, const char *help, double (*kernel)(double))
{
    return {name, help, Takes::Number, Takes::Nothing,
            [kernel](const Operand &a, const Operand &) { return Result(kernel(a.number)); }};
}

Operation numbers(const char *name, const char *help, double (*kernel)(double, double))
{
    return {name, help, Takes::Number, Takes::Number, [kernel](const Operand &a, const Operand &b) {
                return Result(kernel(a.number, b.number));
            }};
}

/// An operation for which an empty operand is replaced by the other one.
Operation ofEither(const char *name, const char *help, double (*kernel)(double, double))
{
    Operation operation = numbers(name, help, kernel);
    operation.empties = Operation::Empties::UseOther;
    return operation;
}

Result resultOf(const std::optional<qint64> &integer)
{
    return integer ? Result(*integer) : Result();
}

Operation integer(const char *name, const char *help, std::optional<qint64> (*kernel)(qint64))
{
    return {name, help, Takes::Integer, Takes::Nothing,
            [kernel](const Operand &a, const Operand &) { return resultOf(kernel(a.integer)); }};
}

Operation integers(const char *name, const char *help,
                   std::optional<qint64> (*kernel)(qint64, qint64))
{
    return {name, help, Takes::Integer, Takes::Integer,
            [kernel](const Operand &a, const Operand &b) {
                return resultOf(kernel(a.integer, b.integer));
            }};
}

std::optional<qint64> signedOf(quint64 magnitude)
{
    if (magnitude > quint64(std::numeric_limits<qint64>::max())) {
        return std::nullopt;
    }
    return qint64(magnitude);
}

quint64 magnitudeOf(qint64 number)
{
    return number < 0 ? 0 - quint64(number) : quint64(number);
}

std::optional<qint64> greatestCommonDivisor(qint64 a, qint64 b)
{
    return signedOf(std::gcd(magnitudeOf(a), magnitudeOf(b)));
}

std::optional<qint64> lowestCommonMultiple(qint64 a, qint64 b)
{
    const quint64 x = magnitudeOf(a);
    const quint64 y = magnitudeOf(b);
    quint64 product = 0;
    if (x == 0 || y == 0) {
        return 0;
    }
    if (__builtin_mul_overflow(x / std::gcd(x, y), y, &product)) {
        return std::nullopt;
    }
    return signedOf(product);
}

double factorial(double number)
{
    constexpr double greatest = 170; // the next one is beyond what a double holds
    if (number < 0 || number > greatest || number != std::floor(number)) {
        return noNumber;
    }
    double product = 1;
    for (int i = 2; i <= number; ++i) {
        product *= i;
    }
    return product;
}

/// The number without the noise of binary fractions: 1.005 * 100 is 100.5, not 100.49999999999999.
double withoutNoise(double number)
{
    return std::isfinite(number) ? QString::number(number, 'g', 15).toDouble() : number;
}

/// To the nearest whole number, half away from zero.
double rounded(double number)
{
    return std::round(withoutNoise(number));
}

double roundedToDecimals(double number, double decimals)
{
    constexpr double mostDecimals = 300;
    if (decimals != std::floor(decimals)) {
        return noNumber;
    }
    if (decimals < -mostDecimals) {
        return 0;
    }
    const double scale = std::pow(10.0, std::fabs(decimals));
    const double scaled = decimals < 0 ? number / scale : number * scale;
    if (!std::isfinite(scaled)) {
        return number; // fewer decimals than asked for
    }
    return decimals < 0 ? rounded(scaled) * scale : rounded(scaled) / scale;
}

std::optional<qint64> shiftedLeft(qint64 number, qint64 places)
{
    if (places < 0 || places > 63) {
        return std::nullopt;
    }
    return qint64(quint64(number) << places);
}

std::optional<qint64> shiftedRight(qint64 number, qint64 places)
{
    if (places < 0 || places > 63) {
        return std::nullopt;
    }
    return number >> places;
}

} // namespace

CalculationOperations CalculateOperations::arithmetic()
{
    return {
        numbers("Add", QT_TRANSLATE_NOOP("Calculate", "v1 + v2"),
                [](double a, double b) { return a + b; }),
        numbers("Subtract", QT_TRANSLATE_NOOP("Calculate", "v1 - v2"),
                [](double a, double b) { return a - b; }),
        numbers("Multiply", QT_TRANSLATE_NOOP("Calculate", "v1 * v2"),
                [](double a, double b) { return a * b; }),
        numbers("Divide", QT_TRANSLATE_NOOP("Calculate", "v1 / v2"),
                [](double a, double b) { return a / b; }),
        numbers("IntegerDivide",
                QT_TRANSLATE_NOOP("Calculate", "v1 / v2, rounded down to a whole number"),
                [](double a, double b) { return std::floor(a / b); }),
        numbers("Modulus",
                QT_TRANSLATE_NOOP("Calculate", "the rest of v1 / v2, with the sign of v2"),
                [](double a, double b) { return a - b * std::floor(a / b); }),
        numbers("Power", QT_TRANSLATE_NOOP("Calculate", "v1 to the power of v2"),
                [](double a, double b) { return std::pow(a, b); }),
        numbers("Percent", QT_TRANSLATE_NOOP("Calculate", "v1 in per cent of v2"),
                [](double a, double b) { return 100 * a / b; }),
        numbers("PercentChange",
                QT_TRANSLATE_NOOP("Calculate", "the change from v1 to v2 in per cent of v1"),
                [](double a, double b) { return 100 * (b - a) / a; }),
        numbers("Difference", QT_TRANSLATE_NOOP("Calculate", "v1 - v2 without the sign"),
                [](double a, double b) { return std::fabs(a - b); }),
        ofEither("Minimum", QT_TRANSLATE_NOOP("Calculate", "the smaller one"),
                 [](double a, double b) { return std::fmin(a, b); }),
        ofEither("Maximum", QT_TRANSLATE_NOOP("Calculate", "the greater one"),
                 [](double a, double b) { return std::fmax(a, b); }),
        ofEither("Average", QT_TRANSLATE_NOOP("Calculate", "the mean of both"),
                 [](double a, double b) { return a / 2 + b / 2; }),
        numbers("RoundToMultiple", QT_TRANSLATE_NOOP("Calculate", "v1 rounded to a multiple of v2"),
                [](double a, double b) { return b * rounded(a / b); }),
        integers("GreatestCommonDivisor",
                 QT_TRANSLATE_NOOP("Calculate", "the greatest whole number that divides both"),
                 greatestCommonDivisor),
        integers("LowestCommonMultiple",
                 QT_TRANSLATE_NOOP("Calculate", "the least whole number that both divide"),
                 lowestCommonMultiple),
        number("Absolute", QT_TRANSLATE_NOOP("Calculate", "v1 without its sign"),
               [](double a) { return std::fabs(a); }),
        number("Negate", QT_TRANSLATE_NOOP("Calculate", "v1 with the other sign"),
               [](double a) { return -a; }),
        number("Sign", QT_TRANSLATE_NOOP("Calculate", "-1, 0 or 1"),
               [](double a) { return double((a > 0) - (a < 0)); }),
        number("Reciprocal", QT_TRANSLATE_NOOP("Calculate", "1 / v1"),
               [](double a) { return 1 / a; }),
        number("Square", QT_TRANSLATE_NOOP("Calculate", "v1 * v1"), [](double a) { return a * a; }),
        number("SquareRoot", QT_TRANSLATE_NOOP("Calculate", "the square root"),
               [](double a) { return std::sqrt(a); }),
        number("Cube", QT_TRANSLATE_NOOP("Calculate", "v1 * v1 * v1"),
               [](double a) { return a * a * a; }),
        number("CubeRoot", QT_TRANSLATE_NOOP("Calculate", "the cube root"),
               [](double a) { return std::cbrt(a); }),
        number("Factorial", QT_TRANSLATE_NOOP("Calculate", "1 * 2 * ... * v1, up to 170"),
               factorial),
    };
}

CalculationOperations CalculateOperations::rounding()
{
    return {
        number("Round",
               QT_TRANSLATE_NOOP("Calculate", "to the nearest whole number, half away from zero"),
               rounded),
        numbers("RoundToDecimals",
                QT_TRANSLATE_NOOP("Calculate", "v1 to v2 decimals, half away from zero"),
                roundedToDecimals),
        number("Floor", QT_TRANSLATE_NOOP("Calculate", "down to a whole number"),
               [](double a) { return std::floor(a); }),
        number("Ceiling", QT_TRANSLATE_NOOP("Calculate", "up to a whole number"),
               [](double a) { return std::ceil(a); }),
        number("Truncate", QT_TRANSLATE_NOOP("Calculate", "towards zero to a whole number"),
               [](double a) { return std::trunc(a); }),
        number("Fraction",
               QT_TRANSLATE_NOOP("Calculate", "what stands after the decimal point, with the sign"),
               [](double a) { return a - std::trunc(a); }),
    };
}

CalculationOperations CalculateOperations::logarithms()
{
    return {
        number("Exp", QT_TRANSLATE_NOOP("Calculate", "e to the power of v1"),
               [](double a) { return std::exp(a); }),
        number("Ln", QT_TRANSLATE_NOOP("Calculate", "the natural logarithm"),
               [](double a) { return std::log(a); }),
        number("Log10", QT_TRANSLATE_NOOP("Calculate", "the logarithm to base 10"),
               [](double a) { return std::log10(a); }),
        number("Log2", QT_TRANSLATE_NOOP("Calculate", "the logarithm to base 2"),
               [](double a) { return std::log2(a); }),
        numbers("Log", QT_TRANSLATE_NOOP("Calculate", "the logarithm of v1 to base v2"),
                [](double a, double b) { return std::log(a) / std::log(b); }),
    };
}

CalculationOperations CalculateOperations::trigonometry()
{
    return {
        number("Sin", QT_TRANSLATE_NOOP("Calculate", "the sine of radians"),
               [](double a) { return std::sin(a); }),
        number("Cos", QT_TRANSLATE_NOOP("Calculate", "the cosine of radians"),
               [](double a) { return std::cos(a); }),
        number("Tan", QT_TRANSLATE_NOOP("Calculate", "the tangent of radians"),
               [](double a) { return std::tan(a); }),
        number("ArcSin", QT_TRANSLATE_NOOP("Calculate", "the arc sine in radians"),
               [](double a) { return std::asin(a); }),
        number("ArcCos", QT_TRANSLATE_NOOP("Calculate", "the arc cosine in radians"),
               [](double a) { return std::acos(a); }),
        number("ArcTan", QT_TRANSLATE_NOOP("Calculate", "the arc tangent in radians"),
               [](double a) { return std::atan(a); }),
        numbers("ArcTan2",
                QT_TRANSLATE_NOOP("Calculate",
                                  "the angle of the point with y = v1 and x = v2, in radians"),
                [](double a, double b) { return std::atan2(a, b); }),
        number("Sinh", QT_TRANSLATE_NOOP("Calculate", "the hyperbolic sine"),
               [](double a) { return std::sinh(a); }),
        number("Cosh", QT_TRANSLATE_NOOP("Calculate", "the hyperbolic cosine"),
               [](double a) { return std::cosh(a); }),
        number("Tanh", QT_TRANSLATE_NOOP("Calculate", "the hyperbolic tangent"),
               [](double a) { return std::tanh(a); }),
        number("DegreesToRadians", QT_TRANSLATE_NOOP("Calculate", "v1 degrees in radians"),
               [](double a) { return a * M_PI / 180; }),
        number("RadiansToDegrees", QT_TRANSLATE_NOOP("Calculate", "v1 radians in degrees"),
               [](double a) { return a * 180 / M_PI; }),
    };
}

CalculationOperations CalculateOperations::bits()
{
    return {
        integers("BitAnd", QT_TRANSLATE_NOOP("Calculate", "the bits set in both whole numbers"),
                 [](qint64 a, qint64 b) -> std::optional<qint64> { return a & b; }),
        integers("BitOr", QT_TRANSLATE_NOOP("Calculate", "the bits set in one or both"),
                 [](qint64 a, qint64 b) -> std::optional<qint64> { return a | b; }),
        integers("BitXor", QT_TRANSLATE_NOOP("Calculate", "the bits set in just one"),
                 [](qint64 a, qint64 b) -> std::optional<qint64> { return a ^ b; }),
        integer("BitNot", QT_TRANSLATE_NOOP("Calculate", "every bit turned over"),
                [](qint64 a) -> std::optional<qint64> { return ~a; }),
        integers("ShiftLeft",
                 QT_TRANSLATE_NOOP("Calculate", "the bits of v1 moved left by v2 places"),
                 shiftedLeft),
        integers("ShiftRight",
                 QT_TRANSLATE_NOOP("Calculate",
                                   "the bits of v1 moved right by v2 places, keeping the sign"),
                 shiftedRight),
    };
}

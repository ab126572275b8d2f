#include "transformpad.h"

#include "codepoints.h"
#include "texts.h"
#include "transformfacts.h"
#include "transformoption.h"

namespace {

enum class Side { Left, Right, Both };

struct Options
{
    const TransformOption<QList<ColIndex>> columns{
        ParameterType::MultipleColumns, "Columns", QT_TRANSLATE_NOOP("Transform", "Columns"),
        QT_TRANSLATE_NOOP("Transform", "The columns whose values are padded.")};
    const TransformOption<int> length =
        TransformOption<int>(
            ParameterType::Int, "Length", QT_TRANSLATE_NOOP("Transform", "Length"),
            QT_TRANSLATE_NOOP("Transform",
                              "The number of characters that values are brought to. Longer values "
                              "are kept, unless \"truncate longer values\" is checked."),
            10)
            .range(1, 100000);
    const TransformOption<int> side =
        TransformOption<int>(
            ParameterType::Selection, "Side", QT_TRANSLATE_NOOP("Transform", "Pad"),
            QT_TRANSLATE_NOOP(
                "Transform",
                "Where characters are added.\n\n"
                "Left: before the value, which then stands at the right\n"
                "Right: after the value, which then stands at the left\n"
                "Both sides: before and after the value; an odd character goes to the right"))
            .choices({"Left", "Right", "Both sides"});
    const TransformOption<QString> character{
        ParameterType::Char, "Character", QT_TRANSLATE_NOOP("Transform", "With"),
        QT_TRANSLATE_NOOP("Transform", "The character that is added."), QStringLiteral(" ")};
    const TransformOption<bool> truncate{
        ParameterType::Bool, "Truncate", QT_TRANSLATE_NOOP("Transform", "truncate longer values"),
        QT_TRANSLATE_NOOP("Transform",
                          "Check to cut values that are longer. They are cut on the side that "
                          "would be padded, so padding left keeps the right-hand end."),
        false};
    const TransformOption<bool> ignoreEmpty{
        ParameterType::Bool, "Ignore_Empty", QT_TRANSLATE_NOOP("Transform", "ignore empty cells"),
        QT_TRANSLATE_NOOP("Transform", "Check to leave empty cells empty."), false};
};

const Options &options()
{
    static const Options theOptions;
    return theOptions;
}

struct Padding
{
    int length = 0;
    Side side = Side::Left;
    QString character;
    bool truncate = false;
    bool ignoreEmpty = false;
};

QString truncated(const QString &value, int count, const Padding &padding)
{
    const int excess = count - padding.length;
    int leftExcess = 0;
    if (padding.side == Side::Left) {
        leftExcess = excess;
    } else if (padding.side == Side::Both) {
        leftExcess = excess / 2;
    }
    const int begin = CodePoints::placeOf(value, leftExcess);
    const QString rest = value.mid(begin);
    return rest.left(CodePoints::placeOf(rest, padding.length));
}

QString padded(const QString &value, const Padding &padding)
{
    if (value.isEmpty() && padding.ignoreEmpty) {
        return value;
    }
    const int count = CodePoints::count(value);
    if (count >= padding.length) {
        return padding.truncate && count > padding.length ? truncated(value, count, padding)
                                                          : value;
    }
    const int missing = padding.length - count;
    int left = 0;
    if (padding.side == Side::Left) {
        left = missing;
    } else if (padding.side == Side::Both) {
        left = missing / 2;
    }
    return padding.character.repeated(left) + value + padding.character.repeated(missing - left);
}

constexpr TransformFacts padFacts =
    TransformFacts(37, "TransformPad", "Pad", "Pad", TransformCategory::Format,
                   QT_TRANSLATE_NOOP("Transform", "Pad the selected column(s) to a fixed length."))
        .words("zeros width length")
        .with(TransformFacts::EditsInPlace);

} // namespace

TransformPad::TransformPad()
    : InPlaceTransform(padFacts)
{
}

std::unique_ptr<Transform> TransformPad::clone() const
{
    return cloned(*this);
}

void TransformPad::defineParameters(const QList<const UpstreamItem *> &inputs)
{
    Transform::defineParameters(inputs);
    append(options().columns.create(inputs.value(0)));
    append(options().length.create());
    append(options().side.create());
    append(options().character.create());
    append(options().truncate.create());
    append(options().ignoreEmpty.create());
}

Dataset TransformPad::execute(const QList<Dataset> &inputs)
{
    if (inputs.size() != 1) {
        return {};
    }
    const Dataset &input = inputs.first();
    QList<ColIndex> columns;
    Padding padding;
    int side = 0;
    if (!options().columns.read(*this, input, &columns) ||
        !options().length.read(*this, &padding.length) || !options().side.read(*this, &side) ||
        !options().character.read(*this, &padding.character) ||
        !options().truncate.read(*this, &padding.truncate) ||
        !options().ignoreEmpty.read(*this, &padding.ignoreEmpty)) {
        setStatus(Texts::noChanges());
        return {};
    }
    padding.side = Side(side);
    return mapCells(input, columns, [&](const QString &value) { return padded(value, padding); });
}

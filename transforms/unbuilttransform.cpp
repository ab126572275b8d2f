#include "unbuilttransform.h"

#include "transformfacts.h"

#include <QCoreApplication>

namespace {

using Category = TransformCategory;

constexpr const char *topToBottom =
    QT_TRANSLATE_NOOP("Transform", "Inputs are used from top to bottom.");

// The facts of a type move to the head of its source when its work is built.
constexpr TransformFacts unbuiltTypes[] = {
    TransformFacts(
        2, "TransformChop", "Chop", "Chop", Category::Format,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Remove a number of characters from the start or end of the selected column(s)."))
        .words("ends starts lengths characters removes chops")
        .with(TransformFacts::EditsInPlace),
    TransformFacts(3, "TransformClone", "Clone", "Clone", Category::Other,
                   QT_TRANSLATE_NOOP(
                       "Transform",
                       "Make an identical copy. Can be useful to improve the Center pane layout."))
        .words("duplicate junction branch")
        .with(TransformFacts::Advanced),
    TransformFacts(4, "TransformCluster", "Cluster", "Cluster", Category::Analysis,
                   QT_TRANSLATE_NOOP("Transform", "Classify rows with similar text into clusters."))
        .words("fuzzy similar group fingerprint phonetic levenshtein")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(5, "TransformCompare", "Compare Cols", "Compare_Cols", Category::Column,
                   QT_TRANSLATE_NOOP("Transform", "Compare the values of two columns."))
        .words("difference equal same")
        .with(TransformFacts::Advanced | TransformFacts::DateFormats |
              TransformFacts::DependentParameters),
    TransformFacts(
        6, "TransformConcat", "Concat Cols", "Concat", Category::Column,
        QT_TRANSLATE_NOOP("Transform", "Concatenate selected columns into a single new column."))
        .words("join combine merge append")
        .with(TransformFacts::DependentParameters),
    TransformFacts(
        7, "TransformConcatRows", "Concat Rows", "Concat_Rows", Category::Row,
        QT_TRANSLATE_NOOP("Transform", "Concatenate multiple consecutive rows into a single row."))
        .words("join combine merge lines records")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(8, "TransformCopy", "Copy Cols", "Copy", Category::Column,
                   QT_TRANSLATE_NOOP("Transform", "Copy selected columns."))
        .words("duplicate"),
    TransformFacts(
        9, "TransformCorrelate", "Correlate", "Correlate", Category::Analysis,
        QT_TRANSLATE_NOOP("Transform", "Calculate the correlation of 2 or more pairs of columns."))
        .words("pearson spearman relationship")
        .with(TransformFacts::Advanced),
    TransformFacts(
        10, "TransformCount", "Count", "Count", Category::Analysis,
        QT_TRANSLATE_NOOP("Transform", "Count the occurrences of text in the selected column."))
        .words("frequency histogram occurrences tally")
        .with(TransformFacts::HasDrillDown | TransformFacts::DependentParameters),
    TransformFacts(
        11, "TransformCross", "Cross", "Cross", Category::Merge,
        QT_TRANSLATE_NOOP("Transform", "Create every combination of rows in each input dataset."))
        .inputs(2, TransformFacts::noLimit)
        .words("cartesian product combinations")
        .with(TransformFacts::Advanced)
        .inputOrder(topToBottom),
    TransformFacts(
        12, "TransformDateFormat", "DateTime Format", "Date_Format", Category::Format,
        QT_TRANSLATE_NOOP("Transform",
                          "Change the date and/or time format in the selected column(s)."))
        .words("date time iso unix excel")
        .with(TransformFacts::EditsInPlace | TransformFacts::DependentParameters),
    TransformFacts(
        13, "TransformDecode", "Decode", "Decode", Category::Format,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Convert to/from Base64 encoding, URL encoding, escaped HTML or escaped XML."))
        .words("encode base64 url html xml escape")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace),
    TransformFacts(15, "TransformExtract", "Extract", "Extract", Category::Format,
                   QT_TRANSLATE_NOOP("Transform", "Extract text in the selected column(s)."))
        .words("regex substring left right mid between number email")
        .with(TransformFacts::EditsInPlace | TransformFacts::DependentParameters),
    TransformFacts(
        16, "TransformFillDown", "Fill", "Fill", Category::Format,
        QT_TRANSLATE_NOOP("Transform", "Fill empty cells in selected columns from adjacent cells."))
        .words("down blanks empty")
        .with(TransformFacts::EditsInPlace),
    TransformFacts(
        18, "TransformGather", "Gather", "Gather", Category::Column,
        QT_TRANSLATE_NOOP("Transform", "Gather selected columns into key and value columns."))
        .words("unpivot melt longer wide long")
        .with(TransformFacts::Advanced),
    TransformFacts(19, "TransformHash", "Hash", "Hash", Category::Other,
                   QT_TRANSLATE_NOOP("Transform", "Perform a one-way hashing."))
        .words("md5 sha checksum anonymise pseudonymise")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace |
              TransformFacts::DependentParameters),
    TransformFacts(20, "TransformHeader", "Header", "Header", Category::Row,
                   QT_TRANSLATE_NOOP("Transform", "Move rows to the header."))
        .words("promote demote names")
        .with(TransformFacts::Advanced),
    TransformFacts(22, "TransformImpute", "Impute", "Impute", Category::Other,
                   QT_TRANSLATE_NOOP("Transform", "Infer values of missing data."))
        .words("missing fill mean")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace |
              TransformFacts::DependentParameters),
    TransformFacts(23, "TransformInsert", "Insert", "Insert", Category::Format,
                   QT_TRANSLATE_NOOP("Transform", "Append/prepend text in the selected column(s)."))
        .words("prefix suffix append prepend")
        .with(TransformFacts::EditsInPlace),
    TransformFacts(
        24, "TransformIntersect", "Intersect", "Intersect", Category::Merge,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Keep only rows from the top dataset whose key values are also in the bottom dataset."))
        .inputs(2, 2)
        .words("semi matching common")
        .with(TransformFacts::Advanced)
        .keyRoles(),
    TransformFacts(25, "TransformInterpolate", "Interpolate", "Interpolate", Category::Merge,
                   QT_TRANSLATE_NOOP("Transform",
                                     "Create a new column in the top dataset by interpolating "
                                     "numerical values in the bottom dataset."))
        .inputs(2, 2)
        .words("linear spline")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(
        28, "TransformLookup", "Lookup", "Lookup", Category::Merge,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Create a new column in the top dataset using values looked up in the bottom dataset."))
        .inputs(2, 2)
        .words("vlookup map replace fuzzy nearest")
        .with(TransformFacts::DependentParameters)
        .keyRoles(),
    TransformFacts(
        29, "TransformMoving", "Moving", "Moving", Category::Column,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Add a new column with a moving average/median/sum/min/max of the selected column."))
        .words("rolling window average smooth")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(
        30, "TransformNewCol", "New Col", "New_Col", Category::Column,
        QT_TRANSLATE_NOOP("Transform", "Add a new column filled with a specified value."))
        .words("add constant"),
    TransformFacts(31, "TransformNewRows", "New Rows", "New_Rows", Category::Row,
                   QT_TRANSLATE_NOOP("Transform", "Add new rows."))
        .words("add insert blank")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(
        32, "TransformNgram", "Ngram", "Ngram", Category::Analysis,
        QT_TRANSLATE_NOOP("Transform",
                          "Count sequences of N consecutive words in the selected column."))
        .words("words phrases frequency")
        .with(TransformFacts::Advanced | TransformFacts::HasDrillDown),
    TransformFacts(
        33, "TransformNumBase", "Num Base", "Num_Base", Category::Format,
        QT_TRANSLATE_NOOP("Transform",
                          "Change the number base of integer values, e.g. decimal to hexadecimal."))
        .words("hex binary octal decimal")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace),
    TransformFacts(
        34, "TransformNumberFormat", "Num Format", "Num_Format", Category::Format,
        QT_TRANSLATE_NOOP("Transform", "Change the number format in the selected column(s)."))
        .words("decimals currency percent separator round locale")
        .with(TransformFacts::EditsInPlace | TransformFacts::DependentParameters),
    TransformFacts(
        35, "TransformOffset", "Offset", "Offset", Category::Column,
        QT_TRANSLATE_NOOP("Transform", "Offset values up or down in the selected column(s)."))
        .words("lag lead shift")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace |
              TransformFacts::DependentParameters),
    TransformFacts(36, "TransformOutliers", "Outliers", "Outliers", Category::Other,
                   QT_TRANSLATE_NOOP("Transform", "Find outlier numerical values."))
        .words("anomaly clip iqr")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace |
              TransformFacts::DependentParameters),
    TransformFacts(
        38, "TransformPivot", "Pivot", "Pivot", Category::Analysis,
        QT_TRANSLATE_NOOP("Transform", "Create a pivot table to summarize the selected columns."))
        .words("crosstab summarise group aggregate")
        .with(TransformFacts::Advanced | TransformFacts::HasDrillDown |
              TransformFacts::DependentParameters),
    TransformFacts(
        39, "TransformRandom", "Random", "Random", Category::Other,
        QT_TRANSLATE_NOOP("Transform", "Add a new column filled with pseudo-random numbers."))
        .words("seed normal uuid dice")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(46, "TransformRowNum", "Row Num", "Row_Num", Category::Row,
                   QT_TRANSLATE_NOOP("Transform", "Add a new column with the row number."))
        .words("index id sequence number"),
    TransformFacts(47, "TransformSample", "Sample", "Sample", Category::Row,
                   QT_TRANSLATE_NOOP("Transform", "Sample from all rows."))
        .words("head tail top limit random"),
    TransformFacts(49, "TransformSequence", "Sequence", "Sequence", Category::Row,
                   QT_TRANSLATE_NOOP("Transform", "Add missing rows from a sequence."))
        .words("gaps missing dates series")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(50, "TransformSlice", "Slice", "Slice", Category::Row,
                   QT_TRANSLATE_NOOP("Transform", "Keep or remove a continuous section of rows."))
        .words("skip head tail range")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(
        51, "TransformSlide", "Slide", "Slide", Category::Format,
        QT_TRANSLATE_NOOP("Transform",
                          "Move non-empty values in selected columns to adjacent empty cells."))
        .words("shift compact left")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace),
    TransformFacts(53, "TransformSplit", "Split Col", "Split", Category::Column,
                   QT_TRANSLATE_NOOP("Transform", "Split a column into multiple new columns."))
        .words("delimiter separate parse text to columns")
        .with(TransformFacts::DependentParameters),
    TransformFacts(
        55, "TransformSpread", "Spread", "Spread", Category::Column,
        QT_TRANSLATE_NOOP("Transform",
                          "Spread the selected key and value columns into multiple columns."))
        .words("pivot widen dcast")
        .with(TransformFacts::Advanced),
    TransformFacts(
        57, "TransformStamp", "Stamp", "Stamp", Category::Other,
        QT_TRANSLATE_NOOP("Transform",
                          "Add a stamp with processing date, time and other information."))
        .words("date time audit")
        .with(TransformFacts::Advanced),
    TransformFacts(
        58, "TransformStats", "Stats", "Stats", Category::Analysis,
        QT_TRANSLATE_NOOP("Transform", "Calculate statistics from the selected column(s)."))
        .words("mean median deviation quartile")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(
        60, "TransformSubtract", "Subtract", "Subtract", Category::Merge,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Remove rows from the top dataset whose key values are also in the bottom dataset."))
        .inputs(2, 2)
        .words("anti difference exclude")
        .with(TransformFacts::Advanced)
        .keyRoles(),
    TransformFacts(61, "TransformSummary", "Summary", "Summary", Category::Analysis,
                   QT_TRANSLATE_NOOP("Transform", "Summarise the values of the selected columns."))
        .words("profile quality types")
        .with(TransformFacts::DateFormats),
    TransformFacts(
        62, "TransformTotal", "Total", "Total", Category::Analysis,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Add a new column with a running (cumulative) total of the selected column."))
        .words("cumulative running sum")
        .with(TransformFacts::Advanced | TransformFacts::DependentParameters),
    TransformFacts(63, "TransformTranspose", "Transpose", "Transpose", Category::Other,
                   QT_TRANSLATE_NOOP("Transform", "Swap rows and columns."))
        .words("swap rotate"),
    TransformFacts(
        65, "TransformUnfill", "Unfill", "Unfill", Category::Format,
        QT_TRANSLATE_NOOP("Transform",
                          "Set adjacent cells with identical values to empty in selected columns."))
        .words("blank repeated")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace),
    TransformFacts(67, "TransformUnits", "Units", "Units", Category::Other,
                   QT_TRANSLATE_NOOP("Transform", "Change units of time, length, temperature etc."))
        .words("convert metric imperial")
        .with(TransformFacts::Advanced | TransformFacts::EditsInPlace |
              TransformFacts::DependentParameters),
    TransformFacts(
        69, "TransformWhitespace", "Whitespace", "Whitespace", Category::Format,
        QT_TRANSLATE_NOOP(
            "Transform",
            "Tidy whitespace (Spaces, Tabs, Carriage Returns etc) in the selected column(s)."))
        .words("trim clean strip spaces")
        .with(TransformFacts::EditsInPlace),
};

} // namespace

UnbuiltTransform::UnbuiltTransform(const TransformFacts &facts)
    : Transform(facts)
{
}

std::unique_ptr<Transform> UnbuiltTransform::clone() const
{
    auto copy = std::make_unique<UnbuiltTransform>(facts());
    copyParametersTo(copy.get());
    return copy;
}

Dataset UnbuiltTransform::execute(const QList<Dataset> &)
{
    messages().fail(tr("The transform '%1' is not built yet in this version.").arg(name()));
    return {};
}

std::vector<const TransformFacts *> UnbuiltTransform::allFacts()
{
    std::vector<const TransformFacts *> list;
    for (const TransformFacts &facts : unbuiltTypes) {
        list.push_back(&facts);
    }
    return list;
}

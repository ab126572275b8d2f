#pragma once

#include "transformcategory.h"

#include <array>
#include <limits>

/// What dialogs that explore keys and duplicates ask a transform for: the key of its parameter in
/// that role.
enum class ParameterRole {
    TopKeys,
    BottomKeys,
    CaseSensitive,
    CompareColumns,
    IgnoreWhitespace,
    IgnorePunctuation,
    IgnoreAccents,
    Match,
    Keep
};

/// Everything fixed about a transform type, stated once per type in a constant record. Transform
/// answers its queries from it.
struct TransformFacts
{
    static constexpr int noLimit = std::numeric_limits<qint32>::max();

    enum Property : quint32 {
        /// Left out of a palette that shows the basic types only.
        Advanced = 1 << 0,
        /// Changes cells where they stand, so that a table view can highlight the changed ones.
        EditsInPlace = 1 << 1,
        /// Each row of the result stands for a list of input rows.
        HasDrillDown = 1 << 2,
        /// Checks the data, for which the canvas shows a tick or a cross.
        Verification = 1 << 3,
        /// Reads dates by the formats of the preferences.
        DateFormats = 1 << 4,
        /// Some options are shown only for some values of others.
        DependentParameters = 1 << 5,
        /// Kept only so that documents which hold it still load.
        Deprecated = 1 << 6
    };

    constexpr TransformFacts(int typeId, const char *typeClass, const char *displayName,
                             const char *storedName, TransformCategory typeCategory,
                             const char *typeDescription)
        : className(typeClass)
        , name(displayName)
        , typeName(storedName)
        , description(typeDescription)
        , id(typeId)
        , category(typeCategory)
    {
    }

    constexpr TransformFacts inputs(int minimum, int maximum) const
    {
        TransformFacts facts(*this);
        facts.minimumInputs = minimum;
        facts.maximumInputs = maximum;
        return facts;
    }
    /// Blank-separated lower-case words, besides those of the name and the category.
    constexpr TransformFacts words(const char *text) const
    {
        TransformFacts facts(*this);
        facts.searchWords = text;
        return facts;
    }
    constexpr TransformFacts with(quint32 typeProperties) const
    {
        TransformFacts facts(*this);
        facts.properties = typeProperties;
        return facts;
    }
    constexpr TransformFacts inputOrder(const char *text) const
    {
        TransformFacts facts(*this);
        facts.inputOrderText = text;
        return facts;
    }
    constexpr TransformFacts role(ParameterRole parameterRole, const char *key) const
    {
        TransformFacts facts(*this);
        facts.parameterKeys[size_t(parameterRole)] = key;
        return facts;
    }
    /// The roles of a transform that matches keys of two inputs.
    constexpr TransformFacts keyRoles() const
    {
        return role(ParameterRole::TopKeys, "Column_1")
            .role(ParameterRole::BottomKeys, "Column_2")
            .role(ParameterRole::CaseSensitive, "Case_Sensitive");
    }

    const char *className;
    const char *name;
    /// The name under which documents store the type.
    const char *typeName;
    const char *description;
    const char *searchWords = "";
    const char *inputOrderText = "";
    std::array<const char *, 9> parameterKeys{};
    int id;
    TransformCategory category;
    int minimumInputs = 1;
    int maximumInputs = 1;
    quint32 properties = 0;
};

#pragma once

#include "dataset.h"
#include "parametervalues.h"
#include "transform.h"
#include "transformparameter.h"

#include <QCoreApplication>
#include <QVariant>
#include <memory>
#include <type_traits>
#include <vector>

/// The columns of a table that a parameter's value stands for. References to columns that the table
/// does not have are skipped. All but ReorderColumns come in table order, each once.
namespace OptionColumns {

ColIndex one(const TransformParameter &parameter, const Dataset &table);
QList<ColIndex> many(const TransformParameter &parameter, const Dataset &table);

} // namespace OptionColumns

/// An option of a transform, declared once: key, label, help, default and bounds. It makes the
/// parameter record and reads the record's typed value back. Texts are marked for translation in
/// the context "Transform".
///
/// T is bool, int, double, QString, ColIndex (SingleColumn), QList<ColIndex> (MultipleColumns,
/// ColumnSet, ReorderColumns), the value type of a structured parameter, or int for a Selection
/// that is read as the number of its choice.
template <class T>
class TransformOption
{
public:
    static constexpr bool isColumns =
        std::is_same_v<T, ColIndex> || std::is_same_v<T, QList<ColIndex>>;

    TransformOption(ParameterType type, const char *key, const char *label, const char *help,
                    const T &defaultValue = T())
        : m_type(type)
        , m_key(key)
        , m_label(label)
        , m_help(help)
        , m_default(defaultValue)
    {
    }

    /// Bounds of an Int or Real.
    TransformOption range(T minimum, T maximum) const
    {
        static_assert(std::is_arithmetic_v<T>);
        TransformOption option(*this);
        option.m_minimum = minimum;
        option.m_maximum = maximum;
        option.m_hasRange = true;
        return option;
    }
    /// The texts of a Selection. They are stored, so they are not translated in the record.
    TransformOption choices(const std::vector<const char *> &texts) const
    {
        TransformOption option(*this);
        option.m_choices = texts;
        return option;
    }
    TransformOption storedAsIndex() const
    {
        TransformOption option(*this);
        option.m_storedAsIndex = true;
        return option;
    }
    TransformOption suffix(const char *text) const
    {
        TransformOption option(*this);
        option.m_suffix = text;
        return option;
    }
    TransformOption noneText(const char *text) const
    {
        TransformOption option(*this);
        option.m_noneText = text;
        return option;
    }

    QString key() const { return QString::fromLatin1(m_key); }

    std::unique_ptr<TransformParameter> create(const UpstreamItem *input = nullptr) const
    {
        auto record = std::make_unique<TransformParameter>(m_type, translated(m_label), key(),
                                                           defaultVariant(), choiceList());
        record->input = input;
        record->help = translated(m_help);
        record->storedAsIndex = m_storedAsIndex;
        if (*m_suffix) {
            record->suffix = translated(m_suffix);
        }
        if (*m_noneText) {
            record->noneText = translated(m_noneText);
        }
        setRange(record.get());
        return record;
    }

    /// False when the transform has no record of this key.
    bool read(const Transform &transform, T *value) const
    {
        static_assert(!isColumns, "columns are read for a table");
        const TransformParameter *const record = find(transform);
        if (!record) {
            return false;
        }
        if constexpr (std::is_same_v<T, int>) {
            if (m_type == ParameterType::Selection) {
                *value = qMax(0, choiceList().indexOf(record->value.toString()));
                return true;
            }
        }
        *value = record->value.template value<T>();
        return true;
    }
    /// The columns of the given table that are referred to; false as above.
    bool read(const Transform &transform, const Dataset &table, T *value) const
    {
        static_assert(isColumns);
        const TransformParameter *const record = find(transform);
        if (!record) {
            return false;
        }
        if constexpr (std::is_same_v<T, ColIndex>) {
            *value = OptionColumns::one(*record, table);
        } else {
            *value = OptionColumns::many(*record, table);
        }
        return true;
    }

private:
    static QString translated(const char *text)
    {
        return *text ? QCoreApplication::translate("Transform", text) : QString();
    }
    const TransformParameter *find(const Transform &transform) const
    {
        const TransformParameter *const record = transform.parameter(key());
        Q_ASSERT(!record || record->type == m_type);
        return record;
    }
    QStringList choiceList() const
    {
        QStringList list;
        for (const char *const choice : m_choices) {
            list.append(QString::fromUtf8(choice));
        }
        return list;
    }
    QVariant defaultVariant() const
    {
        if constexpr (isColumns) {
            return QVariant();
        } else if constexpr (std::is_same_v<T, int>) {
            return m_type == ParameterType::Selection ? QVariant(choiceList().value(m_default))
                                                      : QVariant(m_default);
        } else {
            return QVariant::fromValue(m_default);
        }
    }
    void setRange(TransformParameter *record) const
    {
        if constexpr (std::is_arithmetic_v<T>) {
            if (m_hasRange && m_type == ParameterType::Int) {
                record->intMinimum = qint32(m_minimum);
                record->intMaximum = qint32(m_maximum);
            } else if (m_hasRange && m_type == ParameterType::Real) {
                record->realMinimum = double(m_minimum);
                record->realMaximum = double(m_maximum);
            }
        } else {
            Q_UNUSED(record)
        }
    }

    ParameterType m_type;
    const char *m_key;
    const char *m_label;
    const char *m_help;
    T m_default;
    T m_minimum = T();
    T m_maximum = T();
    bool m_hasRange = false;
    bool m_storedAsIndex = false;
    std::vector<const char *> m_choices;
    const char *m_suffix = "";
    const char *m_noneText = "";
};

#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"
#include "storedparameter.h"
#include "transformcategory.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QSet>
#include <QString>
#include <memory>
#include <vector>

class UpstreamItem;
enum class ParameterRole;
struct TransformFacts;
struct TransformParameter;

/// What one transform item computes: declares its options, makes one table from the tables
/// upstream and leaves a short status text. It knows nothing of the canvas.
///
/// Order of use: create from the catalogue, defineParameters() (and redefineParameters() whenever
/// the inputs change), set values, then for each run resetRun(), resolveColumns(), execute().
class Transform : public QObject
{
    Q_OBJECT

public:
    /// The record must outlive the transform.
    explicit Transform(const TransformFacts &facts);
    ~Transform() override;

    int typeId() const;
    /// 1 to 6; see transformcategory.h.
    int category() const;
    QString name() const;
    QString typeName() const;
    QString description() const;
    virtual int minimumInputs() const;
    /// 2147483647: no upper limit.
    virtual int maximumInputs() const;
    /// Lower-case words by which the palette finds the transform.
    QSet<QString> keywords() const;
    QString inputsText() const;
    QString iconHtml(const QString &image) const;
    const TransformFacts &facts() const { return m_facts; }
    /// False for a type that documents may hold but whose work is still to come: not offered to
    /// the user, and a run of it fails.
    virtual bool isBuilt() const { return true; }

    /// See TransformFacts::Property.
    bool isAdvanced() const;
    bool editsInPlace() const;
    bool hasDrillDown() const;
    bool isVerification() const;
    bool isDeprecated() const;
    /// Some parameters are shown only for some values of others; see isParameterShown().
    bool hasDependentParameters() const;
    /// Marks the item out of date when the date-format preference changes.
    virtual bool dependsOnDateFormats() const;
    /// True when exchanging the inputs changes the result.
    virtual bool inputOrderMatters() const;
    /// A sentence on the order of the inputs; often empty.
    QString inputOrderText() const;
    /// Rows of two inputs are matched by key columns.
    bool hasKeys() const;
    /// Finds rows that are duplicates of each other.
    bool findsDuplicates() const;
    /// The key of the parameter in a role; empty when there is none.
    QString parameterKey(ParameterRole role) const;

    /// Makes the parameter records for the given inputs, with default values; all earlier records
    /// are deleted, so no pointer to one survives the call.
    virtual void defineParameters(const QList<const UpstreamItem *> &inputs);
    /// The same, then sets the earlier values again by key and binds them to the inputs' columns;
    /// what is lost is told in the messages.
    void redefineParameters(const QList<const UpstreamItem *> &inputs);
    /// Binds all column references to the present columns of the inputs; for each that is gone a
    /// warning. Call between resetRun() and execute().
    void resolveColumns();
    /// Guesses made when inputs are connected for the first time.
    virtual void setInitialValues() {}
    virtual std::unique_ptr<Transform> clone() const = 0;
    QList<TransformParameter *> parameters() const;
    TransformParameter *parameter(const QString &key) const;
    TransformParameter *parameterForInput(const UpstreamItem *input) const;
    QList<TransformParameter *> parametersForInput(const UpstreamItem *input) const;
    /// Takes over the given records, made with new; records of the old list that are not in the
    /// new one are deleted.
    void setParameters(const QList<TransformParameter *> &list);
    /// False while the values of other parameters make this one meaningless: it is not edited and
    /// never counts as missing.
    virtual bool isParameterShown(const TransformParameter &parameter) const;

    /// What a document stores for the transform, in the order to be written.
    QList<StoredParameter> storedParameters() const;
    /// Sets a value read from a document, by key. Answers false when the value does not fit and
    /// the default stays. A key that this version does not know is kept and written again.
    bool setStoredParameter(const StoredParameter &stored);

    /// Computes the output. The inputs come in the order that the item fixed. Call resetRun()
    /// before; afterwards status() and messages() describe the result. messages().failed tells
    /// that the result must not be used.
    virtual Dataset execute(const QList<Dataset> &inputs) = 0;

    void resetRun();
    QString status() const { return m_status; }
    const Messages &messages() const { return m_messages; }
    Messages &messages() { return m_messages; }
    /// Asked while execute() runs; see Progress.
    void setProgress(const Progress &progress) { m_progress = progress; }
    /// True when the user stopped the run: the result of execute() is to be dropped.
    bool isStopped() const { return m_stopped; }

    /// Parameters that may stay unset, as pairs of key and flag (0: excused).
    virtual QList<QPair<QString, int>> optionalParameters() const;
    /// Adds "1 option not set" or "%1 options not set" to the messages.
    void checkOptions();
    /// The set options in short words, for the text under an item.
    virtual QString summary() const;

Q_SIGNALS:
    /// The fraction of the work done, 0 to 1.
    void processed(double fraction);

protected:
    /// The records are shown and stored in the order in which they are appended.
    TransformParameter *append(std::unique_ptr<TransformParameter> parameter);
    void setStatus(const QString &status) { m_status = status; }
    /// Emits processed(); false when the run was stopped and execute() should return.
    bool report(double fraction);
    /// For row loops: reports before every row whose number is a multiple of 1000.
    bool reportRow(int row, int rowCount)
    {
        return row % progressInterval != 0 || report(rowCount ? double(row) / rowCount : 0.0);
    }
    /// Copies all parameters into a new transform of the same type.
    void copyParametersTo(Transform *other) const;
    /// The body of clone() for a type that can be made without arguments.
    template <class Type>
    static std::unique_ptr<Transform> cloned(const Type &original)
    {
        auto copy = std::make_unique<Type>();
        original.copyParametersTo(copy.get());
        return copy;
    }

private:
    const TransformFacts &m_facts;
    std::vector<std::unique_ptr<TransformParameter>> m_parameters;
    // Stored parameters that have no record: unknown keys, and all those of a type not built yet.
    QList<StoredParameter> m_unknownParameters;
    Messages m_messages;
    QString m_status;
    Progress m_progress;
    bool m_stopped = false;
};

#pragma once

#include "dataset.h"
#include "messages.h"
#include "progress.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QSet>
#include <QString>
#include <memory>
#include <vector>

class UpstreamItem;
struct TransformFacts;
struct TransformParameter;

/// What one transform item computes: declares its options, makes one table from the tables
/// upstream and leaves a short status text. It knows nothing of the canvas.
class Transform : public QObject
{
    Q_OBJECT

public:
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
    QSet<QString> keywords() const;
    QString inputsText() const;
    QString iconHtml(const QString &image) const;
    const TransformFacts &facts() const { return m_facts; }

    /// Makes the parameter records for the given inputs, with default values; all earlier records
    /// are deleted, so no pointer to one survives the call.
    virtual void defineParameters(const QList<const UpstreamItem *> &inputs);
    virtual std::unique_ptr<Transform> clone() const = 0;
    QList<TransformParameter *> parameters() const;
    TransformParameter *parameter(const QString &key) const;
    TransformParameter *parameterForInput(const UpstreamItem *input) const;
    QList<TransformParameter *> parametersForInput(const UpstreamItem *input) const;
    void setParameters(const QList<TransformParameter *> &list);

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

    /// Marks the item out of date when the date-format preference changes.
    virtual bool dependsOnDateFormats() const;

Q_SIGNALS:
    /// The fraction of the work done, 0 to 1.
    void processed(double fraction);

protected:
    void append(std::unique_ptr<TransformParameter> parameter);
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

private:
    const TransformFacts &m_facts;
    std::vector<std::unique_ptr<TransformParameter>> m_parameters;
    Messages m_messages;
    QString m_status;
    Progress m_progress;
    bool m_stopped = false;
};

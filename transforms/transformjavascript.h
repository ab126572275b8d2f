#pragma once

#include "scriptrunner.h"
#include "transform.h"

/// Runs a script of the user for each row, or once for the whole table.
class TransformJavascript final : public Transform
{
    Q_OBJECT

public:
    TransformJavascript();

    void defineParameters(const QList<const UpstreamItem *> &inputs) override;
    std::unique_ptr<Transform> clone() const override;
    Dataset execute(const QList<Dataset> &inputs) override;
    bool isParameterShown(const TransformParameter &parameter) const override;

private:
    struct Settings;
    struct Result;
    bool readSettings(Settings *settings) const;
    void take(const ScriptRecord &record, ScriptJob::Mode mode, Result *result);
    void addError(const QString &text, int line, Result *result);
    /// False, and told, when nothing came of the script.
    bool isDone(ScriptProcess::End end, const Result &result);
    void tell(const Result &result, const Dataset &input);
    Dataset withNewColumns(const Dataset &input, const QString &name, Result *result) const;
};

#pragma once

#include <QList>
#include <QString>
#include <memory>
#include <vector>

class Transform;

/// One prototype of every transform type, sorted by display name (plain case-sensitive comparison).
/// Prototypes are cloned, never executed.
class TransformCatalogue
{
public:
    TransformCatalogue();
    ~TransformCatalogue();
    TransformCatalogue(const TransformCatalogue &) = delete;
    TransformCatalogue &operator=(const TransformCatalogue &) = delete;

    /// Also those that a palette leaves out; see Transform::isBuilt().
    QList<const Transform *> types() const;
    /// A new transform of the type whose stored name this is, still without parameters; null when
    /// there is no such type.
    std::unique_ptr<Transform> create(const QString &typeName) const;

private:
    std::vector<std::unique_ptr<Transform>> m_prototypes;
};

#include "transformcatalogue.h"

#include "transformcalculate.h"
#include "transformcase.h"
#include "transformdedupe.h"
#include "transformfilter.h"
#include "transformif.h"
#include "transformjavascript.h"
#include "transformjoin.h"
#include "transformpad.h"
#include "transformremovecols.h"
#include "transformrenamecols.h"
#include "transformreorder.h"
#include "transformreplacemulti.h"
#include "transformscale.h"
#include "transformsort.h"
#include "transformsplitrows.h"
#include "transformstack.h"
#include "transformsubstitute.h"
#include "transformunique.h"
#include "transformverify.h"
#include "unbuilttransform.h"

#include <algorithm>

namespace {

/// All types. A new one takes its line here, in the order of the class names, and its facts leave
/// the list of those not built.
std::vector<std::unique_ptr<Transform>> prototypes()
{
    std::vector<std::unique_ptr<Transform>> list;
    list.push_back(std::make_unique<TransformCalculate>());
    list.push_back(std::make_unique<TransformCase>());
    list.push_back(std::make_unique<TransformDedupe>());
    list.push_back(std::make_unique<TransformFilter>());
    list.push_back(std::make_unique<TransformIf>());
    list.push_back(std::make_unique<TransformJavascript>());
    list.push_back(std::make_unique<TransformJoin>());
    list.push_back(std::make_unique<TransformPad>());
    list.push_back(std::make_unique<TransformRemoveCols>());
    list.push_back(std::make_unique<TransformRenameCols>());
    list.push_back(std::make_unique<TransformReorder>());
    list.push_back(std::make_unique<TransformReplaceMulti>());
    list.push_back(std::make_unique<TransformScale>());
    list.push_back(std::make_unique<TransformSort>());
    list.push_back(std::make_unique<TransformSplitRows>());
    list.push_back(std::make_unique<TransformStack>());
    list.push_back(std::make_unique<TransformSubstitute>());
    list.push_back(std::make_unique<TransformUnique>());
    list.push_back(std::make_unique<TransformVerify>());
    for (const TransformFacts *const facts : UnbuiltTransform::allFacts()) {
        list.push_back(std::make_unique<UnbuiltTransform>(*facts));
    }
    return list;
}

} // namespace

TransformCatalogue::TransformCatalogue()
    : m_prototypes(prototypes())
{
    std::sort(m_prototypes.begin(), m_prototypes.end(),
              [](const auto &a, const auto &b) { return a->name() < b->name(); });
}

TransformCatalogue::~TransformCatalogue() = default;

QList<const Transform *> TransformCatalogue::types() const
{
    QList<const Transform *> list;
    for (const auto &each : m_prototypes) {
        list.append(each.get());
    }
    return list;
}

std::unique_ptr<Transform> TransformCatalogue::create(const QString &typeName) const
{
    for (const auto &each : m_prototypes) {
        if (each->typeName() == typeName) {
            return each->clone();
        }
    }
    return nullptr;
}

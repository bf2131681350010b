// SPDX-License-Identifier: MIT
// The constraint: enabling, connectors, reference objects.
#include "zconstraints/ZConstraint.h"

#include "Connections.h"
#include "zbaselib/ZReport.h"
#include "zconstraints/ZEvaluateManager.h"
#include "zmodel/ZModel.h"

ZCLASS_DEFINE(BBox, ZObjectStorable)
ZCLASS_DEFINE(ZConstraint, BBox)

namespace {
bool s_ignoreSetup = false;

/// Keeps passes away while a constraint changes. On the evaluation thread it does nothing.
class EvaluationPause
{
public:
    EvaluationPause() { ZEvaluateManager::TheOne()->DevicePause(); }
    ~EvaluationPause() { ZEvaluateManager::TheOne()->DeviceRelease(); }
    EvaluationPause(const EvaluationPause&) = delete;
    EvaluationPause& operator=(const EvaluationPause&) = delete;
};

/// On the evaluation thread the report, which belongs to the user-interface thread, is out of reach: the manager takes
/// the exception there.
void RefuseInEvaluation(const char* call)
{
    if (ZEvaluateManager::TheOne()->IsEvaluationThread())
        throw ZHostMisuse(std::string(call) + ": not to be called in an evaluation");
}
} // namespace

ZConstraint::ZConstraint(const char* name) : BBox(name), m_connections(std::make_unique<Connections>())
{
    ZEvaluateManager::TheOne()->AddConstraint(this);
}

ZConstraint::~ZConstraint()
{
    ZConstraint::SystemDetach();
    if (IsDestroyed())
        return;
    PrepareDestruct();
    ZConstraint::Destruct();
}

void ZConstraint::SystemDetach()
{
    ZEvaluateManager::TheOne()->RemoveConstraint(this);
    BBox::SystemDetach();
}

void ZConstraint::Destruct()
{
    m_enabled = false;
    m_marked = false;
    ConstraintReleaseAllConnectors();
    m_connections->references.clear();
    BBox::Destruct();
}

bool ZConstraint::ConstraintSetEnabled(bool enabled)
{
    if (IsDestroyed()) {
        if (enabled)
            ZReport_Misuse("ZConstraint::ConstraintSetEnabled",
                           "the constraint \"" + GetObjectName() + "\" is destroyed");
        return false;
    }
    const EvaluationPause pause;
    if (enabled) {
        m_enabled = true;
        SetupAllConnectors(false);
        MarkForEvaluation();
    } else if (m_enabled) {
        m_enabled = false;
        m_marked = false;
        ReleaseAllConnectors();
    }
    return m_enabled;
}

void ZConstraint::MarkForEvaluation() { m_marked = true; }

void ZConstraint::SetupAllConnectors(bool) {}
void ZConstraint::ReleaseAllConnectors() { ConstraintReleaseAllConnectors(); }
bool ZConstraint::ConstraintEvaluate(const ZEvaluateInfo&) { return false; }

bool ZConstraint::IgnoreSetupAllConnectors() { return s_ignoreSetup; }

void ZConstraint::SetIgnoreSetupAllConnectors(bool ignore)
{
    const bool ends = s_ignoreSetup && !ignore;
    s_ignoreSetup = ignore;
    if (!ends)
        return;
    const EvaluationPause pause;
    const std::vector<ZConstraint*> asTheyAre = ZEvaluateManager::TheOne()->GetConstraints();
    for (ZConstraint* constraint : asTheyAre)
        if (constraint->m_enabled) {
            constraint->SetupAllConnectors(false);
            constraint->MarkForEvaluation();
        }
}

IConnector* ZConstraint::ConstraintGetSourceConnector(ZModel* object, ZDataType type)
{
    RefuseInEvaluation("ZConstraint::ConstraintGetSourceConnector");
    const EvaluationPause pause;
    return m_connections->GetSource(object, type);
}

IConnector* ZConstraint::ConstraintGetDestinationConnector(ZModel* object, ZDataType type)
{
    RefuseInEvaluation("ZConstraint::ConstraintGetDestinationConnector");
    const EvaluationPause pause;
    return m_connections->GetDestination(object, type);
}

void ZConstraint::ConstraintReleaseAllConnectors()
{
    const EvaluationPause pause;
    m_connections->Release();
    // An evaluation leaves the objects to the end of its pass.
    if (!ZEvaluateManager::TheOne()->IsEvaluationThread() && m_connections->GiveBack())
        ZEvaluateManager::TheOne()->MarkChanged();
}

void ZConstraint::ConstraintAddReferenceObject(int group, ZModel* object)
{
    RefuseInEvaluation("ZConstraint::ConstraintAddReferenceObject");
    if (object == nullptr)
        return ZReport_Misuse("ZConstraint::ConstraintAddReferenceObject", "the object is null");
    const EvaluationPause pause;
    Connections::Reference reference{{}, object};
    reference.handle.Set(object);
    m_connections->references[group].push_back(std::move(reference));
}

int ZConstraint::ConstraintGetReferenceObjectCount(int group) const
{
    const auto found = m_connections->references.find(group);
    return found == m_connections->references.end() ? 0 : static_cast<int>(found->second.size());
}

ZModel* ZConstraint::ConstraintGetReferenceObject(int group, int index) const
{
    RefuseInEvaluation("ZConstraint::ConstraintGetReferenceObject");
    if (index < 0 || index >= ConstraintGetReferenceObjectCount(group))
        return nullptr;
    const Connections::Reference& reference = m_connections->references.at(group)[static_cast<size_t>(index)];
    return reference.handle.IsValid() ? reference.model : nullptr;
}

void ZConstraint::ConstraintRemoveReferenceObject(int group, int index)
{
    const EvaluationPause pause;
    if (index < 0 || index >= ConstraintGetReferenceObjectCount(group))
        return;
    auto& references = m_connections->references.at(group);
    references.erase(references.begin() + index);
}

ZConstraint* ZConstraints_GetBoxConstraint() { return nullptr; }

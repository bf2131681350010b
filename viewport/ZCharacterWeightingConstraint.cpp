// SPDX-License-Identifier: MIT
#include "viewport/ZCharacterWeightingConstraint.h"

#include "zconstraints/ZEvaluateManager.h"
#include "zmodel/ZModel.h"

int ZCharacterWeightingConstraint::ClassId = -1;
ZClassDefinition* ZCharacterWeightingConstraint::s_classDefinition = nullptr;
ZPropertyMap* ZCharacterWeightingConstraint::s_properties = nullptr;

namespace {

constexpr int kReferenceGroup = 0;
constexpr ZDataType kDataTypes[3] = {ZDataTypeTranslation, ZDataTypeRotation, ZDataTypeScaling};

/// Keeps evaluation paused for as long as it lives.
class EvaluationPause
{
public:
    EvaluationPause() { ZEvaluateManager::TheOne()->DevicePause(); }
    ~EvaluationPause() { ZEvaluateManager::TheOne()->DeviceRelease(); }
    EvaluationPause(const EvaluationPause&) = delete;
    EvaluationPause& operator=(const EvaluationPause&) = delete;
};

/// The first of the shallowest bones; 0 for none.
int FindRoot(const ZArrayTemplate<ZModel*>& bones)
{
    int root = 0;
    int smallest = 10000;
    for (int i = 0; i < bones.GetCount(); ++i) {
        const int depth = bones[i]->GetDepth();
        if (depth < smallest) {
            smallest = depth;
            root = i;
        }
    }
    return root;
}

/// The bind transform of the last link that follows the bone; none leaves the identity.
ZgeTRS BindTransform(ZModel* bone, ZModel* model)
{
    ZgeTRS bind;
    auto* const links = static_cast<ISkinLinks*>(model->IQuery(kInterfaceSkinLinks, 0));
    if (links == nullptr)
        return bind;
    int link = links->LinkCount() - 1;
    while (link >= 0 && links->LinkModel(link) != bone)
        --link;
    if (link < 0)
        return bind;
    links->BeginLink(link);
    links->LinkBindTransform(bind.translation, bind.rotation, bind.scaling);
    links->EndLink();
    return bind;
}

ZgeVector3 RowLengths(const ZgeMatrix& m) { return ZgeDecompose(m).scaling; }

} // namespace

ZgeMatrix ZWeightingCompose(const ZgeMatrix& a, const ZgeMatrix& b)
{
    const ZgeMatrix rotation = ZgeSetRM(b) * ZgeSetRM(a);
    const ZgeVector3 sa = RowLengths(a);
    const ZgeVector3 sb = RowLengths(b);
    ZgeMatrix result = ZgeScaling({sa.x * sb.x, sa.y * sb.y, sa.z * sb.z}) * rotation;
    const ZgeVector3 translation = ZgeTransformPoint({b(3, 0), b(3, 1), b(3, 2)}, a);
    result(3, 0) = translation.x;
    result(3, 1) = translation.y;
    result(3, 2) = translation.z;
    return result;
}

ZCharacterWeightingConstraint::ZCharacterWeightingConstraint(const char* name) : ZConstraint(name)
{
    m_entity.EntityPlugNotifyRegister(ZMakeHandler<&ZCharacterWeightingConstraint::OnModelGone>(this));
}

ZCharacterWeightingConstraint::ZCharacterWeightingConstraint()
    : ZCharacterWeightingConstraint("Skinning Tool Rest Position")
{
}

ZCharacterWeightingConstraint::~ZCharacterWeightingConstraint()
{
    ConstraintSetEnabled(false);
    Destruct();
}

ZClassDefinition* ZCharacterWeightingConstraint::GetClassDefinition() const
{
    return s_classDefinition != nullptr ? s_classDefinition : ZConstraint::GetClassDefinition();
}

bool ZCharacterWeightingConstraint::Is(int classId) const
{
    return (classId >= 0 && classId == ClassId) || ZConstraint::Is(classId);
}

std::uint64_t ZCharacterWeightingConstraint::FindPropertyByName(const char* name) const
{
    return s_properties != nullptr ? FastFindPropertyByName(*s_properties, name)
                                   : ZConstraint::FindPropertyByName(name);
}

void ZCharacterWeightingConstraint::Destruct()
{
    if (IsDestroyed())
        return;
    {
        const EvaluationPause pause;
        RequestTeardown();
        RunTeardown();
    }
    m_entity.EntityPlugNotifyUnregister(ZMakeHandler<&ZCharacterWeightingConstraint::OnModelGone>(this));
    ZConstraint::Destruct();
}

ZCharacterWeightingConstraint::SkinEntry& ZCharacterWeightingConstraint::EntryOf(ZModel* model)
{
    for (const auto& entry : m_entries)
        if (entry->owner == model)
            return *entry;
    m_entries.push_back(std::make_unique<SkinEntry>());
    m_entries.back()->owner = model;
    return *m_entries.back();
}

void ZCharacterWeightingConstraint::AddBone(ZModel* bone, ZModel* model)
{
    const EvaluationPause pause;
    RunTeardown();
    const bool held = !m_bones.insert(bone).second;
    SkinEntry& entry = EntryOf(model);
    const int position = entry.bones.Add(bone);
    if (!held)
        entry.driven.Add(position); // no bone is written by two entries
    ConstraintAddReferenceObject(kReferenceGroup, bone);
    const ZgeTRS bind = BindTransform(bone, model);
    entry.bindTranslation.push_back(bind.translation);
    entry.bindRotation.push_back(bind.rotation);
    entry.bindScaling.push_back(bind.scaling);
}

void ZCharacterWeightingConstraint::RequestTeardown()
{
    const EvaluationPause pause; // a pass reads the flags, and clears them when it has run the teardown
    m_teardown[0] = m_teardown[1] = true;
}

void ZCharacterWeightingConstraint::ResetBones()
{
    const EvaluationPause pause;
    RequestTeardown();
    RunTeardown();
}

bool ZCharacterWeightingConstraint::RunTeardown()
{
    if (!IsTeardownPending())
        return false;
    ConstraintReleaseAllConnectors();
    m_entries.clear();
    m_bones.clear();
    for (int left = ConstraintGetReferenceObjectCount(kReferenceGroup); left > 0; --left)
        ConstraintRemoveReferenceObject(kReferenceGroup, 0);
    m_teardown[0] = m_teardown[1] = false;
    return true;
}

void ZCharacterWeightingConstraint::SetupAllConnectors(bool force)
{
    if (!force && IgnoreSetupAllConnectors()) {
        m_connectorsIgnored = true;
        return;
    }
    m_connectorsIgnored = false;
    const EvaluationPause pause;
    RunTeardown();
    for (const auto& entry : m_entries)
        SetupEntry(*entry);
}

void ZCharacterWeightingConstraint::SetupEntry(SkinEntry& entry)
{
    entry.root = FindRoot(entry.bones);
    const auto count = static_cast<size_t>(entry.bones.GetCount());
    for (size_t type = 0; type < 3; ++type) {
        entry.sources[type].assign(count, nullptr);
        entry.destinations[type].assign(count, nullptr);
    }
    if (count == 0)
        return;
    for (size_t type = 0; type < 3; ++type) {
        const auto root = static_cast<size_t>(entry.root);
        entry.sources[type][root] = ConstraintGetSourceConnector(entry.bones[entry.root], kDataTypes[type]);
        for (const int driven : entry.driven)
            if (driven != entry.root)
                entry.destinations[type][static_cast<size_t>(driven)] =
                    ConstraintGetDestinationConnector(entry.bones[driven], kDataTypes[type]);
    }
}

void ZCharacterWeightingConstraint::ReleaseAllConnectors()
{
    const EvaluationPause pause;
    ConstraintReleaseAllConnectors();
    for (const auto& entry : m_entries)
        for (size_t type = 0; type < 3; ++type) {
            entry->sources[type].clear();
            entry->destinations[type].clear();
        }
}

bool ZCharacterWeightingConstraint::ConstraintEvaluate(const ZEvaluateInfo& info)
{
    if (RunTeardown())
        return true;
    if (info.passId == m_lastEvaluation)
        return false;
    m_lastEvaluation = info.passId;
    for (const auto& entry : m_entries)
        EvaluateEntry(*entry, info);
    return true;
}

void ZCharacterWeightingConstraint::EvaluateEntry(const SkinEntry& entry, const ZEvaluateInfo& info) const
{
    const auto root = static_cast<size_t>(entry.root);
    const auto bind = [&entry](size_t bone) {
        return ZgeCompose({entry.bindTranslation[bone], entry.bindRotation[bone], entry.bindScaling[bone]});
    };
    if (root >= entry.sources[0].size() || entry.sources[0][root] == nullptr)
        return;
    double data[3][4] = {{0, 0, 0, 1}, {0, 0, 0, 0}, {1, 1, 1, 0}};
    for (size_t type = 0; type < 3; ++type) {
        kBufferTypeLocalGlobal buffer = kBufferTypeGlobal;
        if (!entry.sources[type][root]->ReadDataEx(data[type], buffer, info))
            return;
    }
    const ZgeMatrix current = ZgeCompose({{data[0][0], data[0][1], data[0][2], data[0][3]},
                                          {data[1][0], data[1][1], data[1][2]},
                                          {data[2][0], data[2][1], data[2][2]}});
    const ZgeMatrix anchor = ZWeightingCompose(current, bind(root));
    for (const int driven : entry.driven) {
        const auto bone = static_cast<size_t>(driven);
        if (driven == entry.root || entry.destinations[0][bone] == nullptr)
            continue;
        const ZgeMatrix rest = ZWeightingCompose(anchor, ZgeInverse(bind(bone)));
        const ZgeTRS split = ZgeDecompose(rest);
        const double translation[4] = {rest(3, 0), rest(3, 1), rest(3, 2), 1};
        const double rotation[3] = {split.rotation.x, split.rotation.y, split.rotation.z};
        const double scaling[3] = {split.scaling.x, split.scaling.y, split.scaling.z};
        const double* const written[3] = {translation, rotation, scaling};
        for (size_t type = 0; type < 3; ++type) {
            IConnector* const destination = entry.destinations[type][bone];
            destination->WriteDataEx(written[type], destination->GetBufferType(), info, kConnectorWriteDirect);
        }
    }
}

void ZCharacterWeightingConstraint::OnModelGone(ZObject*, ZEvent& event)
{
    const auto& news = static_cast<const ZPlugEvent&>(event);
    auto* const model = Object_Cast<ZModel>(news.owner);
    if (event.kind != kPlugNotifyDeleted || model == nullptr)
        return;
    const EvaluationPause pause; // a pass that runs the teardown empties both lists
    bool concerned = m_bones.count(model) > 0;
    for (const auto& entry : m_entries)
        concerned = concerned || entry->owner == model;
    if (concerned)
        ResetBones();
}

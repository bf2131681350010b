// SPDX-License-Identifier: MIT
// Undeformed positions, morph weights and the deformed positions that follow from them and from the skin.
#include "Deformer.h"
#include "TouchedLog.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZGeometryModels.h"

#include <cmath>
#include <string>

struct ZModelGeometryBase::State
{
    int count = 0;
    std::vector<float> base;
    ZgeVector3 middle; ///< of the box of the undeformed points

    std::vector<ZMorphTarget> targets;
    std::vector<float> fileWeights;     ///< one a target
    std::vector<float> animatedWeights; ///< one a target, or none
    bool morphChanged = true;
    std::vector<float> morphed; ///< empty without targets

    SkinPose pose;
    std::vector<int> touched; ///< of the update under way
    TouchedLog log;           ///< vertices that were placed anew
    std::vector<float> deformed;
    const float* result = nullptr; ///< base, morphed or deformed
    std::uint64_t version = 0;
    bool saidSingular = false;

    const std::vector<float>& Weights() const { return animatedWeights.empty() ? fileWeights : animatedWeights; }
    const float* Morph();
    void Log(bool all);
};

const float* ZModelGeometryBase::State::Morph()
{
    if (targets.empty())
        return base.data();
    if (morphChanged) {
        morphed.resize(base.size());
        MorphPositions(base.data(), targets, Weights(), morphed.data(), count);
    }
    return morphed.data();
}

void ZModelGeometryBase::State::Log(bool all)
{
    ++version;
    if (all)
        log.AddAll();
    else
        log.Add(touched.data(), touched.size());
}

ZModelGeometryBase::ZModelGeometryBase(const char* name, ZModelKind kind)
    : ZModel(name, kind), m_state(std::make_unique<State>())
{
}

ZModelGeometryBase::~ZModelGeometryBase() = default;

ZSkin* ZModelGeometryBase::MakeSkin(int deformMode)
{
    m_skin = std::make_unique<ZSkin>(this, m_state->count, deformMode);
    m_state->pose = SkinPose();
    return m_skin.get();
}

void ZModelGeometryBase::SetBasePositions(const float* positions, int count)
{
    State& state = *m_state;
    if (m_skin && count != state.count) {
        ZReport_Warning("'" + GetObjectName() + "' was given " + std::to_string(count) + " vertices instead of " +
                        std::to_string(state.count) + ": its skin and morph targets no longer fit and were dropped.");
        m_skin.reset();
    }
    if (count != state.count)
        SetMorphTargets({});
    state.log.Restart(count);
    state.count = count;
    state.base.resize(4 * static_cast<size_t>(count));
    ZgeBox box;
    for (size_t i = 0; i < static_cast<size_t>(count); ++i) {
        std::copy(positions + 3 * i, positions + 3 * i + 3, state.base.begin() + static_cast<std::ptrdiff_t>(4 * i));
        state.base[4 * i + 3] = 1.0F;
        const ZgeVector3 point{positions[3 * i], positions[3 * i + 1], positions[3 * i + 2]};
        if (std::isfinite(point.x) && std::isfinite(point.y) && std::isfinite(point.z))
            box.Widen(point);
    }
    state.middle = box.IsEmpty() ? ZgeVector3() : box.Centre();
    state.morphChanged = true;
}

void ZModelGeometryBase::SetMorphTargets(std::vector<ZMorphTarget> targets)
{
    const size_t numbers = 3 * static_cast<size_t>(m_state->count);
    for (size_t i = 0; i < targets.size(); ++i) {
        if (targets[i].positions.size() == numbers)
            continue;
        ZReport_Misuse("ZModelGeometryBase::SetMorphTargets", "Target " + std::to_string(i) + " has " +
                                                                  std::to_string(targets[i].positions.size()) +
                                                                  " numbers; " + std::to_string(m_state->count) +
                                                                  " vertices need " + std::to_string(numbers) + ".");
        targets[i].positions.resize(numbers, 0.0F);
    }
    m_state->targets = std::move(targets);
    m_state->fileWeights.assign(m_state->targets.size(), 0.0F);
    m_state->animatedWeights.clear();
    m_state->morphed = std::vector<float>();
    m_state->morphChanged = true;
}

int ZModelGeometryBase::GetMorphTargetCount() const { return static_cast<int>(m_state->targets.size()); }

void ZModelGeometryBase::SetMorphWeights(const std::vector<float>& weights)
{
    m_state->fileWeights = weights;
    m_state->fileWeights.resize(m_state->targets.size(), 0.0F);
    m_state->morphChanged = true;
}

void ZModelGeometryBase::SetAnimatedMorphWeights(const std::vector<float>& weights)
{
    std::vector<float> given = weights;
    if (!given.empty())
        given.resize(m_state->targets.size(), 0.0F);
    if (given == m_state->animatedWeights)
        return;
    m_state->animatedWeights = std::move(given);
    m_state->morphChanged = true;
}

const std::vector<float>& ZModelGeometryBase::GetMorphWeights() const { return m_state->Weights(); }

void* ZModelGeometryBase::IQuery(int interfaceId, int flags) { return ZModel::IQuery(interfaceId, flags); }

int ZModelGeometryBase::VertexCount() { return m_state->count; }

const float* ZModelGeometryBase::VertexPositions(int deformed)
{
    if (m_state->count == 0)
        return nullptr;
    if (deformed == 0)
        return m_state->base.data();
    UpdateDeformation();
    return m_state->result;
}

std::uint64_t ZModelGeometryBase::GetDeformVersion() const { return m_state->version; }

bool ZModelGeometryBase::IsDeformationMirrored() const
{
    return m_state->result == m_state->deformed.data() && !m_state->deformed.empty() && m_state->pose.IsMirrored();
}

std::uint64_t ZModelGeometryBase::GetDeformMark() const { return m_state->log.GetMark(); }

bool ZModelGeometryBase::GetDeformedSince(std::uint64_t mark, std::vector<int>& vertices) const
{
    return m_state->log.GetSince(mark, vertices);
}

bool ZModelGeometryBase::UpdateDeformation()
{
    State& state = *m_state;
    bool all = state.morphChanged;
    const float* const points = state.Morph();
    state.morphChanged = false;
    state.touched.clear();
    const float* result = points;
    if (m_skin && m_skin->LinkCount() > 0) {
        all = state.pose.Update(*m_skin, state.middle, *this, state.touched) == SkinPose::Change::All || all;
        if (!state.pose.IsSingular()) {
            state.deformed.resize(state.base.size());
            result = state.deformed.data();
            state.saidSingular = false;
            if (all || state.result != result)
                state.pose.Deform(*m_skin, points, state.deformed.data(), state.count);
            else if (!state.touched.empty())
                state.pose.DeformSome(*m_skin, points, state.deformed.data(), state.touched);
        } else if (!state.saidSingular) {
            state.saidSingular = true;
            ZReport_Warning("'" + GetObjectName() +
                            "' is scaled to nothing: its skin cannot be carried into it, so it is shown undeformed.");
        }
    }
    all = all || result != state.result;
    state.result = result;
    const bool changed = all || !state.touched.empty();
    if (changed)
        state.Log(all);
    return changed;
}

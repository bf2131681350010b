// SPDX-License-Identifier: MIT
// The constraint that puts the bones of skinned models into their bind pose while it is enabled.
#pragma once

#include "object/ZEntity.h"
#include "zbaselib/ZArray.h"
#include "zbaselib/ZGe.h"
#include "zconstraints/ZConstraint.h"

#include <memory>
#include <unordered_set>
#include <vector>

class ZModel;
class IViewportOwner;

/// Life, as a story: AddBone hands it the bones of the checked models with their bind transforms; enabling sets the
/// connectors up; every evaluation pass reads the current transform of each model's top-most bone as the anchor and
/// writes to every other bone the transform that its bind pose has relative to that anchor; RequestTeardown has the
/// next set-up, add or evaluation throw everything away. Entries change only while evaluation is paused.
class ZCharacterWeightingConstraint : public ZConstraint
{
public:
    static int ClassId;
    static ZClassDefinition* s_classDefinition;
    static ZPropertyMap* s_properties;

    explicit ZCharacterWeightingConstraint(const char* name);
    ZCharacterWeightingConstraint();
    ~ZCharacterWeightingConstraint() override;
    int GetClassId() const override { return ClassId; }
    ZClassDefinition* GetClassDefinition() const override;
    bool Is(int classId) const override;
    std::uint64_t FindPropertyByName(const char* name) const override;
    void Destruct() override;

    void SetTool(IViewportOwner* tool) { m_tool = tool; }
    /// Adds a bone of a skinned model, with its bind transform; evaluation is paused meanwhile.
    void AddBone(ZModel* bone, ZModel* model);
    /// The entries are thrown away at the next set-up, add or evaluation.
    void RequestTeardown();
    bool IsTeardownPending() const { return m_teardown[0] && m_teardown[1]; }
    /// Forgets every bone now; what was driven goes back to where animation or file has it.
    void ResetBones();

    void SetupAllConnectors(bool force) override;
    void ReleaseAllConnectors() override;
    bool ConstraintCanBeActive() override { return true; }
    bool ConstraintCanSnap() override { return false; }
    bool ConstraintDrivesSeveral() override { return true; }
    bool ConstraintIsLive() override { return true; }
    bool ConstraintEvaluate(const ZEvaluateInfo& info) override;

    /// One skinned model.
    struct SkinEntry
    {
        int root = 0;
        ZModel* owner = nullptr;
        ZArrayTemplate<ZModel*> bones;
        ZArrayTemplate<int> driven;
        std::vector<IConnector*> sources[3];      ///< translation, rotation, scaling; one a bone
        std::vector<IConnector*> destinations[3]; ///< one a bone
        std::vector<ZgeVector4> bindTranslation;
        std::vector<ZgeVector3> bindRotation;
        std::vector<ZgeVector3> bindScaling;
    };
    const std::vector<std::unique_ptr<SkinEntry>>& GetEntries() const { return m_entries; }

private:
    bool RunTeardown();
    void SetupEntry(SkinEntry& entry);
    void EvaluateEntry(const SkinEntry& entry, const ZEvaluateInfo& info) const;
    SkinEntry& EntryOf(ZModel* model);
    void OnModelGone(ZObject* sender, ZEvent& event);

    std::vector<std::unique_ptr<SkinEntry>> m_entries;
    std::unordered_set<const ZModel*> m_bones; ///< every bone of every entry
    bool m_teardown[2] = {false, false};
    bool m_connectorsIgnored = false;
    int m_lastEvaluation = 0;
    IViewportOwner* m_tool = nullptr;
    ZEntity m_entity; ///< through which it hears of bones that leave the scene
};

/// A composed with B, B applied first: rotation R_B x R_A, scaling S_A x S_B component by component, translation t_B x
/// A. No shear can arise.
ZgeMatrix ZWeightingCompose(const ZgeMatrix& a, const ZgeMatrix& b);

// SPDX-License-Identifier: MIT
// The weighting data of one model: the tool's working copy of its skin, its vertex colours and its vertex selection.
#pragma once

#include "object/ZObject.h"
#include "weights/IWeightDeform.h"
#include "weights/IWeightGeom.h"
#include "weights/VertexInfluences.h"
#include "weights/ZWeightOwner.h"
#include "zmodel/ZModel.h"

#include <memory>
#include <span>

class ISkinLinks;

/// A record that somebody else keeps: `count` links and weights, side by side.
struct VertexInfluencesView
{
    const int* links = nullptr;
    const float* weights = nullptr;
    int count = 0;
};

/// Records that somebody else keeps packed, or one that stands for all.
struct VertexInfluencesRows
{
    const int* ends = nullptr; ///< where each record ends in `all`; null: every record is `all`
    VertexInfluencesView all;

    VertexInfluencesView operator[](int index) const
    {
        if (ends == nullptr)
            return all;
        const int begin = index > 0 ? ends[index - 1] : 0;
        return {all.links + begin, all.weights + begin, ends[index] - begin};
    }
};

/// Idle while the model is not selected in the tool's model list: no records, no colours, no vertex selection. Loaded
/// while it is: a record for every vertex. Every switch is followed by a Refresh. Vertex numbers are not validated in
/// the passes over many vertices: callers pass numbers below the vertex count; single operations ignore others. Vertex
/// states: 0 not selected, 1 selected, 2 selected and active.
class ZWeightUIModelData : public ZObject
{
public:
    static int ClassId;
    static ZClassDefinition* s_classDefinition; ///< set by the plug-in's registration
    static ZPropertyMap* s_properties;          ///< the class's property cache, set by the plug-in's registration

    /// Builds everything; afterwards IsRefused says whether the model can be weighted. `showMessage` allows the message
    /// about an additive skin.
    ZWeightUIModelData(ZModel* model, IWeightOwner* tool, bool showMessage);
    ~ZWeightUIModelData() override;

    // Identity as a host class.
    int GetClassId() const override { return ClassId; }
    ZClassDefinition* GetClassDefinition() const override;
    const char* GetClassGroup() const override;
    bool Is(int classId) const override;
    std::uint64_t FindPropertyByName(const char* name) const override;
    void DestroyObject() override;
    void Destruct() override;

    bool IsRefused() const { return strategy == nullptr || geometry == nullptr; }
    ZModel* GetModel() const { return model; }
    ISkinLinks* SkinLinks() const;

    // Skin and records.
    void Refresh();
    void ResetSkinHint();
    /// Write-back of one vertex: links of the present record get 0, then the new record's links get its weights.
    /// Entries of the skin are never added or removed; a link without an entry for the vertex is passed over. While the
    /// model is not loaded only the skin is written.
    void ApplyVertexInfluences(int vertex, const VertexInfluences& record);
    /// The same for many vertices, in order; `records` has one for each index of `vertices`, and none of them is one of
    /// this model's own.
    void ApplyManyVertexInfluences(std::span<const int> vertices, const VertexInfluencesRows& records);
    /// Sets the check mark; true when it changed (then recorded, if a recorder is given, and the view is out of date).
    bool SetModelSelected(bool selected, IModelSelectionRecorder* undo);
    void ComputeProximityWeights();
    /// Adds a bone as a link of the model's skin; the link's index.
    int AddLink(ZModel* bone);
    bool IsLoaded() const { return vertexInfluences.GetCount() > 0; }

    // Weights by bone position in the tool's bone list; fractions of one.
    float VertexBoneWeight(int bone, int vertex) const;
    /// A bone that is no link of the skin becomes one when the weight is not 0. An influence that is there keeps its
    /// place, also at weight 0; a new one is appended, to the record and to the skin.
    void SetVertexBoneWeight(int bone, int vertex, double weight);
    /// VertexBoneWeight of every bone at once: byBone[bone]; bones that do not pull the vertex get 0.
    void GetVertexSpread(int vertex, std::span<float> byBone) const;
    /// For each of `vertices`, as if by SetVertexBoneWeight: 0 for every bone of the bone list, then weights[i] for
    /// bones[i], in order. The work is that of the influences touched.
    void SetManyVertexSpreads(std::span<const int> vertices, std::span<const int> bones,
                              std::span<const double> weights);
    /// The first position of a bone in boneLinkPositions, taken as a link index; -1 when it is not there.
    int LinkOfBone(int bone) const;
    /// The bone list position that belongs to a link index; -1 when the link has none.
    int BoneOfLink(int link) const
    {
        return link >= 0 && link < boneLinkPositions.GetCount() ? boneLinkPositions[link] : -1;
    }

    // Vertex selection; the recorder may be null.
    void SelectVertex(int vertex, IVertexTransitionRecorder* undo);
    void ActivateVertex(int vertex, IVertexTransitionRecorder* undo);
    void DeactivateVertex(int vertex, IVertexTransitionRecorder* undo);
    void DeselectVertex(int vertex, IVertexTransitionRecorder* undo);
    void SetVertexState(int vertex, int target);
    int GetVertexState(int vertex) const;
    /// Between these two, removals from the two lists are collected and done in one stable pass at the end (or when the
    /// order of a list is needed); nests. The result is that of doing them one by one; until then a list may still hold
    /// vertices that left it.
    void BeginSelectionBatch();
    void EndSelectionBatch();
    /// Makes the lists true now, in the middle of a batch.
    void FlushSelectionBatch();
    /// Room for so many more selected and active vertices.
    void ReserveSelection(int more);
    void MarkInfluencingBones(int* marks, int boneCount) const;

    // Colours, by the model's strategy.
    void ComputeColors(const ZBoneColourTable& table, int colourMode);
    void ComputeActiveColors(const ZBoneColourTable& table, int colourMode, int weightingMode);
    void BoneColorChanged(const ZBoneColourTable& table, int bonePosition, int colourMode, float oldRed, float oldGreen,
                          float oldBlue);

    /// Bytes of records, colours, states and lists together.
    size_t GetByteCount() const;

    // Fields, in order of declaration. Read by strategies, adapters, picking and records.
    ZModel* model = nullptr;      ///< not owned
    IWeightOwner* tool = nullptr; ///< not owned
    ZArrayTemplate<int, 16> boneLinkPositions;
    IWeightGeom* geometry = nullptr;                    ///< owned
    IWeightDeform* strategy = nullptr;                  ///< owned
    ZArrayTemplate<VertexInfluences*> vertexInfluences; ///< owned through the slabs
    std::uint8_t noActiveVertices = 1;
    std::uint8_t noSelectedVertices = 1;
    std::uint8_t modelSelected = 0;
    std::uint8_t normaliseOnRefresh = 1;
    std::uint8_t skinHintPending = 1;
    ZArrayTemplate<int, 16> selectedVertices; ///< in selection order
    ZArrayTemplate<int, 16> activeVertices;   ///< in activation order
    ZArrayTemplate<int, 16> vertexStates;
    ZArrayTemplate<float, 16> vertexColours; ///< red, green, blue, alpha a vertex

private:
    struct Private;

    void ChooseGeometry();
    void Unload();
    void RebuildBoneLinkPositions();
    void PrepareRecords(int begin, int end, bool fresh);
    void ReadSkin(ISkinLinks& links, int vertexCount, bool fresh);
    void AppendBoneLinkPosition(int bone);
    void IndexBoneLinks() const;
    bool HasVertex(int vertex) const { return vertex >= 0 && vertex < vertexStates.GetCount(); }
    VertexInfluences* RecordOf(int vertex) const
    {
        return vertex >= 0 && vertex < vertexInfluences.GetCount() ? vertexInfluences[vertex] : nullptr;
    }
    void ApplyToUnloaded(std::span<const int> vertices, const VertexInfluencesRows& records);
    void RemoveFromSelected(int vertex);
    void RemoveFromActive(int vertex);

    std::unique_ptr<Private> m_private;
};

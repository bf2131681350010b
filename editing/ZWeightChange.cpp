// SPDX-License-Identifier: MIT
// A change of one bone's weight, from the begin of its undo step to the end.
//
// A gesture is one step: a typed number begins and ends it in one call; a drag begins with the press, changes weights
// call after call and ends with the release. What the active vertices had is recorded at the begin, what the first of
// them has at the end.
#include "editing/ZWeightChange.h"

#include "editing/SpreadRebalance.h"
#include "editing/ZWeightSelection.h"
#include "editing/ZWeightingUndo.h"
#include "zbaselib/ZMemory.h"

#include <cstring>
#include <unordered_map>
#include <vector>

ZWeightChange::Row ZWeightChange::RowAt(int row) const
{
    const ZWeightSelection& selection = m_owner.Selection();
    if (row < 0 || row >= selection.vertexRows.GetCount())
        return {};
    return {selection.vertexModels[row], selection.vertexRows[row]};
}

ZWeightChange::Row ZWeightChange::CurrentRow() const { return RowAt(m_owner.CurrentVertexRow()); }

void ZWeightChange::ApplyWeightChange(bool begin, bool end, double requested, int spreadRow)
{
    if (begin)
        CloseOpenChange();
    const ZArrayTemplate<int, 16>& spreadRows = m_owner.SpreadRows();
    const bool isThere = CurrentRow().data != nullptr && spreadRow >= 0 && spreadRow < spreadRows.GetCount() &&
                         spreadRows[spreadRow] >= 0 && spreadRows[spreadRow] < m_owner.BoneList().GetCount();
    if (isThere) {
        if (!IsOpen())
            Begin();
        if (!Change(requested, spreadRow))
            TakeSpreadSnapshot();
        m_owner.RecolourActiveVertices();
        m_owner.RefreshSpread(true);
    }
    if (end)
        CloseOpenChange();
}

void ZWeightChange::Begin()
{
    m_record = new ZWeightingWeightChangeUndo(&m_owner);
    ZUndoStack* const stack = ZUndoStack::TheOne();
    stack->TransactionBegin("Apply Weight Change", false);
    m_openDepth = stack->TransactionDepth();
    stack->TransactionAdd(m_record);
    ZWeightUIModelDataList& models = m_owner.ModelDataList();
    for (int i = 0; i < models.GetCount(); ++i)
        if (models[i]->modelSelected != 0 && !models[i]->activeVertices.IsEmpty())
            m_record->RecordBefore(models[i]);
}

/// Works out and writes the new spread. True when the request was capped: then the snapshot stays, so that weight that
/// was pushed out of other bones can flow back to them.
bool ZWeightChange::Change(double requested, int spreadRow)
{
    const Row current = CurrentRow();
    std::vector<float> weights(static_cast<size_t>(m_owner.BoneList().GetCount()));
    current.data->GetVertexSpread(current.vertex, weights);
    const RebalancedSpread spread =
        Spread_Rebalance(weights, m_owner.LockFlags().Span(), m_owner.SpreadRows()[spreadRow], requested,
                         snapshotBones.Span(), snapshotWeights.Span());
    WriteSpread(spread);
    return spread.capped;
}

void ZWeightChange::WriteSpread(const RebalancedSpread& spread)
{
    const bool toTargets = m_owner.WeightingMode() == kAffectAllSelected;
    std::vector<int> bones;
    std::vector<double> weights;
    for (const std::vector<BoneShare>* const part : {&spread.free, &spread.locked}) {
        for (const BoneShare& share : *part) {
            bones.push_back(share.bone);
            weights.push_back(share.percent / 100.0);
            if (!toTargets)
                SetSpreadWeight(share.bone, share.percent);
        }
    }
    if (toTargets)
        WriteToTargets(bones, weights);
}

/// Every target vertex is emptied and then gets the spread; the vertices of one model go together.
void ZWeightChange::WriteToTargets(std::span<const int> bones, std::span<const double> weights)
{
    std::vector<ZWeightUIModelData*> models;
    std::unordered_map<ZWeightUIModelData*, ZArrayTemplate<int>> verticesOf;
    const std::span<const int> targets = m_owner.Selection().targetRows.Span();
    size_t next = 0;
    while (next < targets.size()) {
        // Targets of one model stand together, mostly.
        ZWeightUIModelData* const model = RowAt(targets[next]).data;
        const size_t begin = next;
        while (next < targets.size() && RowAt(targets[next]).data == model)
            ++next;
        if (model == nullptr)
            continue;
        ZArrayTemplate<int>& vertices = verticesOf[model];
        if (vertices.IsEmpty())
            models.push_back(model);
        ZMemory_ReserveMore(vertices, static_cast<int>(next - begin));
        for (size_t i = begin; i < next; ++i)
            vertices.Add(RowAt(targets[i]).vertex);
    }
    for (ZWeightUIModelData* const model : models)
        model->SetManyVertexSpreads(verticesOf[model].Span(), bones, weights);
}

void ZWeightChange::SetSpreadWeight(int bone, double percent)
{
    const double weight = percent / 100.0;
    const int mode = m_owner.WeightingMode();
    if (mode == kAffectFirstSelected) {
        const Row current = CurrentRow();
        if (current.data != nullptr)
            current.data->SetVertexBoneWeight(bone, current.vertex, weight);
    } else if (mode == kAffectAllSelected) {
        for (const int target : m_owner.Selection().targetRows) {
            const Row row = RowAt(target);
            if (row.data != nullptr)
                row.data->SetVertexBoneWeight(bone, row.vertex, weight);
        }
    }
}

void ZWeightChange::TakeSpreadSnapshot()
{
    snapshotBones.RemoveAll();
    snapshotWeights.RemoveAll();
    const Row current = CurrentRow();
    if (m_owner.Selection().noActive || current.data == nullptr)
        return;
    std::vector<float> weights(static_cast<size_t>(m_owner.BoneList().GetCount()));
    current.data->GetVertexSpread(current.vertex, weights);
    for (size_t bone = 0; bone < weights.size(); ++bone) {
        const float percent = weights[bone] * 100.0F;
        if (percent != 0.0F) {
            snapshotBones.Add(static_cast<int>(bone));
            snapshotWeights.Add(percent);
        }
    }
}

void ZWeightChange::CloseOpenChange()
{
    if (!IsOpen())
        return;
    ZUndoStack* const stack = ZUndoStack::TheOne();
    // Whoever emptied the stack meanwhile has closed our step, too.
    if (stack->TransactionDepth() >= m_openDepth)
        End();
    m_record = nullptr;
    m_openDepth = 0;
}

void ZWeightChange::End()
{
    ZUndoStack* const stack = ZUndoStack::TheOne();
    const int transaction = stack->TransactionGetCount();
    IUndo* const last = stack->TransactionGetUndo(transaction, stack->TransactionGetUndoCount(transaction));
    // Another record that was added meanwhile is not ours to complete.
    if (last == m_record && std::strcmp(last->GetName(), "ZWeightingWeightChange") == 0)
        m_record->RecordAfter();
    stack->TransactionEnd(false, false);
}

// SPDX-License-Identifier: MIT
// A requested percentage for one bone becomes a whole new spread of the current vertex.
#pragma once

#include "editing/ZEditingOwner.h"
#include "zbaselib/ZArray.h"

#include <span>

class ZWeightingWeightChangeUndo;
struct RebalancedSpread;

/// The changed bone takes the requested per cent, the other unlocked bones share the rest in proportion, locked bones
/// keep theirs; the spread totals 100. Written to the current vertex, or to every target row's vertex. One undo step
/// "Apply Weight Change" from a call with `begin` to a call with `end`.
class ZWeightChange
{
public:
    explicit ZWeightChange(IEditingOwner& owner) : m_owner(owner) {}

    /// `requested` is per cent, clamped to 0..100; a number that is none asks for what the bone has. A call without a
    /// current row, or for a spread row that is not there, changes no weight; with `end` it still closes the change.
    /// Ends with the owner's RecolourActiveVertices and RefreshSpread(true). A call outside an open change begins one,
    /// so that nothing is changed past the undo stack; a change that altered no weight leaves no step.
    void ApplyWeightChange(bool begin, bool end, double requested, int spreadRow);
    /// Writes percent / 100 for the bone: weighting mode 0 into the current vertex, 1 into every target row's vertex.
    void SetSpreadWeight(int bone, double percent);
    void TakeSpreadSnapshot();
    /// A change that was begun and will get no end (tool closed, model deleted): ends its transaction.
    void CloseOpenChange();
    bool IsOpen() const { return m_record != nullptr; }

    ZArrayTemplate<int, 16> snapshotBones;
    ZArrayTemplate<float, 16> snapshotWeights; ///< per cent

private:
    /// A row of the vertex list; `data` is null when there is none.
    struct Row
    {
        ZWeightUIModelData* data = nullptr;
        int vertex = -1;
    };
    Row CurrentRow() const;
    Row RowAt(int row) const;
    void Begin();
    void End();
    bool Change(double requested, int spreadRow);
    void WriteSpread(const RebalancedSpread& spread);
    void WriteToTargets(std::span<const int> bones, std::span<const double> weights);

    IEditingOwner& m_owner;
    ZWeightingWeightChangeUndo* m_record = nullptr; ///< of the open change; owned by the undo stack
    int m_openDepth = 0;                            ///< of the undo stack, with our own begin counted
};

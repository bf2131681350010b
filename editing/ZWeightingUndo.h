// SPDX-License-Identifier: MIT
// The tool's three undo records. They refer to models through plug handles and never own them; a record whose model is
// gone does nothing.
#pragma once

#include "editing/ZEditingOwner.h"
#include "object/ZPlug.h"
#include "object/ZUndoStack.h"
#include "weights/VertexInfluences.h"
#include "weights/ZWeightUIModelData.h"

#include <memory>
#include <vector>

/// What the three records share: they answer the undo interface and know the tool.
class ZWeightingUndoBase : public IUndo
{
public:
    void* IQuery(int interfaceId, int flags) override;
    void Destroy() override;
    void TransactionClosed() override {}

protected:
    explicit ZWeightingUndoBase(IEditingOwner* tool);
    /// The tool, or null when it was closed: a record outlives its tool harmlessly.
    IEditingOwner* Tool() const;

private:
    std::shared_ptr<IEditingOwner*> m_tool;
};

/// The tool tells when it opens and when it goes, so that records on the stack know.
void ZWeightingUndo_ToolOpened(IEditingOwner* tool);
void ZWeightingUndo_ToolClosed(IEditingOwner* tool);

/// Vertex states of one model. Undo sets, in the order of the record, each vertex to its first old state; redo takes
/// the new states in order.
class ZWeightingSelectionUndo : public ZWeightingUndoBase, public IVertexTransitionRecorder
{
public:
    explicit ZWeightingSelectionUndo(IEditingOwner* tool);
    void SetModel(ZWeightUIModelData* model);
    /// Room for so many more transitions.
    void Reserve(int more);
    void RecordTransition(int vertex, int oldState, int newState) override;
    bool IsEmpty() override;
    void TransactionClosed() override;
    void Undo() override;
    void Redo() override;
    const char* GetName() override { return "ZWeightingSelectionUndo"; }
    size_t GetByteCount() const;

    ZArrayTemplate<int, 16> vertices;
    ZArrayTemplate<int, 16> oldStates;
    ZArrayTemplate<int, 16> newStates;
    HdlZPlug model;
};

/// Check marks of models.
class ZWeightingModelSelectionUndo : public ZWeightingUndoBase, public IModelSelectionRecorder
{
public:
    explicit ZWeightingModelSelectionUndo(IEditingOwner* tool);
    void RecordModelSelection(ZWeightUIModelData* item, bool oldFlag, bool newFlag) override;
    bool IsEmpty() override;
    void Undo() override;
    void Redo() override;
    const char* GetName() override { return "ZWeightingModelSelection"; }

    std::vector<HdlZPlug> models;
    ZArrayTemplate<std::uint8_t> oldFlags;
    ZArrayTemplate<std::uint8_t> newFlags;

private:
    void SetFlags(const ZArrayTemplate<std::uint8_t>& flags);
};

/// One model's part of a weight change: what each active vertex had, and the one spread that redo gives to all of them.
/// The records before are stored packed: offsets, links and weights side by side.
class ZWeightingWeightChangeUndoEntry
{
public:
    virtual ~ZWeightingWeightChangeUndoEntry() = default;
    /// Room for what AddVertex will add, exactly.
    void Reserve(int vertexCount, int influenceCount);
    void AddVertex(int vertex, const VertexInfluences& before);
    /// The record of vertex `index` as it was.
    void GetBefore(int index, VertexInfluences& record) const;
    /// All of them in place, and what redo gives to each; valid while the entry is not changed.
    VertexInfluencesRows RowsBefore() const;
    VertexInfluencesRows RowsAfter() const;
    size_t GetByteCount() const;

    /// What redo gives to every vertex. A change that ended without saying it is not made again.
    void SetAfter(const VertexInfluences& record);
    bool HasAfter() const { return m_hasAfter; }

    HdlZPlug model;
    ZArrayTemplate<int> vertices;
    VertexInfluences after;

private:
    bool m_hasAfter = false;
    ZArrayTemplate<int> m_offsets; ///< end of each vertex's influences
    ZArrayTemplate<int> m_links;
    ZArrayTemplate<float> m_weights;
};

class ZWeightingWeightChangeUndo : public ZWeightingUndoBase
{
public:
    explicit ZWeightingWeightChangeUndo(IEditingOwner* tool);
    ~ZWeightingWeightChangeUndo() override;
    /// Appends the before-state of every active vertex of `item`.
    void RecordBefore(ZWeightUIModelData* item);
    /// The after-state of each entry: what the model's first active vertex has now. When no vertex differs from what it
    /// was, the record forgets its entries: nothing would be undone.
    void RecordAfter();
    bool IsEmpty() override;
    void Undo() override;
    void Redo() override;
    const char* GetName() override { return "ZWeightingWeightChange"; }
    size_t GetByteCount() const;

    std::vector<ZWeightingWeightChangeUndoEntry*> entries; ///< owned

private:
    bool ChangedAnything() const;
    void Forget();
    void Write(bool after);
};

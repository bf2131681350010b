// SPDX-License-Identifier: MIT
// What the undo records share, and the records of selections.
#include "editing/ZWeightingUndo.h"

#include "zbaselib/ZMemory.h"

#include <cstdint>
#include <map>

// Records reach their tool through a slot that the tool empties when it goes.

namespace {

using ToolSlot = std::shared_ptr<IEditingOwner*>;

std::map<IEditingOwner*, ToolSlot>& ToolSlots()
{
    static std::map<IEditingOwner*, ToolSlot> slots;
    return slots;
}

ToolSlot SlotOf(IEditingOwner* tool)
{
    if (tool == nullptr)
        return nullptr;
    ToolSlot& slot = ToolSlots()[tool];
    if (!slot)
        slot = std::make_shared<IEditingOwner*>(tool);
    return slot;
}

ZWeightUIModelData* DataOf(const HdlZPlug& handle)
{
    ZPlug* const plug = handle.Get();
    return plug != nullptr ? static_cast<ZWeightUIModelData*>(plug->GetPlugOwner()) : nullptr;
}

} // namespace

void ZWeightingUndo_ToolOpened(IEditingOwner* tool) { SlotOf(tool); }

void ZWeightingUndo_ToolClosed(IEditingOwner* tool)
{
    const auto found = ToolSlots().find(tool);
    if (found == ToolSlots().end())
        return;
    *found->second = nullptr;
    ToolSlots().erase(found);
}

ZWeightingUndoBase::ZWeightingUndoBase(IEditingOwner* tool) : m_tool(SlotOf(tool)) {}

IEditingOwner* ZWeightingUndoBase::Tool() const { return m_tool ? *m_tool : nullptr; }

void* ZWeightingUndoBase::IQuery(int interfaceId, int)
{
    if (interfaceId == kInterfaceObject)
        return static_cast<IObject*>(this);
    return interfaceId == kInterfaceUndo ? static_cast<IUndo*>(this) : nullptr;
}

void ZWeightingUndoBase::Destroy() { delete this; }

// Vertex states.

ZWeightingSelectionUndo::ZWeightingSelectionUndo(IEditingOwner* tool) : ZWeightingUndoBase(tool) {}

void ZWeightingSelectionUndo::SetModel(ZWeightUIModelData* data) { model.Set(data); }

void ZWeightingSelectionUndo::Reserve(int more)
{
    for (ZArrayTemplate<int, 16>* const list : {&vertices, &oldStates, &newStates})
        ZMemory_ReserveMore(*list, more);
}

void ZWeightingSelectionUndo::RecordTransition(int vertex, int oldState, int newState)
{
    vertices.Add(vertex);
    oldStates.Add(oldState);
    newStates.Add(newState);
}

bool ZWeightingSelectionUndo::IsEmpty() { return vertices.IsEmpty(); }

void ZWeightingSelectionUndo::TransactionClosed()
{
    // Growing left room that is not needed any more.
    for (ZArrayTemplate<int, 16>* const list : {&vertices, &oldStates, &newStates})
        list->ShrinkToFit();
}

void ZWeightingSelectionUndo::Undo()
{
    ZWeightUIModelData* const data = DataOf(model);
    if (data == nullptr)
        return;
    // A gesture may have moved a vertex more than once; what it had before the gesture is its first old state.
    ZArrayTemplate<std::uint8_t> done;
    done.SetCountUninitialised(data->vertexStates.GetCount());
    ZMemory_ExpectAnyOrder(done.GetData(), done.size());
    done.Fill(0);
    data->ReserveSelection(vertices.GetCount());
    data->BeginSelectionBatch();
    for (int i = 0; i < vertices.GetCount(); ++i) {
        const int vertex = vertices[i];
        ZMemory_FetchAhead(data->vertexStates, vertices.Span(), i);
        ZMemory_FetchAhead(done, vertices.Span(), i);
        if (vertex < 0 || vertex >= done.GetCount() || done[vertex] != 0)
            continue;
        done[vertex] = 1;
        data->SetVertexState(vertex, oldStates[i]);
    }
    data->EndSelectionBatch();
    if (IEditingOwner* const tool = Tool())
        tool->RebuildVertexRows();
}

void ZWeightingSelectionUndo::Redo()
{
    ZWeightUIModelData* const data = DataOf(model);
    if (data == nullptr)
        return;
    data->ReserveSelection(vertices.GetCount());
    data->BeginSelectionBatch();
    for (int i = 0; i < vertices.GetCount(); ++i) {
        ZMemory_FetchAhead(data->vertexStates, vertices.Span(), i);
        data->SetVertexState(vertices[i], newStates[i]);
    }
    data->EndSelectionBatch();
    if (IEditingOwner* const tool = Tool())
        tool->RebuildVertexRows();
}

size_t ZWeightingSelectionUndo::GetByteCount() const
{
    return sizeof(*this) + vertices.GetHeapBytes() + oldStates.GetHeapBytes() + newStates.GetHeapBytes();
}

// Check marks.

ZWeightingModelSelectionUndo::ZWeightingModelSelectionUndo(IEditingOwner* tool) : ZWeightingUndoBase(tool) {}

void ZWeightingModelSelectionUndo::RecordModelSelection(ZWeightUIModelData* item, bool oldFlag, bool newFlag)
{
    models.emplace_back().Set(item);
    oldFlags.Add(oldFlag ? 1 : 0);
    newFlags.Add(newFlag ? 1 : 0);
}

bool ZWeightingModelSelectionUndo::IsEmpty() { return models.empty(); }

void ZWeightingModelSelectionUndo::Undo() { SetFlags(oldFlags); }
void ZWeightingModelSelectionUndo::Redo() { SetFlags(newFlags); }

void ZWeightingModelSelectionUndo::SetFlags(const ZArrayTemplate<std::uint8_t>& flags)
{
    IEditingOwner* const tool = Tool();
    if (tool == nullptr)
        return;
    bool any = false;
    for (size_t i = 0; i < models.size(); ++i) {
        ZWeightUIModelData* const data = DataOf(models[i]);
        if (data == nullptr)
            continue;
        tool->SetModelSelected(data, flags[static_cast<int>(i)] != 0, nullptr);
        any = true;
    }
    if (any)
        tool->RefreshModelList(false, false);
}

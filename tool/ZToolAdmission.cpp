// SPDX-License-Identifier: MIT
// How models enter the tool, are checked and unchecked, and leave it.
#include "tool/ZToolCharacterWeighting.h"

#include "editing/ZWeightingUndo.h"
#include "object/ZAction.h"
#include "object/ZUndoStack.h"
#include "weights/ZWeightUIModelData.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZGeometryModels.h"

#include <new>

namespace {

constexpr int kKeyDragOut = 4; ///< the middle mouse button

/// The mesh as others see it: while a tool edits it no other tool may take it.
IModelGeometry* EditedMesh(ZModel* model)
{
    if (Object_Cast<ZModelPolymesh>(model) == nullptr)
        return nullptr;
    return static_cast<IModelGeometry*>(model->IQuery(kInterfaceModelGeometry, 0));
}

} // namespace

void ZToolCharacterWeighting::OnModelListEvent(ZObject*, ZEvent& event)
{
    if (event.kind == kViewValueChanged) {
        ChangeChecks();
        return;
    }
    if (event.kind != kViewDragAndDrop)
        return;
    switch (static_cast<const ZtEvent&>(event).stage) {
    case kDragOver:
        GlobalDragAndDrop_Accept();
        break;
    case kDragDrop:
        DropModels();
        break;
    case kDragStart:
        if (Object_GetCurrentKeyState(kKeyDragOut, true))
            DragModelsOut();
        break;
    default:
        break;
    }
}

void ZToolCharacterWeighting::DropModels()
{
    CutOffGestures();
    ZUndoStack* const stack = ZUndoStack::TheOne();
    auto* const record = new ZWeightingModelSelectionUndo(this);
    stack->TransactionBegin("Tool Weighting Drop", false);
    stack->TransactionAdd(record);
    bool checkFirst = true;
    bool warn = true;
    for (int i = 0; i < GlobalDragAndDrop_GetCount(); ++i) {
        IObject* const object = GlobalDragAndDrop_Get(i);
        ZModel* const model = object != nullptr ? Object_Cast<ZModel>(object) : nullptr;
        if (ZWeightUIModelData* const item = AdmitModel(model, warn)) {
            SetModelSelected(item, checkFirst, record);
            checkFirst = false;
        }
    }
    GlobalDragAndDrop_End();
    stack->TransactionEnd(false, false);
    RefreshModelList(false, false);
}

void ZToolCharacterWeighting::DragModelsOut()
{
    CutOffGestures();
    // Every row of the vertex list belongs to a checked model, and all of those leave.
    m_panel.selection.Clear();
    for (int i = 0; i < m_models.GetCount();) {
        if (m_models[i]->modelSelected == 0) {
            ++i;
            continue;
        }
        GlobalDragAndDrop_Add(m_models[i]->GetModel(), 0);
        RemoveModelAt(i); // the next item moves into its place
    }
    RefreshModelList(false, false);
    RehandRestPosition();
}

void ZToolCharacterWeighting::ChangeChecks()
{
    if (m_models.GetCount() == 0) {
        FillModelRows(); // the row that invites to drop models stays checked
        return;
    }
    CutOffGestures();
    ZUndoStack* const stack = ZUndoStack::TheOne();
    auto* const record = new ZWeightingModelSelectionUndo(this);
    stack->TransactionBegin("Tool Weighting Value Changed", false);
    stack->TransactionAdd(record);
    for (int i = 0; i < m_models.GetCount(); ++i)
        SetModelSelected(m_models[i], m_modelListBox.GetRowCheck(i), record);
    stack->TransactionEnd(false, false);
    RefreshModelList(false, true);
}

ZWeightUIModelData* ZToolCharacterWeighting::AdmitModel(ZModel* model, bool& warn)
{
    if (model == nullptr || m_itemOf.count(model) > 0 || model->ModelIneligible() != 0)
        return nullptr;
    if (model->IQuery(kInterfaceSkinLinks, 0) == nullptr)
        return nullptr; // no skin, no weights
    auto* const item = new (std::nothrow) ZWeightUIModelData(model, this, warn);
    if (item == nullptr)
        return nullptr;
    item->SetStatusBits(ZObject::kStatusDestroyFrees);
    if (item->IsRefused()) {
        warn = false;
        item->DestroyObject();
        return nullptr;
    }
    m_models.InternalAdd(item);
    m_itemOf.emplace(model, item);
    if (IModelGeometry* const mesh = EditedMesh(model))
        mesh->BeginEdit();
    m_refreshPending = true;
    return item;
}

bool ZToolCharacterWeighting::SetModelSelected(ZWeightUIModelData* item, bool selected, IModelSelectionRecorder* undo)
{
    if (!item->SetModelSelected(selected, undo))
        return false;
    m_refreshPending = true;
    return true;
}

void ZToolCharacterWeighting::RemoveModelAt(int index)
{
    ZWeightUIModelData* const item = m_models[index];
    if (item == nullptr)
        return;
    if (IModelGeometry* const mesh = EditedMesh(item->GetModel()))
        mesh->EndEdit();
    m_itemOf.erase(item->GetModel());
    m_panel.selection.RemoveModel(item);
    item->DestroyObject();
    m_models.InternalRemoveAt(index);
    m_refreshPending = true;
}

void ZToolCharacterWeighting::RemoveModel(ZWeightUIModelData* item)
{
    for (int i = m_models.GetCount() - 1; i >= 0; --i)
        if (m_models[i] == item) {
            RemoveModelAt(i);
            return;
        }
}

/// Frees the weighting data of all models and forgets models and bones.
void ZToolCharacterWeighting::EmptyLists()
{
    m_panel.selection.Clear();
    while (m_models.GetCount() > 0)
        RemoveModelAt(m_models.GetCount() - 1);
    m_boneList.RemoveAll();
    m_bonePositions.clear();
}

// SPDX-License-Identifier: MIT
// The drag that is under way: its objects, and its stages at the view that it is over.
#include "zdesktop/ZDragAndDrop.h"

#include "object/ZObject.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZModel.h"
#include "ztoolkit/ZtView.h"

#include <vector>

namespace {
/// One object of the drag. Host objects are held by a handle, so that one that goes meanwhile is null.
struct Dragged
{
    IObject* object = nullptr;
    HdlZPlug handle;
    bool handled = false;
    IObject* Get() const { return !handled || handle.IsValid() ? object : nullptr; }
};

struct Drag
{
    bool underWay = false;
    bool accepted = false;
    int handling = 0; ///< views that are handling a stage
    std::vector<Dragged> objects;
};

Drag& TheDrag()
{
    static Drag drag;
    return drag;
}

void Append(IObject* object)
{
    Dragged dragged;
    dragged.object = object;
    if (ZObject* const held = Object_FromInterface(object)) {
        dragged.handle.Set(held);
        dragged.handled = true;
    }
    TheDrag().objects.push_back(std::move(dragged));
}

/// The geometry models under a node, depth first.
std::vector<ZModel*> GeometryUnder(const ZModel& node)
{
    std::vector<ZModel*> found;
    std::vector<ZTransformNode*> open(node.GetChildren().rbegin(), node.GetChildren().rend());
    while (!open.empty()) {
        ZTransformNode* const next = open.back();
        open.pop_back();
        if (ZModel* const model = Object_Cast<ZModel>(next); model != nullptr && model->HasGeometry())
            found.push_back(model);
        open.insert(open.end(), next->GetChildren().rbegin(), next->GetChildren().rend());
    }
    return found;
}

/// Sends one stage to a view; counts it as handling meanwhile, also when a handler throws.
void SendStage(ZtView& view, int stage)
{
    struct Handling
    {
        Handling() { ++TheDrag().handling; }
        ~Handling() { --TheDrag().handling; }
    } const handling;
    ZtEvent event(kViewDragAndDrop);
    event.stage = stage;
    view.Send(event);
}

bool MayBegin(const char* call)
{
    if (TheDrag().handling == 0)
        return true;
    ZReport_Misuse(call, "a drag is being handled; the next one can begin after it");
    return false;
}
} // namespace

int GlobalDragAndDrop_GetCount() { return static_cast<int>(TheDrag().objects.size()); }

IObject* GlobalDragAndDrop_Get(int index)
{
    const Drag& drag = TheDrag();
    if (index < 0 || index >= GlobalDragAndDrop_GetCount())
        return nullptr;
    return drag.objects[static_cast<size_t>(index)].Get();
}

void GlobalDragAndDrop_Accept()
{
    if (TheDrag().underWay)
        TheDrag().accepted = true;
    else
        ZReport_Misuse("GlobalDragAndDrop_Accept", "no drag is under way");
}

void GlobalDragAndDrop_Add(IObject* object, int)
{
    if (!TheDrag().underWay) {
        ZReport_Misuse("GlobalDragAndDrop_Add", "no drag is under way");
        return;
    }
    const ZModel* const model = Object_Cast<ZModel>(object);
    if (model == nullptr || model->HasGeometry() || model->IsBone()) {
        Append(object);
        return;
    }
    const std::vector<ZModel*> geometry = GeometryUnder(*model);
    if (geometry.empty())
        Append(object);
    for (ZModel* const under : geometry)
        Append(under);
}

void GlobalDragAndDrop_End()
{
    Drag& drag = TheDrag();
    drag.underWay = false;
    drag.accepted = false;
    drag.objects.clear();
}

void GlobalDragAndDrop_Begin()
{
    if (!MayBegin("GlobalDragAndDrop_Begin"))
        return;
    GlobalDragAndDrop_End();
    TheDrag().underWay = true;
}

bool GlobalDragAndDrop_DropOn(ZtView* view)
{
    if (!MayBegin("GlobalDragAndDrop_DropOn"))
        return false;
    Drag& drag = TheDrag();
    if (!drag.underWay) {
        ZReport_Misuse("GlobalDragAndDrop_DropOn", "no drag is under way");
        return false;
    }
    struct Ending
    {
        ~Ending() { GlobalDragAndDrop_End(); }
    } const ending;
    if (view == nullptr || !view->IsEnabled())
        return false;
    HdlZPlug target;
    target.Set(view);
    drag.accepted = false;
    SendStage(*view, kDragOver);
    if (!drag.underWay || !drag.accepted || !target.IsValid())
        return false;
    SendStage(*view, kDragDrop);
    return true;
}

int GlobalDragAndDrop_StartFrom(ZtView* view)
{
    if (!MayBegin("GlobalDragAndDrop_StartFrom"))
        return 0;
    GlobalDragAndDrop_Begin();
    if (view == nullptr || !view->IsEnabled())
        return 0;
    try {
        SendStage(*view, kDragStart);
    } catch (...) {
        GlobalDragAndDrop_End();
        throw;
    }
    return GlobalDragAndDrop_GetCount();
}

// SPDX-License-Identifier: MIT
// A well-behaved plug-in: a tiny tool with a manipulator, a shortcut and a control that records a step; and catalogue
// entries whose factories fail in the ways that a factory can.
#include "bcore/ZPluginApi.h"
#include "object/ZCatalogue.h"
#include "object/ZShortCutKeyManager.h"
#include "object/ZUndoStack.h"
#include "zdesktop/ZTool.h"
#include "zmanipulator/ZManipulator.h"
#include "ztoolkit/ZtControls.h"
#include "zxtrobject/ZXtrObject.h"

#include <stdexcept>

SKINDESK_PLUGIN_STAMP

namespace {
class FlipRecord : public IUndo
{
public:
    void* IQuery(int id, int) override { return id == kInterfaceUndo ? this : nullptr; }
    void Destroy() override { delete this; }
    bool IsEmpty() override { return false; }
    void TransactionClosed() override {}
    void Undo() override {}
    void Redo() override {}
    const char* GetName() override { return "Flip"; }
};

class TinyManipulator : public ZManipulator
{
public:
    static int ClassId;
    static ZClassDefinition Definition;
    TinyManipulator() : ZManipulator("Tiny", 1) {}
    int GetClassId() const override { return ClassId; }
    ZClassDefinition* GetClassDefinition() const override { return &Definition; }
    bool Is(int classId) const override { return (classId >= 0 && classId == ClassId) || ZManipulator::Is(classId); }
    bool ManipulatorInputNotify(ZManipulatorInput& input) override
    {
        if (input.kind == kInputPress)
            ZUndoStack::TheOne()->TransactionBegin("Gesture", false);
        if (input.kind == kInputRelease)
            EndGesture();
        return true;
    }
    void ManipulatorCancel() override { EndGesture(); }

private:
    static void EndGesture()
    {
        ZUndoStack::TheOne()->TransactionAdd(new FlipRecord);
        ZUndoStack::TheOne()->TransactionEnd(false, false);
    }
};
int TinyManipulator::ClassId = -1;
ZClassDefinition TinyManipulator::Definition(TinyManipulator::ClassId, "TinyManipulator",
                                             &ZManipulator::ClassDefinition, nullptr);
const int s_manipulatorId = TinyManipulator::ClassId = TinyManipulator::Definition.RegisterClassId();

/// What happened to the tool stands in its label, for the test to read.
class TinyTool : public ZTool
{
public:
    TinyTool() : ZTool("Tiny"), m_record("RecordCheck"), m_dangle("DangleCheck")
    {
        SetToolSize(300, 120);
        const ZtEdge left{0, ZtAttachment::Left, ""}, right{0, ZtAttachment::Right, ""},
            height{20, ZtAttachment::Size, ""};
        AddRegion("RecordCheck", left, {0, ZtAttachment::Top, ""}, right, height);
        AddRegion("DangleCheck", left, {30, ZtAttachment::Top, ""}, right, height);
        SetRegionView("RecordCheck", &m_record);
        SetRegionView("DangleCheck", &m_dangle);
        m_record.RegisterHandler(kViewClicked, ZMakeHandler<&TinyTool::OnRecord>(this));
        m_dangle.RegisterHandler(kViewClicked, ZMakeHandler<&TinyTool::OnDangle>(this));
        ShortCuts().Register(kShortCutKeyEvent, this, ZMakeHandler<&TinyTool::OnKey>(this), 1);
        ZXtrObject_Register(ZMakeHandler<&TinyTool::OnScene>(this));
        m_manipulator = new TinyManipulator;
        m_manipulator->ManipulatorSetHidden(true);
        ZManipulator_GetManipulatorSet()->ManipulatorAdd(m_manipulator);
    }
    ~TinyTool() override
    {
        ShortCuts().Unregister(kShortCutKeyEvent, this, ZMakeHandler<&TinyTool::OnKey>(this));
        ZXtrObject_Unregister(ZMakeHandler<&TinyTool::OnScene>(this));
    }
    bool ToolActivate() override
    {
        m_manipulator->ManipulatorSetHidden(false);
        return ZTool::ToolActivate();
    }
    bool ToolDeactivate() override
    {
        m_manipulator->ManipulatorSetHidden(true);
        ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
        return ZTool::ToolDeactivate();
    }

private:
    static IShortCutRegistration& ShortCuts()
    {
        return *static_cast<IShortCutRegistration*>(
            Object_GetShortCutKeyManager()->IQuery(kInterfaceShortCutRegistration, 0));
    }
    void Say(const std::string& what) { SetObjectLabelName(std::string(GetObjectLabelName()) + "," + what); }
    void OnKey(ZObject*, ZEvent& event)
    {
        auto& key = static_cast<ZShortCutEvent&>(event);
        Say("key" + std::to_string(key.codes[1]));
        key.handled = key.codes[1] == 'W';
    }
    void OnScene(ZObject*, ZEvent& event) { Say("scene" + std::to_string(event.kind)); }
    void OnRecord(ZObject*, ZEvent&)
    {
        ZUndoStack::TheOne()->TransactionBegin("Flip", false);
        ZUndoStack::TheOne()->TransactionAdd(new FlipRecord);
        ZUndoStack::TheOne()->TransactionEnd(false, false);
    }
    void OnDangle(ZObject*, ZEvent&)
    {
        ZUndoStack::TheOne()->TransactionBegin("Dangling", false);
        ZUndoStack::TheOne()->TransactionBegin("Inner", false);
        ZUndoStack::TheOne()->TransactionAdd(new FlipRecord);
    }

    ZtCheckBox m_record, m_dangle;
    TinyManipulator* m_manipulator;
};

IObject* MakeTiny(IObject*, const char*, void*)
{
    auto* tool = new TinyTool;
    tool->SetAllocated();
    return static_cast<IObject*>(tool->IQuery(0, 0));
}
IObject* MakeNothing(IObject*, const char*, void*) { return nullptr; }
IObject* MakeNoTool(IObject*, const char*, void*)
{
    auto* object = new ZObject("no tool");
    object->SetStatusBits(ZObject::kStatusDestroyFrees);
    return object;
}
IObject* MakeTrouble(IObject*, const char*, void*) { throw std::runtime_error("out of paint"); }
} // namespace

SKINDESK_EXPORT void EntryPointgood(kDllOperation operation)
{
    if (operation != kDllLoad)
        return;
    Object_Register("UI/Tools", "Tiny", "Tiny tool", MakeTiny, false, "tiny.png", nullptr);
    Object_Register("UI/Tools", "Nothing", "Nothing", MakeNothing, false, "", nullptr);
    Object_Register("UI/Tools", "NoTool", "No tool", MakeNoTool, false, "", nullptr);
    Object_Register("UI/Tools", "Trouble", "Trouble", MakeTrouble, false, "", nullptr);
}
SKINDESK_EXPORT bool LIBRARY_INIT() { return true; }

// The start routine: registers before the host asks.
[[gnu::constructor]] static void Start() { EntryPointgood(kDllLoad); }

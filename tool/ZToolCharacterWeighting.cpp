// SPDX-License-Identifier: MIT
// The tool's life: construction, activation, rest position, destruction.
#include "tool/ZToolCharacterWeighting.h"

#include "editing/ZWeightStrategies.h"
#include "editing/ZWeightingUndo.h"
#include "object/ZAction.h"
#include "object/ZShortCutKeyManager.h"
#include "viewport/ZCharacterWeightingConstraint.h"
#include "viewport/ZCharacterWeightingManipulator.h"
#include "weights/ZWeightUIModelData.h"
#include "zbaselib/ZConfigFile.h"
#include "zmanipulator/ZViewer.h"
#include "zxtrobject/ZXtrObject.h"

#include <cstring>
#include <limits>
#include <new>

using Tool = ZToolCharacterWeighting;

namespace {

constexpr int kFirstShortCut = std::numeric_limits<int>::max(); ///< priority: before every other handler
constexpr int kManipulatorOfTool = 1;
constexpr int kShowManipulatorKey = 87; ///< "W"

IShortCutRegistration* ShortCutRegistration()
{
    IObject* const manager = Object_GetShortCutKeyManager();
    return manager != nullptr ? static_cast<IShortCutRegistration*>(manager->IQuery(kInterfaceShortCutRegistration, 0))
                              : nullptr;
}

} // namespace

ZToolCharacterWeighting::ZToolCharacterWeighting() : ZTool("fmtoolcharacterweighting"), m_panel(*this)
{
    ZWeightingUndo_ToolOpened(this);
    LayOut();
    MakeHelpers();
    RegisterHandlers();
    const ZConfigFile settings("@Application.txt", false, false); // closed again when all is built
    ReadDeadWeight(settings);
    m_refreshPending = true;
    ZXtrObject_Register(ZMakeHandler<&Tool::OnSceneEvent>(this));
    SetToolSize(1146, 311);
    SetToolMinimumSize(200, 200);
    m_frameAction = Object_GetActionManager()->QueryAction(kActionFrameSelection);
}

ZToolCharacterWeighting::~ZToolCharacterWeighting()
{
    CutOffGestures();
    delete m_constraint;
    m_constraint = nullptr;
    UnregisterHandlers();
    ReleaseManipulator();
    EmptyLists();
    ZWeightingUndo_ToolClosed(this);
    m_modelListBox.SetRowSource(nullptr);
}

void ZToolCharacterWeighting::MakeHelpers()
{
    m_manipulator = new (std::nothrow) ZCharacterWeightingManipulator("Skin", kManipulatorOfTool);
    if (m_manipulator != nullptr)
        m_manipulator->SetTool(this);
    m_constraint = new (std::nothrow) ZCharacterWeightingConstraint("ZCharacterWeightingConstraint");
    if (m_constraint != nullptr)
        m_constraint->SetTool(this);
}

void ZToolCharacterWeighting::RegisterHandlers()
{
    GetEntity().EntityPlugNotifyRegister(ZMakeHandler<&Tool::OnPlugNotify>(this));
    GetEntity().EntityPlugStateNotifyRegister(ZMakeHandler<&Tool::OnPlugState>(this));
    if (IShortCutRegistration* const keys = ShortCutRegistration())
        keys->Register(kShortCutKeyEvent, this, ZMakeHandler<&Tool::OnShortCut>(this), kFirstShortCut);
}

void ZToolCharacterWeighting::UnregisterHandlers()
{
    ZXtrObject_Unregister(ZMakeHandler<&Tool::OnSceneEvent>(this));
    GetEntity().EntityPlugNotifyUnregister(ZMakeHandler<&Tool::OnPlugNotify>(this));
    GetEntity().EntityPlugStateNotifyUnregister(ZMakeHandler<&Tool::OnPlugState>(this));
    if (IShortCutRegistration* const keys = ShortCutRegistration())
        keys->Unregister(kShortCutKeyEvent, this, ZMakeHandler<&Tool::OnShortCut>(this));
}

void ZToolCharacterWeighting::ReadDeadWeight(const ZConfigFile& settings)
{
    const float percent = settings.Get("Weighting", "DeadWeight", 0.1F);
    m_deadWeight = static_cast<double>(percent * 0.01F);
}

bool ZToolCharacterWeighting::ToolActivate()
{
    const bool active = ZTool::ToolActivate();
    if (m_panel.restPositionMode && m_constraint != nullptr) {
        HandBonesToConstraint();
        m_constraint->ConstraintSetEnabled(true);
    }
    if (m_manipulator != nullptr)
        m_manipulator->ManipulatorSetHidden(false);
    return active;
}

bool ZToolCharacterWeighting::ToolDeactivate()
{
    CutOffGestures();
    const bool active = ZTool::ToolDeactivate();
    if (ZConstraints_GetBoxConstraint() == nullptr)
        LeaveRestPosition(true);
    else if (m_constraint != nullptr)
        m_constraint->ConstraintSetEnabled(false);
    if (m_constraint != nullptr) {
        m_constraint->RequestTeardown();
        m_constraint->MarkForEvaluation();
    }
    LeaveRestPosition(false);
    SetCurrentManipulation(nullptr);
    HideManipulator();
    ZManipulator_GetManipulatorSet()->ManipulatorSetActive(nullptr);
    return active;
}

bool ZToolCharacterWeighting::ExecuteMenuCommand(const char* command)
{
    if (command == nullptr || std::strcmp(command, "Clear All Vertex Lists") != 0)
        return false;
    CutOffGestures();
    m_panel.selection.ClearAllVertexLists();
    RefreshPanelLists();
    TakeSpreadSnapshot();
    return true;
}

bool ZToolCharacterWeighting::EnterRestPosition()
{
    if (m_constraint == nullptr || !HandBonesToConstraint())
        return false;
    return m_constraint->ConstraintSetEnabled(true);
}

void ZToolCharacterWeighting::LeaveRestPosition(bool resetButton)
{
    if (!m_panel.restPositionMode)
        return;
    if (resetButton)
        m_panel.SetRestPosition(false);
    if (m_constraint == nullptr)
        return;
    m_constraint->RequestTeardown();
    m_constraint->ConstraintSetEnabled(false);
    m_constraint->MarkForEvaluation(); // the next pass throws the entries away
}

/// Whatever was under way and will get no end is ended: a slider's drag, a rectangle in the viewer.
void ZToolCharacterWeighting::CutOffGestures()
{
    m_panel.CutOffDrag();
    if (m_manipulator != nullptr)
        m_manipulator->ManipulatorCancel();
}

void ZToolCharacterWeighting::HideManipulator()
{
    if (m_manipulator != nullptr)
        m_manipulator->ManipulatorSetHidden(true);
}

/// The set owns the manipulator and the session has it taken out with the tool: what stays of it until then is hidden,
/// not active, and knows no tool.
void ZToolCharacterWeighting::ReleaseManipulator()
{
    if (m_manipulator == nullptr)
        return;
    HideManipulator();
    ZManipulatorSet* const set = ZManipulator_GetManipulatorSet();
    if (set->ManipulatorGetActive() == m_manipulator)
        set->ManipulatorSetActive(nullptr);
    m_manipulator->SetTool(nullptr);
    m_manipulator = nullptr;
}

IWeightDeform* ZToolCharacterWeighting::MakeStrategy(int deformMode) { return ZWeightStrategy_Make(deformMode); }

void ZToolCharacterWeighting::WeightViewChanged()
{
    for (ZViewer* const viewer : ZViewer::GetViewers())
        viewer->Invalidate();
}

void ZToolCharacterWeighting::RefreshPanelLists()
{
    m_panel.RefreshLists();
    WeightViewChanged();
}

void ZToolCharacterWeighting::RebuildVertexRows()
{
    m_panel.selection.RebuildRows();
    RefreshPanelLists();
    TakeSpreadSnapshot();
}

void ZToolCharacterWeighting::RecolourActiveVertices()
{
    for (int i = 0; i < m_models.GetCount(); ++i)
        m_models[i]->ComputeActiveColors(m_panel.boneColours, m_panel.colourMode, m_panel.weightingMode);
    WeightViewChanged();
}

void ZToolCharacterWeighting::SetSphereRadius(double radius)
{
    if (m_manipulator != nullptr)
        m_manipulator->SetDiscSize(radius);
    WeightViewChanged();
}

void ZToolCharacterWeighting::OnShortCut(ZObject*, ZEvent& event)
{
    if (!IsToolActive() || m_manipulator == nullptr)
        return;
    auto& key = static_cast<ZShortCutEvent&>(event);
    const bool frames = m_frameAction != nullptr && m_manipulator->ManipulatorGetActive() &&
                        m_frameAction->IsAction(key.codes[0], key.codes[1], key.codes[2]) &&
                        !m_panel.selection.vertexRows.IsEmpty();
    const bool shows = key.codes[0] == kKeyEventPressed && key.codes[1] == kShowManipulatorKey && key.codes[2] == 0;
    m_manipulator->HandleShortCut(key.codes[0], key.codes[1], key.codes[2], m_frameAction);
    if (frames || shows)
        key.handled = true;
}

// SPDX-License-Identifier: MIT
// Manipulators and the set that owns them.
#include "zmanipulator/ZManipulator.h"

#include "zbaselib/ZReport.h"
#include "zmanipulator/ZViewer.h"

#include <algorithm>
#include <optional>

ZCLASS_DEFINE(ZManipulator, ZObjectStorable)
ZCLASS_DEFINE(ZViewer, ZObject)

namespace {
int s_unselect = 4;

std::optional<ZManipulatorInput>& PreviousInput()
{
    static std::optional<ZManipulatorInput> previous;
    return previous;
}

/// The viewer of `input`, or null after saying that `call` was given none.
ZViewer* ViewerOf(const ZManipulatorInput& input, const char* call)
{
    if (input.viewer == nullptr)
        ZReport_Misuse(call, "The input record names no viewer.");
    return input.viewer;
}
} // namespace

ZManipulator::ZManipulator(const char* name, int owner) : ZObjectStorable(name), m_owner(owner) {}

ZManipulator::~ZManipulator()
{
    ZManipulator_GetManipulatorSet()->Forget(this);
    if (IsDestroyed())
        return;
    PrepareDestruct();
    Destruct();
}

void ZManipulator::SystemDetach()
{
    ZManipulator_GetManipulatorSet()->Forget(this);
    ZObjectStorable::SystemDetach();
}

bool ZManipulator::ManipulatorSetActive(bool active)
{
    m_active = active;
    // Somebody may call this without going through the set, which keeps its word that at most one is active.
    ZManipulatorSet& set = *ZManipulator_GetManipulatorSet();
    if (m_inSet && active && set.m_active != this) {
        ZManipulator* const before = set.m_active;
        set.m_active = this;
        if (before != nullptr)
            before->ManipulatorSetActive(false);
    } else if (!active && set.m_active == this) {
        set.m_active = nullptr;
    }
    return m_active;
}

bool ZManipulator::ManipulatorInputNotify(ZManipulatorInput&) { return false; }
void ZManipulator::ManipulatorDraw(ZManipulatorDraw&) {}
void ZManipulator::ManipulatorCancel() {}

void ZManipulator::ManipulatorSetHidden(bool hidden)
{
    if (hidden == m_hidden)
        return;
    m_hidden = hidden;
    m_inUse = !hidden;
    if (m_inSet) {
        ZManipulatorSet& set = *ZManipulator_GetManipulatorSet();
        if (hidden) {
            ZViewer::CutOffGestures(this);
            if (set.m_active == this)
                set.ManipulatorSetActive(nullptr);
        } else if (set.m_active == nullptr) {
            set.ManipulatorSetActive(this);
        }
    }
    ZViewer::InvalidateAll();
}

void ZManipulator::ClearPreviousInput() { PreviousInput().reset(); }

const ZManipulatorInput* ZManipulator::GetPreviousInput()
{
    return PreviousInput().has_value() ? &*PreviousInput() : nullptr;
}

void ZManipulator::SetPreviousInput(const ZManipulatorInput& input) { PreviousInput() = input; }

void ZManipulator::ManipulatorPickRectStart(ZManipulatorInput& input)
{
    if (ZViewer* const viewer = ViewerOf(input, "ZManipulator::ManipulatorPickRectStart"))
        viewer->PickRectStart(input.x, input.y);
}

void ZManipulator::ManipulatorPickRectMotion(ZManipulatorInput& input)
{
    if (ZViewer* const viewer = ViewerOf(input, "ZManipulator::ManipulatorPickRectMotion"))
        viewer->PickRectMotion(input.x, input.y);
}

void ZManipulator::ManipulatorPickRectStop(ZManipulatorInput& input)
{
    if (ZViewer* const viewer = ViewerOf(input, "ZManipulator::ManipulatorPickRectStop"))
        viewer->PickRectStop();
}

void ZManipulatorSet::ManipulatorAdd(ZManipulator* manipulator)
{
    if (manipulator == nullptr || manipulator->m_inSet) {
        ZReport_Misuse("ZManipulatorSet::ManipulatorAdd",
                       manipulator == nullptr ? "The manipulator is null."
                                              : "'" + manipulator->GetObjectName() + "' is in the set already.");
        return;
    }
    m_manipulators.push_back(manipulator);
    manipulator->m_inSet = true;
    if (m_active == nullptr && manipulator->m_inUse)
        ManipulatorSetActive(manipulator);
    ZViewer::InvalidateAll();
}

void ZManipulatorSet::ManipulatorRemove(ZManipulator* manipulator)
{
    // Compared by address alone: what is not in the set may be gone.
    if (std::find(m_manipulators.begin(), m_manipulators.end(), manipulator) == m_manipulators.end())
        return;
    manipulator->ManipulatorSetHidden(true);
    Forget(manipulator);
    if (m_handOuts > 0)
        m_leaving.push_back(manipulator);
    else
        delete manipulator;
}

void ZManipulatorSet::ManipulatorSetActive(ZManipulator* manipulator)
{
    if (manipulator == m_active)
        return;
    if (manipulator != nullptr && !manipulator->m_inSet) {
        ZReport_Misuse("ZManipulatorSet::ManipulatorSetActive",
                       "'" + manipulator->GetObjectName() + "' is not in the set: ManipulatorAdd comes first.");
        return;
    }
    ZViewer::CutOffGestures(nullptr);
    ZManipulator* const before = m_active;
    m_active = manipulator;
    if (before != nullptr)
        before->ManipulatorSetActive(false);
    if (manipulator != nullptr)
        manipulator->ManipulatorSetActive(true);
    ZViewer::InvalidateAll();
}

void ZManipulatorSet::Forget(ZManipulator* manipulator)
{
    std::erase(m_leaving, manipulator);
    if (!manipulator->m_inSet)
        return;
    manipulator->m_inSet = false;
    manipulator->m_active = false;
    if (m_active == manipulator)
        m_active = nullptr;
    m_manipulators.erase(std::find(m_manipulators.begin(), m_manipulators.end(), manipulator));
    ZViewer::InvalidateAll();
}

void ZManipulatorSet::BeginHandOut() { ++m_handOuts; }

void ZManipulatorSet::EndHandOut()
{
    if (--m_handOuts > 0)
        return;
    while (!m_leaving.empty()) {
        ZManipulator* const manipulator = m_leaving.back();
        m_leaving.pop_back();
        delete manipulator;
    }
}

ZManipulatorSet* ZManipulator_GetManipulatorSet()
{
    // Never destroyed: manipulators that are left at the end have their code in libraries that are gone.
    static ZManipulatorSet& set = *new ZManipulatorSet;
    return &set;
}

int ZManipulator_GetManipulationUnselect() { return s_unselect; }
void ZManipulator_SetManipulationUnselect(int bits) { s_unselect = bits; }
ZViewer* ZManipulator_ViewerGet(const ZManipulatorInput& input) { return input.viewer; }

// SPDX-License-Identifier: MIT
// The weighting data of a model: identity, admission, end of life, and what it passes on to its strategy.
#include "weights/ZWeightUIModelData.h"

#include "weights/ModelDataPrivate.h"
#include "weights/SkinAdmission.h"
#include "weights/ZWeightGeomNURBS.h"
#include "weights/ZWeightGeomPoly.h"
#include "zbaselib/ZMemory.h"
#include "zmodel/ZModelInterfaces.h"

#include <new>

int ZWeightUIModelData::ClassId = -1;
ZClassDefinition* ZWeightUIModelData::s_classDefinition = nullptr;
ZPropertyMap* ZWeightUIModelData::s_properties = nullptr;

ZWeightUIModelData::ZWeightUIModelData(ZModel* skinnedModel, IWeightOwner* owner, bool showMessage)
    : model(skinnedModel), tool(owner), m_private(std::make_unique<Private>())
{
    ISkinLinks* const links = SkinLinks();
    ChooseGeometry();
    if (geometry == nullptr || links == nullptr)
        return;
    const int vertexCount = geometry->VertexCount();
    vertexStates.SetCountUninitialised(vertexCount);
    ZMemory_ExpectAnyOrder(vertexStates.GetData(), sizeof(int) * static_cast<size_t>(vertexCount));
    vertexStates.Fill(0);

    const int mode = SkinAdmission_ReadDeformMode(*links);
    constexpr int kAdditive = 1;
    constexpr int kTotal100 = 2;
    if (mode == kAdditive) {
        if (showMessage)
            SkinAdmission_ShowAdditiveMessage();
        return;
    }
    strategy = tool->MakeStrategy(mode);
    if (strategy == nullptr)
        return; // refused: its links stay as they are
    if (mode == kTotal100)
        SkinAdmission_ResetLinkOptions(*links);
    SkinAdmission_RemoveLinksWithoutBone(*links);
    SkinAdmission_MergeDuplicateLinks(*links);
}

/// A model without a vertex has nothing to weight and gets no adapter. Nor does one for whose adapter there is no
/// memory: it is refused like the other.
void ZWeightUIModelData::ChooseGeometry()
{
    auto* const host =
        model != nullptr ? static_cast<IModelGeometry*>(model->IQuery(kInterfaceModelGeometry, 0)) : nullptr;
    if (host == nullptr || host->VertexCount() <= 0)
        return;
    if (host->TessellationWidth() != 0 && host->TessellationHeight() != 0)
        geometry = new (std::nothrow) ZWeightGeomNURBS(model);
    else
        geometry = new (std::nothrow) ZWeightGeomPoly(model);
}

ZWeightUIModelData::~ZWeightUIModelData()
{
    if (IsDestroyed())
        return;
    SystemDetach();
    PrepareDestruct();
    ZWeightUIModelData::Destruct();
}

void ZWeightUIModelData::Destruct()
{
    if (IsDestroyed())
        return;
    delete geometry;
    geometry = nullptr;
    delete strategy;
    strategy = nullptr;
    if (ISkinLinks* const links = SkinLinks())
        links->SetSkinDisplayValue(-1.0);
    vertexInfluences.Release();
    m_private->slab.Free();
    ZObject::Destruct();
}

void ZWeightUIModelData::DestroyObject() { ZObject::DestroyObject(); }

// Identity.

ZClassDefinition* ZWeightUIModelData::GetClassDefinition() const
{
    return s_classDefinition != nullptr ? s_classDefinition : ZObject::GetClassDefinition();
}

const char* ZWeightUIModelData::GetClassGroup() const { return GetClassDefinition()->GetName(); }

bool ZWeightUIModelData::Is(int classId) const { return (classId >= 0 && classId == ClassId) || ZObject::Is(classId); }

std::uint64_t ZWeightUIModelData::FindPropertyByName(const char* name) const
{
    return s_properties != nullptr ? FastFindPropertyByName(*s_properties, name) : ZObject::FindPropertyByName(name);
}

ISkinLinks* ZWeightUIModelData::SkinLinks() const
{
    return model != nullptr ? static_cast<ISkinLinks*>(model->IQuery(kInterfaceSkinLinks, 0)) : nullptr;
}

// Small operations.

void ZWeightUIModelData::ResetSkinHint()
{
    ISkinLinks* const links = skinHintPending != 0 ? SkinLinks() : nullptr;
    skinHintPending = 0;
    if (links != nullptr)
        links->SetSkinDisplayValue(-1.0);
}

bool ZWeightUIModelData::SetModelSelected(bool selected, IModelSelectionRecorder* undo)
{
    const bool before = modelSelected != 0;
    if (before == selected)
        return false;
    if (undo != nullptr)
        undo->RecordModelSelection(this, before, selected);
    modelSelected = selected ? 1 : 0;
    tool->WeightViewChanged();
    return true;
}

int ZWeightUIModelData::AddLink(ZModel* bone)
{
    ISkinLinks* const links = bone != nullptr ? SkinLinks() : nullptr;
    return links != nullptr ? links->AddLink(bone) : -1;
}

size_t ZWeightUIModelData::GetByteCount() const
{
    return sizeof(*this) + sizeof(Private) + m_private->slab.GetByteCount() + vertexInfluences.GetHeapBytes() +
           vertexColours.GetHeapBytes() + vertexStates.GetHeapBytes() + selectedVertices.GetHeapBytes() +
           activeVertices.GetHeapBytes() + boneLinkPositions.GetHeapBytes() + m_private->linkOfBone.GetHeapBytes();
}

// Colours.

void ZWeightUIModelData::ComputeColors(const ZBoneColourTable& table, int colourMode)
{
    if (strategy != nullptr)
        strategy->ComputeColors(table, colourMode, *this);
}

void ZWeightUIModelData::ComputeActiveColors(const ZBoneColourTable& table, int colourMode, int weightingMode)
{
    if (strategy != nullptr)
        strategy->ComputeActiveColors(table, colourMode, weightingMode, *this);
}

void ZWeightUIModelData::BoneColorChanged(const ZBoneColourTable& table, int bonePosition, int colourMode, float oldRed,
                                          float oldGreen, float oldBlue)
{
    if (strategy != nullptr)
        strategy->BoneColorChanged(table, bonePosition, colourMode, oldRed, oldGreen, oldBlue, *this);
}

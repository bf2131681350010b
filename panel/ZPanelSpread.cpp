// SPDX-License-Identifier: MIT
// The spread: a row for each selected bone, with its colour, slider, lock and weight at the current vertex.
#include "panel/ZCharacterWeightingNormalLayout.h"
#include "weights/ZWeightUIModelData.h"
#include "ztoolkit/ZToolKit.h"

namespace {

/// Cells are shown a little darker than the bone itself.
float Dimmed(float component) { return static_cast<float>(static_cast<double>(component) * 0.9); }

} // namespace

void ZCharacterWeightingNormalLayout::SetUpSpreadColumns()
{
    const bool narrow = ZToolKit_GetScreenWidth() < kWideScreen;
    spreadWeights.Clear();
    spreadWeights.SetRowLabelWidth(narrow ? 132 : 162);
    spreadWeights.AddColumn("Col", kCellView, narrow ? 24 : 30);
    spreadWeights.AddColumn("Weight Slider", kCellView, narrow ? 102 : 120);
    spreadWeights.AddColumn("Lock", kCellCheck, narrow ? 31 : 50);
    spreadWeights.AddColumn("Weight", kCellNumber, narrow ? 43 : 58);
}

void ZCharacterWeightingNormalLayout::RefreshSpread(bool valuesOnly)
{
    if (!m_built)
        return;
    const int vertexRow = selection.noActive ? -1 : CurrentVertexRow();
    if (!selection.noActive && vertexRow < 0)
        return;
    if (valuesOnly && vertexRow >= 0 && spreadRows == selectedBones) {
        for (int row = 0; row < spreadRows.GetCount(); ++row) {
            const double percent = SpreadPercent(spreadRows[row], vertexRow);
            spreadWeights.SetCellValue(row, kSpreadSlider, percent);
            spreadWeights.SetCellValue(row, kSpreadWeight, percent);
        }
        return;
    }
    spreadRows = selectedBones;
    spreadWeights.SetRowCount(spreadRows.GetCount());
    for (int row = 0; row < spreadRows.GetCount(); ++row)
        FillSpreadRow(row, spreadRows[row], vertexRow < 0 ? 0.0 : SpreadPercent(spreadRows[row], vertexRow));
}

void ZCharacterWeightingNormalLayout::FillSpreadRow(int row, int bone, double percent)
{
    spreadWeights.SetRowLabel(row, BoneRowText(bone));
    if (3 * bone + 2 < boneColours.GetCount()) {
        const float* const colour = &boneColours[3 * bone];
        spreadWeights.SetColourCell(row, kSpreadColour, Dimmed(colour[0]), Dimmed(colour[1]), Dimmed(colour[2]));
    }
    spreadWeights.SetSliderCell(row, kSpreadSlider, percent, 0, 100);
    spreadWeights.SetCellValue(row, kSpreadLock, bone < lockFlags.GetCount() ? lockFlags[bone] : 0);
    spreadWeights.SetCellValue(row, kSpreadWeight, percent);
}

/// The weight of a bone at the vertex of a row, in per cent; the product is of single precision.
double ZCharacterWeightingNormalLayout::SpreadPercent(int bone, int vertexRow) const
{
    const float weight = selection.vertexModels[vertexRow]->VertexBoneWeight(bone, selection.vertexRows[vertexRow]);
    return static_cast<double>(100.0F * weight);
}

void ZCharacterWeightingNormalLayout::OnSpreadCell(ZObject*, ZEvent& event)
{
    const auto& cell = static_cast<const ZtEvent&>(event);
    if (cell.row < 0 || cell.row >= spreadRows.GetCount())
        return;
    if (cell.column == kSpreadLock)
        ChangeLock(cell.row, cell.value != 0.0);
    else if (cell.column == kSpreadSlider || cell.column == kSpreadWeight)
        ChangeWeight(cell);
}

void ZCharacterWeightingNormalLayout::ChangeLock(int row, bool locked)
{
    const int bone = spreadRows[row];
    if (bone < lockFlags.GetCount())
        lockFlags[bone] = locked ? 1 : 0;
    spreadWeights.SetCellValue(row, kSpreadLock, locked ? 1 : 0);
}

/// A slider's press begins an undo step and its release ends it; so does any other of its events while no drag is in
/// progress begin one. A typed number is a step of its own.
void ZCharacterWeightingNormalLayout::ChangeWeight(const ZtEvent& event)
{
    const bool slider = event.column == kSpreadSlider;
    // A press, or a number typed, while a drag still waits for its release: that release was lost.
    if (m_dragging && (!slider || event.viewEvent == kViewPress))
        CutOffDrag();
    const bool end = !slider || event.viewEvent == kViewRelease;
    const int vertexRow = selection.noActive ? -1 : CurrentVertexRow();
    const int bone = spreadRows[event.row];
    const bool locked = bone < lockFlags.GetCount() && lockFlags[bone] != 0;
    // The rows were chosen anew while the slider was held: what the hand goes on to move belongs to another bone.
    const ZModel* const moved = bone < BoneCount() ? Bones()[bone] : nullptr;
    const bool another = m_dragging && moved != m_draggedBone;
    if (vertexRow < 0 || locked || another) {
        if (m_dragging && (end || !another))
            CutOffDrag();
        spreadWeights.SetCellValue(event.row, event.column, vertexRow < 0 ? 0.0 : SpreadPercent(bone, vertexRow));
        return;
    }
    const bool begin = !slider || !m_dragging;
    m_dragging = !end;
    m_draggedBone = moved;
    weightChange.ApplyWeightChange(begin, end, event.value, event.row);
}

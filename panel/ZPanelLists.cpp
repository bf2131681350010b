// SPDX-License-Identifier: MIT
// The bone list and the vertex list: which rows there are, which of them are selected, and what a row says when asked.
#include "panel/ZCharacterWeightingNormalLayout.h"
#include "weights/ZWeightUIModelData.h"

#include <cstdio>

namespace {

constexpr size_t kLongestLine = 1020; ///< bytes of a row's text

/// Cuts a UTF-8 text to at most `limit` bytes, never inside a character.
void CutText(std::string& text, size_t limit)
{
    if (text.size() <= limit)
        return;
    size_t end = limit;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U)
        --end;
    text.resize(end);
}

/// States of consecutive rows' vertices: rows of one model mostly follow each other.
class StateLookup
{
public:
    bool IsActive(const ZWeightUIModelData* data, int vertex)
    {
        if (data != m_data) {
            m_data = data;
            m_states = data->vertexStates.GetData();
            m_count = data->vertexStates.GetCount();
        }
        return vertex >= 0 && vertex < m_count && m_states[vertex] == 2;
    }

private:
    const ZWeightUIModelData* m_data = nullptr;
    const int* m_states = nullptr;
    int m_count = 0;
};

} // namespace

void ZCharacterWeightingNormalLayout::RefreshLists()
{
    if (!m_built)
        return;
    RefillBoneList();
    RefillVertexList();
    RefreshSpread(false);
}

void ZCharacterWeightingNormalLayout::RefillBoneList()
{
    const int bones = BoneCount();
    listBonesList.ClearRows();
    if (bones > 0)
        listBonesList.AddRows(bones);
    else if (m_editing.ModelDataList().GetCount() > 0)
        listBonesList.AddRows(1); // says "Empty"
    if (automaticBoneSelection && !selection.vertexRows.IsEmpty())
        MarkInfluencingBones();
    listBonesList.SelectRows(selectedBones.GetData(), selectedBones.GetCount());
    UpdateCurrentBone();
}

void ZCharacterWeightingNormalLayout::MarkInfluencingBones()
{
    const int bones = BoneCount();
    m_influenceMarks.RemoveAll();
    for (int bone = 0; bone < bones; ++bone)
        m_influenceMarks.Add(0);
    const ZWeightUIModelDataList& models = m_editing.ModelDataList();
    for (int model = 0; model < models.GetCount(); ++model)
        models[model]->MarkInfluencingBones(m_influenceMarks.GetData(), bones);
    selectedBones.RemoveAll();
    for (int bone = 0; bone < bones; ++bone)
        if (m_influenceMarks[bone] == 1)
            selectedBones.Add(bone);
}

/// The touched row while it is selected, else the first selected one, else none; the colour field follows.
void ZCharacterWeightingNormalLayout::UpdateCurrentBone()
{
    m_currentBone = -1;
    if (BoneCount() > 0)
        m_currentBone = listBonesList.IsRowSelected(m_touchedBone) ? m_touchedBone : listBonesList.GetCurrentRow();
    if (m_currentBone < 0 || 3 * m_currentBone + 2 >= boneColours.GetCount())
        return;
    const float* const colour = &boneColours[3 * m_currentBone];
    boneColorEdit.SetColour(static_cast<double>(colour[0]), static_cast<double>(colour[1]),
                            static_cast<double>(colour[2]));
}

void ZCharacterWeightingNormalLayout::RefillVertexList()
{
    const int rows = selection.vertexRows.GetCount();
    listVertexList.ClearRows();
    selection.targetRows.RemoveAll();
    selection.noActive = true;
    if (rows == 0) {
        listVertexList.AddRows(1); // says "Empty"
        return;
    }
    listVertexList.AddRows(rows);
    StateLookup states;
    for (int row = 0; row < rows; ++row)
        if (states.IsActive(selection.vertexModels[row], selection.vertexRows[row]))
            selection.targetRows.Add(row);
    listVertexList.SelectRows(selection.targetRows.GetData(), selection.targetRows.GetCount());
    selection.noActive = selection.targetRows.IsEmpty();
}

int ZCharacterWeightingNormalLayout::CurrentVertexRow() const
{
    // With no vertex to show the list has a row all the same, and the user may have selected it.
    return selection.vertexRows.IsEmpty() ? -1 : listVertexList.GetCurrentRow();
}

std::string ZCharacterWeightingNormalLayout::RowText(const ZtListBox& list, int row) const
{
    return &list == &listBonesList ? BoneRowText(row) : VertexRowText(row);
}

std::string ZCharacterWeightingNormalLayout::BoneRowText(int row) const
{
    if (BoneCount() == 0)
        return row == 0 && listBonesList.GetRowCount() > 0 ? "Empty" : "";
    if (row < 0 || row >= BoneCount())
        return "";
    const char* const name = Bones()[row]->GetObjectLabelName();
    return name != nullptr ? name : "";
}

std::string ZCharacterWeightingNormalLayout::VertexRowText(int row) const
{
    if (selection.vertexRows.IsEmpty())
        return row == 0 ? "Empty" : "";
    if (row < 0 || row >= selection.vertexRows.GetCount())
        return "";
    char start[32];
    std::snprintf(start, sizeof start, "Vertex %d ", selection.vertexRows[row]);
    const char* const name = selection.vertexModels[row]->GetModel()->GetObjectLabelName();
    std::string text = start;
    text += name != nullptr ? name : "";
    CutText(text, kLongestLine);
    return text;
}

// SPDX-License-Identifier: MIT
#include "ToolTables.h"

#include "ToolStage.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <sstream>

namespace {

using Leniency = ToolTableLeniency;

/// Collects the first complaint.
class Complaint
{
public:
    template <class... Parts> void Unless(bool holds, const Parts&... parts)
    {
        if (holds || !m_text.empty())
            return;
        std::ostringstream text;
        (text << ... << parts);
        m_text = text.str();
    }
    const std::string& Text() const { return m_text; }

private:
    std::string m_text;
};

template <class A> std::vector<int> Sorted(const A& array)
{
    std::vector<int> values(array.begin(), array.end());
    std::sort(values.begin(), values.end());
    return values;
}

void CheckModelList(ZToolCharacterWeighting& tool, Complaint& complain)
{
    const int models = tool.ModelDataList().GetCount();
    const ZtListBox& list = tool.ModelListBox();
    complain.Unless(list.GetRowCount() == std::max(1, models), "the model list has ", list.GetRowCount(), " rows for ",
                    models, " models");
    if (models == 0)
        complain.Unless(list.GetRowCheck(0) && list.GetRowText(0) == "Drop models here", "no invitation to drop");
    for (int row = 0; row < models; ++row)
        complain.Unless(list.GetRowCheck(row) == (tool.ModelDataList()[row]->modelSelected != 0), "check of row ", row);
}

void CheckBones(ZToolCharacterWeighting& tool, ZScene& scene, Complaint& complain)
{
    const ZCharacterWeightingNormalLayout& panel = tool.Panel();
    const ZArrayTemplate<ZModel*>& bones = tool.BoneList();
    const int count = bones.GetCount();
    const int models = tool.ModelDataList().GetCount();
    const int rows = panel.listBonesList.GetRowCount();
    complain.Unless(rows == (count > 0    ? count
                             : models > 0 ? 1
                                          : 0),
                    "the bone list has ", rows, " rows for ", count, " bones and ", models, " models");
    for (int bone = 0; bone < count; ++bone) {
        complain.Unless(scene.Contains(bones[bone]), "bone ", bone, " is not in the scene");
        complain.Unless(tool.BonePosition(bones[bone]) == bone, "position of bone ", bone);
    }
    complain.Unless(panel.lockFlags.GetCount() == count, "lock flags: ", panel.lockFlags.GetCount());
    complain.Unless(panel.boneColours.GetCount() == 3 * count, "colours: ", panel.boneColours.GetCount());
    const std::vector<int> selected = Sorted(panel.selectedBones);
    complain.Unless(std::set<int>(selected.begin(), selected.end()).size() == selected.size(), "a bone selected twice");
    complain.Unless(count == 0 || panel.listBonesList.GetSelectedRows() == selected, "selected bones and their rows");
    complain.Unless(selected.empty() || (selected.front() >= 0 && selected.back() < count),
                    "selected bone out of range");
    complain.Unless(panel.CurrentBone() >= -1 && panel.CurrentBone() < count, "current bone ", panel.CurrentBone());
}

void CheckVertexRows(ZToolCharacterWeighting& tool, const Leniency& leniency, Complaint& complain)
{
    ZWeightSelection& selection = tool.Selection();
    const int rows = selection.vertexRows.GetCount();
    std::set<const ZWeightUIModelData*> checked;
    for (int i = 0; i < tool.ModelDataList().GetCount(); ++i)
        if (tool.ModelDataList()[i]->modelSelected != 0)
            checked.insert(tool.ModelDataList()[i]);
    complain.Unless(selection.vertexModels.GetCount() == rows, "vertex rows and models");
    if (!complain.Text().empty())
        return;
    std::vector<int> active;
    std::set<std::pair<const ZWeightUIModelData*, int>> listed;
    for (int row = 0; row < rows; ++row) {
        const ZWeightUIModelData* const data = selection.vertexModels[row];
        const int vertex = selection.vertexRows[row];
        complain.Unless(checked.count(data) > 0, "row ", row, " is of a model that is not checked or has left");
        if (!complain.Text().empty())
            return;
        complain.Unless(vertex >= 0 && vertex < data->vertexStates.GetCount(), "row ", row, ": vertex ", vertex);
        complain.Unless(leniency.rowsOrColumnsPicked || listed.emplace(data, vertex).second, "row ", row, " twice");
        if (!leniency.rowsOrColumnsPicked)
            complain.Unless(data->GetVertexState(vertex) >= 1, "row ", row, ": vertex is not selected");
        if (data->GetVertexState(vertex) == 2)
            active.push_back(row);
    }
    complain.Unless(Sorted(selection.targetRows) == active, "target rows against active vertices");
    complain.Unless(selection.noActive == active.empty(), "no-active flag");
    complain.Unless(selection.noSelection == (rows == 0), "no-selection flag");
    const ZtListBox& list = tool.Panel().listVertexList;
    complain.Unless(list.GetRowCount() == std::max(1, rows), "vertex list has ", list.GetRowCount(), " rows");
    complain.Unless(rows == 0 || list.GetSelectedRows() == active, "selected rows of the vertex list");
    if (leniency.rowsOrColumnsPicked)
        return;
    size_t selectedVertices = 0;
    for (const ZWeightUIModelData* const data : checked)
        selectedVertices += static_cast<size_t>(data->selectedVertices.GetCount());
    complain.Unless(selectedVertices == static_cast<size_t>(rows), "rows against selected vertices: ", rows, " and ",
                    selectedVertices);
}

void CheckStates(const ZWeightUIModelData& data, int model, Complaint& complain)
{
    std::vector<int> selected, active;
    for (int vertex = 0; vertex < data.vertexStates.GetCount(); ++vertex) {
        if (data.vertexStates[vertex] >= 1)
            selected.push_back(vertex);
        if (data.vertexStates[vertex] == 2)
            active.push_back(vertex);
    }
    complain.Unless(Sorted(data.selectedVertices) == selected, "selected vertices of model ", model);
    complain.Unless(Sorted(data.activeVertices) == active, "active vertices of model ", model);
}

/// The records say what the skin says, but for zeros that undo and redo leave in one of them; and weights sum to one.
void CheckWeights(ZWeightUIModelData& data, int model, const Leniency& leniency, Complaint& complain)
{
    ISkinLinks* const links = data.SkinLinks();
    const int vertices = data.vertexStates.GetCount();
    complain.Unless(data.vertexInfluences.GetCount() == vertices, "records of model ", model);
    complain.Unless(data.boneLinkPositions.GetCount() == links->LinkCount(), "links of model ", model);
    if (!complain.Text().empty() || leniency.firstVertexRedone || leniency.rowsOrColumnsPicked)
        return;
    size_t found = 0;
    std::vector<double> sums(static_cast<size_t>(vertices), 0.0);
    for (int link = 0; link < links->LinkCount(); ++link) {
        links->BeginLink(link);
        for (int entry = 0; entry < links->EntryCount(); ++entry) {
            const int vertex = links->EntryVertex(entry);
            const VertexInfluences& record = *data.vertexInfluences[vertex];
            const int place = record.links.Find(link);
            const double weight = links->EntryWeight(entry);
            const float recorded = place >= 0 ? record.weights[place] : 0.0F;
            complain.Unless(recorded == static_cast<float>(weight), "model ", model, " link ", link, " vertex ", vertex,
                            ": record ", recorded, ", skin ", weight);
            sums[static_cast<size_t>(vertex)] += weight;
            found += recorded != 0.0F ? 1 : 0;
        }
        links->EndLink();
    }
    size_t influences = 0;
    for (const VertexInfluences* const record : data.vertexInfluences)
        influences += static_cast<size_t>(
            std::count_if(record->weights.begin(), record->weights.end(), [](float weight) { return weight != 0.0F; }));
    complain.Unless(influences == found, "model ", model, ": ", influences, " influences, ", found,
                    " of them in the skin");
    for (int vertex = 0; vertex < vertices && !leniency.weightsLost; ++vertex)
        complain.Unless(std::abs(sums[static_cast<size_t>(vertex)] - 1.0) < 1e-4, "model ", model, " vertex ", vertex,
                        ": weights sum to ", sums[static_cast<size_t>(vertex)]);
}

void CheckModels(ZToolCharacterWeighting& tool, ZScene& scene, const Leniency& leniency, Complaint& complain)
{
    for (int model = 0; model < tool.ModelDataList().GetCount(); ++model) {
        ZWeightUIModelData& data = *tool.ModelDataList()[model];
        complain.Unless(scene.Contains(data.GetModel()), "model ", model, " is not in the scene");
        if (!complain.Text().empty())
            return;
        CheckStates(data, model, complain);
        if (data.modelSelected != 0)
            CheckWeights(data, model, leniency, complain);
        else
            complain.Unless(data.selectedVertices.IsEmpty() && !data.IsLoaded(), "unchecked model ", model,
                            " holds on");
    }
}

void CheckSpread(ZToolCharacterWeighting& tool, Complaint& complain)
{
    ZCharacterWeightingNormalLayout& panel = tool.Panel();
    ZWeightSelection& selection = panel.selection;
    complain.Unless(panel.spreadRows == panel.selectedBones, "spread rows against selected bones");
    complain.Unless(panel.spreadWeights.GetRowCount() == panel.spreadRows.GetCount(), "rows of the spread");
    if (!complain.Text().empty())
        return;
    const int current = tool.CurrentVertexRow();
    complain.Unless(selection.noActive == (current < 0), "current row ", current);
    for (int row = 0; row < panel.spreadRows.GetCount() && complain.Text().empty(); ++row) {
        const int bone = panel.spreadRows[row];
        const auto cell = [&](int column) { return panel.spreadWeights.GetCell(row, column)->value; };
        complain.Unless(cell(kSpreadLock) == panel.lockFlags[bone], "lock cell ", row);
        const float weight =
            current < 0 ? 0.0F : selection.vertexModels[current]->VertexBoneWeight(bone, selection.vertexRows[current]);
        complain.Unless(cell(kSpreadWeight) == static_cast<double>(100.0F * weight), "weight cell ", row);
        complain.Unless(std::abs(cell(kSpreadSlider) - std::min(100.0, cell(kSpreadWeight))) < 1e-4, "slider ", row);
    }
}

} // namespace

std::string ToolTables_Check(ZToolCharacterWeighting& tool, const Leniency& leniency)
{
    Complaint complain;
    ZScene& scene = ZSession::TheOne()->GetScene();
    CheckModelList(tool, complain);
    CheckBones(tool, scene, complain);
    CheckModels(tool, scene, leniency, complain);
    if (complain.Text().empty())
        CheckVertexRows(tool, leniency, complain);
    if (complain.Text().empty())
        CheckSpread(tool, complain);
    return complain.Text();
}

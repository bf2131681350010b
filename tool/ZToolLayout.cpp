// SPDX-License-Identifier: MIT
// The tool's window: the model list at the left, the weighting panel filling the rest.
#include "tool/ZToolCharacterWeighting.h"

#include "weights/ZWeightUIModelData.h"

namespace {

using enum ZtAttachment;

constexpr const char* kNoModels = "Drop models here";

} // namespace

void ZToolCharacterWeighting::LayOut()
{
    SetDesignSize(1016, 370);
    AddRegion("ListLayout", {0, Left, {}}, {0, Top, {}}, {200, Size, {}}, {0, Bottom, {}});
    AddRegion("NormalLayoutPanel", {203, Left, {}}, {1, Top, {}}, {-1, Right, {}}, {-1, Bottom, {}});
    SetRegionView("ListLayout", &m_modelListPanel);
    SetRegionView("NormalLayoutPanel", &m_normalLayoutPanel);
    m_modelListPanel.AddRegion("ModelListLabel", {5, Left, {}}, {7, Top, {}}, {92, Size, {}}, {14, Size, {}});
    m_modelListPanel.AddRegion("ModelListUI", {3, Left, {}}, {28, Top, {}}, {-2, Right, {}}, {-11, Bottom, {}});
    m_modelListPanel.SetRegionView("ModelListLabel", &m_modelListLabel);
    m_modelListPanel.SetRegionView("ModelListUI", &m_modelListBox);
    m_modelListPanel.SetBorder(0, 0);
    m_modelListPanel.SetFlat(true);
    m_normalLayoutPanel.SetBorder(0, 2);
    m_normalLayoutPanel.SetFlat(true);
    m_normalLayoutPanel.SetCaption("ZCharacterWeightingNormalLayout");

    m_modelListLabel.SetCaption("Model List");
    m_modelListBox.SetListStyle(0);
    m_modelListBox.SetMultipleSelection(true);
    m_modelListBox.SetExtendedSelection(false);
    m_modelListBox.SetCheckMarks(true);
    m_modelListBox.SetRowSource(this);
    m_modelListBox.AddRows(1);

    m_modelListBox.SetRowCheck(0, true);
    for (const int kind : {kViewValueChanged, kViewDragAndDrop})
        m_modelListBox.RegisterHandler(kind, ZMakeHandler<&ZToolCharacterWeighting::OnModelListEvent>(this));
    m_panel.Build();
    SetRegionView("NormalLayoutPanel", &m_panel);
    ShowModelSelectionBox();
}

std::string ZToolCharacterWeighting::RowText(const ZtListBox&, int row) const
{
    if (m_models.GetCount() == 0)
        return row == 0 ? kNoModels : "";
    const ZWeightUIModelData* const item = m_models[row];
    const char* const name = item != nullptr ? item->GetModel()->GetObjectLabelName() : nullptr;
    return name != nullptr ? name : "";
}

void ZToolCharacterWeighting::RefreshModelList(bool force, bool onlyFlags)
{
    if (!m_refreshPending && !force) {
        RebuildBoneList();
        return;
    }
    m_refreshPending = false;
    const int models = m_models.GetCount();
    const bool keepsRows = onlyFlags && models > 0 && m_modelListBox.GetRowCount() == models;
    if (!keepsRows)
        FillModelRows();
    for (int row = 0; row < models; ++row)
        m_modelListBox.SetRowCheck(row, m_models[row]->modelSelected != 0);
    ShowModelSelectionBox();
    RebuildBoneList();
}

void ZToolCharacterWeighting::FillModelRows()
{
    m_modelListBox.ClearRows();
    if (m_models.GetCount() > 0) {
        m_modelListBox.AddRows(m_models.GetCount());
    } else {
        m_modelListBox.AddRows(1);
        m_modelListBox.SetRowCheck(0, true);
    }
}

/// Without models there is nothing that the viewer's clicks could be meant for but the host's own selection.
void ZToolCharacterWeighting::ShowModelSelectionBox()
{
    const bool models = m_models.GetCount() > 0;
    m_panel.enableModelSelectionCheckBox.SetState(!models || m_panel.modelSelectionEnabled);
    m_panel.enableModelSelectionCheckBox.SetEnabled(models);
}

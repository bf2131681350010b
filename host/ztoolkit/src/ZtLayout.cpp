// SPDX-License-Identifier: MIT
// Layouts: which view lies in which region.
#include "ztoolkit/ZtLayout.h"

#include "RegionSolver.h"
#include "zbaselib/ZReport.h"

#include <algorithm>
#include <utility>

ZCLASS_DEFINE(ZtLayout, ZtView)
ZCLASS_DEFINE(ZtPanel, ZtLayout)
ZCLASS_DEFINE(ZtForm, ZtLayout)

ZtLayout::ZtLayout(ZtViewKind viewKind, const char* name) : ZtView(viewKind, name) {}

ZtLayout::~ZtLayout()
{
    if (!IsDestroyed())
        ZtLayout::Destruct();
}

void ZtLayout::Destruct()
{
    // Taken out first: a view that goes would look for itself among the regions.
    const auto regions = std::exchange(m_regions, {});
    m_byName.clear();
    for (const auto& region : regions)
        if (region->view != nullptr)
            region->view->SetParent(nullptr);
    for (const auto& region : regions)
        if (region->view != nullptr && region->view->IsAllocated())
            region->view->DestroyObject();
    ZtView::SystemDetach();
    ZtView::Destruct();
}

ZtRegion& ZtLayout::AddRegion(const char* name, const ZtEdge& left, const ZtEdge& top, const ZtEdge& right,
                              const ZtEdge& bottom)
{
    const std::string key = name != nullptr ? name : "";
    ZtRegion*& region = m_byName[key];
    if (region == nullptr) {
        m_regions.push_back(std::make_unique<ZtRegion>());
        region = m_regions.back().get();
        region->name = key;
    }
    region->left = left;
    region->top = top;
    region->right = right;
    region->bottom = bottom;
    MarkChanged();
    return *region;
}

ZtRegion* ZtLayout::FindRegion(const char* name)
{
    const auto found = m_byName.find(name != nullptr ? name : "");
    return found == m_byName.end() ? nullptr : found->second;
}

void ZtLayout::TakeOut(ZtRegion& region)
{
    if (region.view != nullptr)
        region.view->SetParent(nullptr);
    region.view = nullptr;
}

void ZtLayout::ForgetView(ZtView* view)
{
    for (const auto& region : m_regions)
        if (region->view == view) {
            TakeOut(*region);
            MarkChanged();
            return;
        }
}

void ZtLayout::SetRegionView(const char* name, ZtView* view)
{
    ZtRegion* const region = FindRegion(name);
    if (region == nullptr) {
        ZReport_Misuse("ZtLayout::SetRegionView",
                       "the layout \"" + GetObjectName() + "\" has no region \"" + (name != nullptr ? name : "") + '"');
        return;
    }
    for (const ZtView* around = this; around != nullptr; around = around->GetParent())
        if (around == view) {
            ZReport_Misuse("ZtLayout::SetRegionView", "the layout \"" + view->GetObjectName() +
                                                          "\" cannot lie in itself, in region \"" + region->name + '"');
            return;
        }
    if (region->view == view)
        return;
    TakeOut(*region);
    if (view != nullptr) {
        if (view->GetParent() != nullptr)
            static_cast<ZtLayout*>(view->GetParent())->ForgetView(view);
        region->view = view;
        view->SetParent(this);
    }
    MarkChanged();
}

void ZtLayout::Arrange(int width, int height)
{
    const std::string complaint = ArrangeRegions(m_regions, width, height);
    if (!complaint.empty() && complaint != m_complaint)
        ZReport_Warning("layout \"" + GetObjectName() + "\": " + complaint);
    m_complaint = complaint;

    // Positions count from the form: a panel hands on where it lies itself, a form starts anew.
    const ZtRect origin = GetViewKind() == ZtViewKind::Form ? ZtRect{} : GetRect();
    for (const auto& region : m_regions) {
        if (region->view == nullptr)
            continue;
        const ZtRect& rect = region->rect;
        region->view->SetRect({origin.x + rect.x, origin.y + rect.y, rect.width, rect.height});
        if (ZtLayout* const inner = Object_Cast<ZtLayout>(region->view))
            inner->Arrange(rect.width, rect.height);
    }
}

void ZtLayout::CollectViews(std::vector<ZtView*>& views)
{
    for (const auto& region : m_regions) {
        if (region->view == nullptr)
            continue;
        views.push_back(region->view);
        if (ZtLayout* const inner = Object_Cast<ZtLayout>(region->view))
            inner->CollectViews(views);
    }
}

ZtPanel::ZtPanel(const char* name) : ZtLayout(ZtViewKind::Panel, name) {}

void ZtPanel::SetBorder(int style, int width)
{
    m_borderStyle = style;
    m_borderWidth = width;
    MarkChanged();
}

void ZtPanel::SetFlat(bool flat)
{
    m_flat = flat;
    MarkChanged();
}

ZtForm::ZtForm(const char* name) : ZtLayout(ZtViewKind::Form, name) {}

void ZtForm::SetDesignSize(int width, int height)
{
    m_designWidth = width;
    m_designHeight = height;
    MarkChanged();
}

// SPDX-License-Identifier: MIT
// Region layout: rectangles, references in any order, circles, and whose view lies where.
#include "zbaselib/ZReport.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtLayout.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::ThrowsMessage;

namespace {
using A = ZtAttachment;
constexpr ZtRect kEmpty{};

ZtEdge FromLeft(int offset, const std::string& reference = "") { return {offset, A::Left, reference, 1.0}; }
ZtEdge FromTop(int offset, const std::string& reference = "") { return {offset, A::Top, reference, 1.0}; }
ZtEdge FromRight(int offset, const std::string& reference = "") { return {offset, A::Right, reference, 1.0}; }
ZtEdge FromBottom(int offset, const std::string& reference = "") { return {offset, A::Bottom, reference, 1.0}; }
ZtEdge Pixels(int size) { return {size, A::Size, "", 1.0}; }
ZtEdge WidthOf(const std::string& reference) { return {0, A::Width, reference, 1.0}; }
ZtEdge HeightOf(const std::string& reference, double multiplier = 1.0, int offset = 0)
{
    return {offset, A::Height, reference, multiplier};
}

struct NamedEdges
{
    std::string name;
    ZtEdge left, top, right, bottom;
};

/// A list on the left, one under half of it, a label between them, a frame to the right.
std::vector<NamedEdges> MakeValidRegions()
{
    return {
        {"List", FromLeft(0), FromTop(27), Pixels(164), FromBottom(-10)},
        {"Upper", FromLeft(0, "List"), FromTop(0, "List"), WidthOf("List"), HeightOf("List", 0.5, -15)},
        {"Label", FromLeft(4), FromBottom(6, "Upper"), FromRight(0, "Upper"), Pixels(14)},
        {"Lower", FromLeft(0, "Upper"), FromBottom(6, "Label"), WidthOf("Upper"), FromBottom(0, "List")},
        {"Frame", FromRight(4, "List"), FromTop(0, "List"), FromRight(-189), FromBottom(0, "List")},
        {"Combo", FromRight(-180), FromTop(27), FromRight(-9), Pixels(18)},
    };
}

void AddAll(ZtLayout& layout, const std::vector<NamedEdges>& regions)
{
    for (const NamedEdges& region : regions)
        layout.AddRegion(region.name.c_str(), region.left, region.top, region.right, region.bottom);
}

class Layout : public testing::Test
{
protected:
    void SetUp() override { ZReport_ClearWarnings(); }
    void TearDown() override { ZReport_ClearWarnings(); }
};
} // namespace

TEST_F(Layout, EdgesAreMeasuredFromTheFormAndFromOtherRegions)
{
    ZtForm form("form");
    AddAll(form, MakeValidRegions());
    form.Arrange(958, 368);
    EXPECT_EQ(form.FindRegion("List")->rect, (ZtRect{0, 27, 164, 331}));
    EXPECT_EQ(form.FindRegion("Upper")->rect, (ZtRect{0, 27, 164, 150})); // 165.5 loses its half, less 15
    EXPECT_EQ(form.FindRegion("Label")->rect, (ZtRect{4, 183, 160, 14}));
    EXPECT_EQ(form.FindRegion("Lower")->rect, (ZtRect{0, 203, 164, 155}));
    EXPECT_EQ(form.FindRegion("Frame")->rect, (ZtRect{168, 27, 601, 331}));
    EXPECT_EQ(form.FindRegion("Combo")->rect, (ZtRect{778, 27, 171, 18}));
    EXPECT_TRUE(ZReport_Warnings().empty());
}

TEST_F(Layout, AnotherSizeMovesWhatHangsOnTheRightAndTheBottom)
{
    ZtForm form("form");
    AddAll(form, MakeValidRegions());
    form.Arrange(958, 368);
    form.Arrange(1000, 400);
    EXPECT_EQ(form.FindRegion("Combo")->rect, (ZtRect{820, 27, 171, 18}));
    EXPECT_EQ(form.FindRegion("List")->rect.height, 363);
}

RC_GTEST_FIXTURE_PROP(Layout, TheOrderOfRegionsDoesNotMatter, (int seed))
{
    auto regions = MakeValidRegions();
    std::shuffle(regions.begin(), regions.end(), std::mt19937(static_cast<unsigned>(seed)));
    ZtForm form("form"), shuffled("shuffled");
    AddAll(form, MakeValidRegions());
    AddAll(shuffled, regions);
    form.Arrange(958, 368);
    shuffled.Arrange(958, 368);
    for (const NamedEdges& region : regions)
        RC_ASSERT(form.FindRegion(region.name.c_str())->rect == shuffled.FindRegion(region.name.c_str())->rect);
}

TEST_F(Layout, AFormTooSmallMakesNoNegativeSizes)
{
    ZtForm form("form");
    AddAll(form, MakeValidRegions());
    form.Arrange(0, 0);
    for (const auto& region : form.GetRegions()) {
        EXPECT_GE(region->rect.width, 0) << region->name;
        EXPECT_GE(region->rect.height, 0) << region->name;
    }
}

TEST_F(Layout, ACircleIsReportedByNameInOneWarning)
{
    ZtForm form("fmcircle");
    AddAll(form, {{"A", FromRight(1, "B"), FromTop(0), Pixels(10), Pixels(10)},
                  {"B", FromRight(1, "A"), FromTop(0), Pixels(10), Pixels(10)},
                  {"Hanging", FromRight(1, "A"), FromTop(0), Pixels(10), Pixels(10)},
                  {"Fine", FromLeft(5), FromTop(0), Pixels(10), Pixels(10)}});
    form.Arrange(100, 100);
    form.Arrange(200, 100); // the same complaint is not made twice
    ASSERT_EQ(ZReport_Warnings().size(), 1u);
    EXPECT_THAT(ZReport_Warnings()[0], AllOf(HasSubstr("fmcircle"), HasSubstr("circle: A, B"),
                                             HasSubstr("depend on these: Hanging"), Not(HasSubstr("Fine"))));
    EXPECT_EQ(form.FindRegion("A")->rect, kEmpty);
    EXPECT_EQ(form.FindRegion("B")->rect, kEmpty);
    EXPECT_EQ(form.FindRegion("Hanging")->rect, kEmpty);
    EXPECT_EQ(form.FindRegion("Fine")->rect, (ZtRect{5, 0, 10, 10}));
}

TEST_F(Layout, ARegionThatRefersToItselfIsACircle)
{
    ZtForm form("form");
    AddAll(form, {{"Self", FromLeft(0), FromTop(0), WidthOf("Self"), Pixels(10)}});
    form.Arrange(100, 100);
    ASSERT_EQ(ZReport_Warnings().size(), 1u);
    EXPECT_THAT(ZReport_Warnings()[0], HasSubstr("circle: Self"));
}

TEST_F(Layout, ASizeFromTheRegionsOwnOtherSideIsNoCircle)
{
    ZtForm form("form");
    AddAll(form, {{"Square", FromLeft(0), FromTop(0), HeightOf("Square"), Pixels(40)}});
    form.Arrange(100, 100);
    EXPECT_EQ(form.FindRegion("Square")->rect, (ZtRect{0, 0, 40, 40}));
    EXPECT_TRUE(ZReport_Warnings().empty());
}

TEST_F(Layout, AReferenceToNothingIsReportedByName)
{
    ZtForm form("form");
    AddAll(form, {{"Lost", FromLeft(0, "Nowhere"), FromTop(0), Pixels(10), Pixels(10)}});
    form.Arrange(100, 100);
    ASSERT_EQ(ZReport_Warnings().size(), 1u);
    EXPECT_THAT(ZReport_Warnings()[0], AllOf(HasSubstr("Lost"), HasSubstr("Nowhere"), Not(HasSubstr("circle"))));
    EXPECT_EQ(form.FindRegion("Lost")->rect, kEmpty);
}

TEST_F(Layout, AWarningComesAgainWhenTheTroubleIsAnotherOne)
{
    ZtForm form("form");
    AddAll(form, {{"Lost", FromLeft(0, "Nowhere"), FromTop(0), Pixels(10), Pixels(10)}});
    form.Arrange(100, 100);
    AddAll(form, {{"Lost", FromLeft(0, "Elsewhere"), FromTop(0), Pixels(10), Pixels(10)}});
    form.Arrange(100, 100);
    EXPECT_EQ(ZReport_Warnings().size(), 2u);
}

TEST_F(Layout, AddingARegionOfTheSameNameReplacesItsEdgesInPlace)
{
    ZtForm form("form");
    ZtStatic label("label");
    AddAll(form, MakeValidRegions());
    form.SetRegionView("Label", &label);
    form.AddRegion("Label", FromLeft(1), FromTop(2), Pixels(3), Pixels(4));
    form.Arrange(958, 368);
    EXPECT_EQ(form.GetRegions().size(), MakeValidRegions().size());
    EXPECT_EQ(form.GetRegions()[2]->name, "Label");
    EXPECT_EQ(label.GetRect(), (ZtRect{1, 2, 3, 4}));
}

TEST_F(Layout, ManyRegionsInAChainTakeTimeInProportion)
{
    // Each hangs on the next one added: the worst order for who goes through the list.
    ZtForm form("form");
    const int count = 100'000;
    for (int i = 0; i < count; ++i)
        form.AddRegion(std::to_string(i).c_str(), i + 1 < count ? FromRight(1, std::to_string(i + 1)) : FromLeft(0),
                       FromTop(0), Pixels(2), Pixels(2));
    form.Arrange(100, 100);
    EXPECT_EQ(form.FindRegion("0")->rect.x, 3 * (count - 1));
}

TEST_F(Layout, AnUnknownRegionIsMisuse)
{
    ZtForm form("fmtool");
    ZtStatic label("label");
    EXPECT_THAT(
        [&] { form.SetRegionView("Nowhere", &label); },
        ThrowsMessage<ZHostMisuse>(AllOf(HasSubstr("SetRegionView"), HasSubstr("fmtool"), HasSubstr("Nowhere"))));
    EXPECT_EQ(label.GetParent(), nullptr);
}

TEST_F(Layout, AViewLiesInOneRegionAtMost)
{
    ZtForm form("form"), other("other");
    ZtStatic label("label");
    AddAll(form, MakeValidRegions());
    AddAll(other, MakeValidRegions());
    form.SetRegionView("Label", &label);
    form.SetRegionView("Lower", &label);
    EXPECT_EQ(form.FindRegion("Label")->view, nullptr);
    EXPECT_EQ(form.FindRegion("Lower")->view, &label);
    other.SetRegionView("Frame", &label);
    EXPECT_EQ(form.FindRegion("Lower")->view, nullptr);
    EXPECT_EQ(label.GetParent(), &other);
    other.SetRegionView("Frame", nullptr);
    EXPECT_EQ(label.GetParent(), nullptr);
}

TEST_F(Layout, AViewTakesThePlaceOfAnother)
{
    ZtForm form("form");
    ZtStatic first("first"), second("second");
    AddAll(form, MakeValidRegions());
    form.SetRegionView("Label", &first);
    form.SetRegionView("Label", &second);
    EXPECT_EQ(first.GetParent(), nullptr);
    EXPECT_EQ(form.FindRegion("Label")->view, &second);
}

TEST_F(Layout, ALayoutCannotLieInItself)
{
    ZtPanel outer("outer"), inner("inner");
    AddAll(outer, MakeValidRegions());
    AddAll(inner, MakeValidRegions());
    outer.SetRegionView("List", &inner);
    EXPECT_THROW(outer.SetRegionView("List", &outer), ZHostMisuse);
    EXPECT_THROW(inner.SetRegionView("List", &outer), ZHostMisuse);
    EXPECT_EQ(inner.FindRegion("List")->view, nullptr);
}

TEST_F(Layout, PositionsCountFromTheFormThroughPanelsAndAnewInForms)
{
    ZtForm tool("tool"), form("form");
    ZtPanel border("border");
    ZtStatic inPanel("inPanel"), inForm("inForm");
    tool.AddRegion("Form", FromLeft(203), FromTop(1), FromRight(-1), FromBottom(-1));
    form.AddRegion("Border", FromLeft(336), FromTop(27), FromRight(-189), FromBottom(-10));
    form.AddRegion("Label", FromLeft(4), FromTop(6), Pixels(57), Pixels(14));
    border.AddRegion("Spread", FromLeft(1), FromTop(1), FromRight(-1), FromBottom(-1));
    tool.SetRegionView("Form", &form);
    form.SetRegionView("Border", &border);
    form.SetRegionView("Label", &inForm);
    border.SetRegionView("Spread", &inPanel);
    tool.Arrange(1146, 311);
    EXPECT_EQ(form.GetRect(), (ZtRect{203, 1, 942, 309}));
    EXPECT_EQ(inForm.GetRect(), (ZtRect{4, 6, 57, 14}));
    EXPECT_EQ(border.GetRect(), (ZtRect{336, 27, 417, 272}));
    EXPECT_EQ(inPanel.GetRect(), (ZtRect{337, 28, 415, 270}));
}

TEST_F(Layout, ViewsAreCollectedWithThoseOfInnerLayoutsAfterTheirHolder)
{
    ZtForm form("form");
    ZtPanel panel("panel");
    ZtStatic inside("inside"), after("after");
    AddAll(form, MakeValidRegions());
    AddAll(panel, MakeValidRegions());
    form.SetRegionView("Label", &panel);
    panel.SetRegionView("List", &inside);
    form.SetRegionView("Combo", &after);
    std::vector<ZtView*> views;
    form.CollectViews(views);
    EXPECT_THAT(views, ElementsAre(&panel, &inside, &after));
}

TEST_F(Layout, AViewThatIsDestroyedLeavesItsRegion)
{
    ZtForm form("form");
    AddAll(form, MakeValidRegions());
    {
        ZtStatic label("label");
        form.SetRegionView("Label", &label);
    }
    EXPECT_EQ(form.FindRegion("Label")->view, nullptr);
    form.Arrange(100, 100);
}

TEST_F(Layout, ALayoutThatIsDestroyedLetsItsViewsGo)
{
    ZtStatic label("label");
    {
        ZtForm form("form");
        AddAll(form, MakeValidRegions());
        form.SetRegionView("Label", &label);
    }
    EXPECT_EQ(label.GetParent(), nullptr);
}

namespace {
struct Mortal : ZtStatic
{
    int* deaths;
    explicit Mortal(int* counted) : ZtStatic("mortal"), deaths(counted) {}
    ~Mortal() override { ++*deaths; }
};
} // namespace

TEST_F(Layout, AViewThatTheHostOwnsGoesWithItsLayout)
{
    int deaths = 0;
    {
        ZtForm form("form");
        AddAll(form, MakeValidRegions());
        auto* const owned = new Mortal(&deaths);
        owned->SetAllocated();
        EXPECT_TRUE(owned->IsAllocated());
        form.SetRegionView("Label", owned);
    }
    EXPECT_EQ(deaths, 1);
}

TEST_F(Layout, AnEdgeWithoutANumberLiesAtZero)
{
    ZtForm form("form");
    form.AddRegion("Odd", {5, A::Right, "", std::nan("")}, FromTop(0), Pixels(10), Pixels(10));
    form.Arrange(100, 100);
    EXPECT_EQ(form.FindRegion("Odd")->rect.x, 0);
}

TEST_F(Layout, PanelsKeepTheirBorders)
{
    ZtPanel panel("panel");
    panel.SetBorder(0, 2);
    panel.SetFlat(true);
    EXPECT_EQ(panel.GetBorderStyle(), 0);
    EXPECT_EQ(panel.GetBorderWidth(), 2);
    EXPECT_TRUE(panel.IsFlat());
    ZtForm form("form");
    form.SetDesignSize(958, 368);
    EXPECT_EQ(form.GetDesignWidth(), 958);
    EXPECT_EQ(form.GetDesignHeight(), 368);
}

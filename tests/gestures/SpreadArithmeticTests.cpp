// SPDX-License-Identifier: MIT
// The arithmetic of a spread through the events of the real controls of the real library: bones A, B and C.
#include "bcore/ZSession.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZGeometryModels.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtListBox.h"
#include "ztoolkit/ZtSpread.h"

#include <gmock/gmock.h>

#include <map>

namespace {

constexpr int kSlider = 1;
constexpr int kLock = 2;
constexpr int kWeight = 3;

ZSession::Options WithPlugins()
{
    ZSession::Options options;
    options.pluginFolders = {SKINDESK_PLUGIN_FOLDER};
    return options;
}

class SpreadArithmetic : public testing::Test
{
protected:
    SpreadArithmetic() : session(WithPlugins())
    {
        session.LoadPlugins();
        for (const char* const name : {"A", "B", "C"}) {
            auto bone = std::make_unique<ZModel>(name, ZModelKind::Bone);
            bone->SetBone(true);
            bones.push_back(session.GetScene().AddModel(std::move(bone)));
        }
    }

    /// A row of vertices, each with these weights, opened in the tool, all picked, all bones shown.
    void Open(const std::vector<std::vector<double>>& weights, int deformMode = kDeformNormalise)
    {
        auto made = std::make_unique<ZModelPolymesh>("M");
        std::vector<float> positions;
        std::vector<int> polygon;
        for (size_t i = 0; i < weights.size(); ++i) {
            positions.insert(positions.end(), {static_cast<float>(i), 0.0F, 0.0F});
            polygon.push_back(static_cast<int>(i));
        }
        made->SetGeometry(positions.data(), static_cast<int>(weights.size()), polygon,
                          {static_cast<int>(polygon.size())});
        ZSkin* const skin = made->MakeSkin(deformMode);
        for (size_t link = 0; link < bones.size(); ++link) {
            skin->AppendLink(bones[link], ZgeMatrix());
            skin->BeginLink(static_cast<int>(link));
            for (size_t vertex = 0; vertex < weights.size(); ++vertex)
                if (weights[vertex][link] > 0)
                    skin->AddEntry(static_cast<int>(vertex), weights[vertex][link]);
            skin->EndLink();
        }
        model = session.GetScene().AddModel(std::move(made));
        ZTool* const tool = session.OpenTool("Skins");
        std::vector<ZtView*> views;
        tool->CollectViews(views);
        for (ZtView* const view : views)
            controls[view->GetObjectName()] = view;
        GlobalDragAndDrop_Begin();
        GlobalDragAndDrop_Add(model, 0);
        GlobalDragAndDrop_DropOn(controls.at("ModelListUI"));
        ZViewer& viewer = session.GetViewer();
        viewer.Frame({});
        viewer.Press(1, 1, 1, 0);
        viewer.Move(798, 598);
        viewer.Release(798, 598);
        static_cast<ZtListBox*>(controls.at("ListBonesList"))->UserSelect({0, 1, 2});
        session.AfterEvent();
    }
    ZtSpread& Spread() { return static_cast<ZtSpread&>(*controls.at("SpreadWeights")); }
    void ExpectSpread(double a, double b, double c)
    {
        const double expected[3] = {a, b, c};
        for (int row = 0; row < 3; ++row) {
            EXPECT_NEAR(Spread().GetCell(row, kWeight)->value, expected[row], 1e-4) << "bone " << row;
            EXPECT_NEAR(Spread().GetCell(row, kSlider)->value, expected[row], 1e-4) << "bone " << row;
        }
    }
    double SkinWeight(int link, int vertex)
    {
        ZSkin& skin = *model->GetSkin();
        skin.BeginLink(link);
        const int entry = skin.FindEntry(vertex);
        const double weight = entry >= 0 ? skin.EntryWeight(entry) : 0;
        skin.EndLink();
        return weight;
    }

    ZSession session;
    std::vector<ZModel*> bones;
    ZModel* model = nullptr;
    std::map<std::string, ZtView*> controls;
};

TEST_F(SpreadArithmetic, OthersShareTheRestInProportion)
{
    Open({{0.5, 0.3, 0.2}});
    Spread().UserType(0, kWeight, 70);
    ExpectSpread(70, 18, 12);
    EXPECT_NEAR(SkinWeight(1, 0), 0.18, 1e-7);
}

TEST_F(SpreadArithmetic, LockedBoneKeepsItsWeight)
{
    Open({{0.5, 0.3, 0.2}});
    Spread().UserType(2, kLock, 1);
    Spread().UserType(0, kWeight, 70);
    ExpectSpread(70, 10, 20);
}

TEST_F(SpreadArithmetic, WeightPushedOutFlowsBack)
{
    Open({{0.5, 0.3, 0.2}});
    Spread().UserSlide(0, kSlider, kViewPress, 50);
    Spread().UserSlide(0, kSlider, kViewValueChanged, 100);
    ExpectSpread(100, 0, 0);
    Spread().UserSlide(0, kSlider, kViewValueChanged, 60);
    ExpectSpread(60, 24, 16);
    Spread().UserSlide(0, kSlider, kViewRelease, 60);
    EXPECT_TRUE(session.Undo());
    ExpectSpread(50, 30, 20);
}

TEST_F(SpreadArithmetic, RequestsBeyondTheRangeAreItsEnds)
{
    Open({{0.5, 0.3, 0.2}});
    Spread().UserType(0, kWeight, 150);
    ExpectSpread(100, 0, 0);
    EXPECT_TRUE(session.Undo());
    Spread().UserType(0, kWeight, -5);
    ExpectSpread(0, 60, 40);
}

TEST_F(SpreadArithmetic, MissingShareIsAddedToTheFreeBones)
{
    Open({{0.5, 0.3, 0.2}});
    // After normalising nothing is missing; another program takes a tenth of the vertex away.
    ZSkin& skin = *model->GetSkin();
    skin.BeginLink(0);
    skin.SetEntryWeight(0.4, skin.FindEntry(0));
    skin.EndLink();
    auto& list = static_cast<ZtListBox&>(*controls.at("ModelListUI"));
    list.UserSetCheck(0, false);
    list.UserSetCheck(0, true); // read again, not normalised again
    ZViewer& viewer = session.GetViewer();
    viewer.Press(1, 1, 1, 0);
    viewer.Move(798, 598);
    viewer.Release(798, 598);
    static_cast<ZtListBox*>(controls.at("ListBonesList"))->UserSelect({0, 1, 2});
    ExpectSpread(40, 30, 20);
    Spread().UserType(0, kWeight, 60);
    ExpectSpread(60, 24, 16);
}

TEST_F(SpreadArithmetic, OnlyFreeBoneGetsExactlyWhatTheLockedOnesLeave)
{
    Open({{0.6, 0.2, 0.2}});
    Spread().UserType(1, kLock, 1);
    Spread().UserType(2, kLock, 1);
    for (const double requested : {5.0, 60.0, 95.0}) {
        Spread().UserType(0, kWeight, requested);
        ExpectSpread(60, 20, 20);
    }
}

TEST_F(SpreadArithmetic, AllTargetsEndWithTheCurrentVertexsSpread)
{
    Open({{0.5, 0.3, 0.2}, {0, 0, 1}, {0.1, 0.9, 0}});
    static_cast<ZtComboBox*>(controls.at("ListWeightingMode"))->UserChoose(1);
    Spread().UserType(0, kWeight, 70);
    for (int vertex = 0; vertex < 3; ++vertex) {
        EXPECT_NEAR(SkinWeight(0, vertex), 0.70, 1e-7) << vertex;
        EXPECT_NEAR(SkinWeight(1, vertex), 0.18, 1e-7) << vertex;
        EXPECT_NEAR(SkinWeight(2, vertex), 0.12, 1e-7) << vertex;
    }
}

} // namespace

// SPDX-License-Identifier: MIT
#include "PictureStage.h"

#include "object/ZAction.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr int kAround = 12, kRings = 13;
constexpr double kHeight = 3;
constexpr double kPi = 3.14159265358979323846;
// After so many frames the edges are within a hundredth of their brightness.
constexpr int kFramesToFadeIn = 450;

/// How much bone 0, 1 or 2 pulls at a height: all at its own middle, nothing at its neighbours'.
double ShareOf(int bone, double height) { return std::clamp(1 - std::abs(height - (bone + 0.5)), 0.0, 1.0); }

} // namespace

PictureStage::PictureStage() : desk(SKINDESK_PLUGIN_FOLDER)
{
    ZViewer& viewer = desk.Viewer();
    viewer.SetShowGrid(false);
    viewer.SetShowBones(false);
    viewer.SetSize(320, 240);
}

PictureStage::~PictureStage()
{
    Object_ClearKeyStates();
    ZOffscreen_Release();
}

void PictureStage::AddBones(bool bent)
{
    for (const char* const name : {"Low", "Middle", "High"}) {
        auto bone = std::make_unique<ZModel>(name, ZModelKind::Bone);
        bone->SetBone(true);
        if (!bones.empty()) {
            bone->SetParent(bones.back());
            bone->SetFileTransform(ZgeTranslation({0, 1, 0}));
        }
        bones.push_back(desk.session.GetScene().AddModel(std::move(bone)));
    }
    if (bent)
        bones[1]->SetPosedTransform(ZgeCompose({{0, 1, 0}, {0, 0, 40}, {1, 1, 1}}));
}

void PictureStage::LinkBones(ZSkin& skin, const std::vector<double>& heights)
{
    for (size_t link = 0; link < bones.size(); ++link) {
        skin.AppendLink(bones[link], ZgeTranslation({0, -static_cast<double>(link), 0}));
        skin.BeginLink(static_cast<int>(link));
        for (size_t vertex = 0; vertex < heights.size(); ++vertex) {
            double total = 0;
            for (int bone = 0; bone < 3; ++bone)
                total += ShareOf(bone, heights[vertex]);
            const double share = ShareOf(static_cast<int>(link), heights[vertex]) / total;
            if (share > 0)
                skin.AddEntry(static_cast<int>(vertex), share);
        }
        skin.EndLink();
    }
}

ZModelPolymesh* PictureStage::AddTube(const char* name, int deformMode, double radius)
{
    std::vector<float> positions;
    std::vector<double> heights;
    std::vector<int> polygons;
    for (int ring = 0; ring < kRings; ++ring) {
        const double y = kHeight * ring / (kRings - 1);
        for (int i = 0; i < kAround; ++i) {
            const double angle = 2 * kPi * i / kAround;
            for (const double part : {radius * std::cos(angle), y, -radius * std::sin(angle)})
                positions.push_back(static_cast<float>(part));
            heights.push_back(y);
            const int here = ring * kAround + i, beside = ring * kAround + (i + 1) % kAround;
            if (ring + 1 < kRings)
                polygons.insert(polygons.end(), {here, beside, beside + kAround, here + kAround});
        }
    }
    auto made = std::make_unique<ZModelPolymesh>(name);
    EXPECT_TRUE(made->SetGeometry(positions.data(), static_cast<int>(heights.size()), polygons,
                                  std::vector<int>(polygons.size() / 4, 4)));
    LinkBones(*made->MakeSkin(deformMode), heights);
    return static_cast<ZModelPolymesh*>(desk.session.GetScene().AddModel(std::move(made)));
}

void PictureStage::Mirror(ZModel* model)
{
    ZModel* const node = desk.session.GetScene().AddModel(std::make_unique<ZModel>("Mirror", ZModelKind::Node));
    node->SetFileTransform(ZgeScaling({-1, 1, 1}));
    model->SetParent(node);
    bones.front()->SetParent(node);
}

ZModelNurbs* PictureStage::AddPatch(const char* name)
{
    ZNurbsSurface surface;
    surface.degreeU = surface.degreeV = 2;
    surface.countU = 5;
    surface.countV = 4;
    surface.knotsU = {0, 0, 0, 1, 2, 3, 3, 3};
    surface.knotsV = {0, 0, 0, 1, 2, 2, 2};
    std::vector<double> heights;
    for (int v = 0; v < surface.countV; ++v)
        for (int u = 0; u < surface.countU; ++u) {
            const double y = kHeight * v / (surface.countV - 1);
            surface.points.insert(surface.points.end(), {0.5 * u - 1, y, 0.3 * ((u + v) % 2)});
            heights.push_back(y);
        }
    auto made = std::make_unique<ZModelNurbs>(name);
    EXPECT_TRUE(made->SetSurface(surface, 17, 13));
    LinkBones(*made->MakeSkin(kDeformNormalise), heights);
    return static_cast<ZModelNurbs*>(desk.session.GetScene().AddModel(std::move(made)));
}

void PictureStage::OpenTool(const std::vector<ZModel*>& models)
{
    desk.OpenTool();
    desk.Drop(models);
}

void PictureStage::Look() { EXPECT_TRUE(desk.Viewer().GetCamera().LookAt({2.2, 2.2, 5.5}, {-0.4, 1.3, 0}, {0, 1, 0})); }

void PictureStage::Drag(int x0, int y0, int x1, int y1, int modifiers, bool release)
{
    desk.Viewer().Press(x0, y0, kButtonLeft, modifiers);
    desk.Viewer().Move((x0 + x1) / 2, (y0 + y1) / 2);
    desk.Viewer().Move(x1, y1);
    if (release)
        desk.Viewer().Release(x1, y1);
    desk.session.AfterEvent();
}

ZImage PictureStage::Grab()
{
    ZImage image;
    std::string why;
    ZViewer& viewer = desk.Viewer();
    if (!ZOffscreen_MakeCurrent(&why)) {
        ADD_FAILURE() << "no picture can be made: " << why;
        return image;
    }
    if (!m_edgesFadedIn && desk.tool != nullptr) {
        // In as small a picture as there is, since only their number counts.
        viewer.SetSize(1, 1);
        for (int frame = 0; frame < kFramesToFadeIn; ++frame)
            EXPECT_TRUE(ZOffscreen_Grab(viewer, image, &why)) << why;
        viewer.SetSize(320, 240);
        m_edgesFadedIn = true;
    }
    EXPECT_TRUE(ZOffscreen_Grab(viewer, image, &why)) << why;
    return image;
}

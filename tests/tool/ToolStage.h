// SPDX-License-Identifier: MIT
// A stage for the skinning tool: a session without a window, tiny characters, and the user's hand.
#pragma once

#include "bcore/ZSession.h"
#include "editing/ZWeightingUndo.h"
#include "object/ZAction.h"
#include "object/ZCatalogue.h"
#include "object/ZShortCutKeyManager.h"
#include "object/ZUndoStack.h"
#include "tool/ZToolCharacterWeighting.h"
#include "viewport/ZCharacterWeightingConstraint.h"
#include "viewport/ZCharacterWeightingManipulator.h"
#include "weights/ZWeightUIModelData.h"
#include "zbaselib/ZReport.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"
#include "zmodel/ZSkin.h"
#include "ztoolkit/ZToolKit.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <string>
#include <vector>

/// A session with the tool in its catalogue. Bones stand in a column, vertices of a mesh in a row before the camera.
class ToolStage : public testing::Test
{
protected:
    using Weights = std::function<double(int vertex, int link)>;

    ToolStage()
    {
        ZToolKit_ClearMessages();
        ZToolKit_SetMessageAnswerer({});
        ZToolKit_SetScreenWidth(1920);
        ZReport_ClearWarnings();
        Object_ClearKeyStates();
        Object_Register("UI/Tools", "Skins", "Skinning tool", MakeTool, false, "zapp/zapp-skin.png", nullptr);
        StartSession("");
    }
    ~ToolStage() override
    {
        session.reset();
        Object_Withdraw("UI/Tools", "Skins");
        ZToolKit_SetMessageAnswerer({});
        ZToolKit_SetScreenWidth(1920);
    }

    void StartSession(const std::string& settingsFolder)
    {
        session.reset();
        ZSession::Options options;
        options.settingsFolder = settingsFolder;
        session = std::make_unique<ZSession>(options);
    }

    // The scene.
    ZScene& Scene() { return session->GetScene(); }
    ZModel* AddBone(const char* name, ZModel* parent = nullptr, const ZgeVector3& at = {0, 1, 0},
                    const ZgeVector3& scaling = {1, 1, 1})
    {
        auto bone = std::make_unique<ZModel>(name, ZModelKind::Bone);
        bone->SetBone(true);
        ZModel* const added = Scene().AddModel(std::move(bone));
        if (parent != nullptr)
            added->SetParent(parent);
        added->SetFileTransform(ZgeScaling(scaling) * ZgeTranslation(at));
        return added;
    }
    ZModelPolymesh* AddMesh(const char* name, int vertices)
    {
        auto mesh = std::make_unique<ZModelPolymesh>(name);
        std::vector<float> positions;
        for (int i = 0; i < vertices; ++i)
            positions.insert(positions.end(), {static_cast<float>(i), 0.0F, 0.0F});
        std::vector<int> polygons, sizes;
        for (int i = 0; i + 2 < vertices; i += 2) {
            polygons.insert(polygons.end(), {i, i + 1, i + 2});
            sizes.push_back(3);
        }
        EXPECT_TRUE(mesh->SetGeometry(positions.data(), vertices, polygons, sizes));
        return static_cast<ZModelPolymesh*>(Scene().AddModel(std::move(mesh)));
    }
    /// A mesh with a skin on these bones; an entry for every weight that is not negative.
    ZModelPolymesh* AddSkinned(const char* name, int vertices, const std::vector<ZModel*>& bones,
                               const Weights& weights, int mode = kDeformNormalise)
    {
        ZModelPolymesh* const mesh = AddMesh(name, vertices);
        ZSkin* const skin = mesh->MakeSkin(mode);
        for (size_t link = 0; link < bones.size(); ++link) {
            const ZgeMatrix bind = bones[link] != nullptr ? bones[link]->GetTransformMatrix(true) : ZgeMatrix();
            skin->AppendLink(bones[link], ZgeInverse(bind));
            skin->BeginLink(static_cast<int>(link));
            for (int vertex = 0; vertex < vertices; ++vertex)
                if (const double weight = weights(vertex, static_cast<int>(link)); weight >= 0)
                    skin->AddEntry(vertex, weight);
            skin->EndLink();
        }
        return mesh;
    }
    /// Half and half on two bones of its own.
    ZModelPolymesh* AddCharacter(const std::string& name, int vertices = 4)
    {
        ZModel* const hip = AddBone((name + "Hip").c_str());
        ZModel* const knee = AddBone((name + "Knee").c_str(), hip);
        return AddSkinned(name.c_str(), vertices, {hip, knee}, [](int, int) { return 0.5; });
    }

    // The tool.
    ZToolCharacterWeighting& OpenTool()
    {
        auto* const opened = static_cast<ZToolCharacterWeighting*>(session->OpenTool("Skins"));
        EXPECT_NE(opened, nullptr);
        if (tool == nullptr)
            tool = opened;
        return *opened;
    }
    ZCharacterWeightingNormalLayout& Panel() { return tool->Panel(); }
    ZWeightUIModelDataList& Items() { return tool->ModelDataList(); }

    // The user's hand.
    bool DropOn(ZtView& view, const std::vector<IObject*>& objects)
    {
        GlobalDragAndDrop_Begin();
        for (IObject* const object : objects)
            GlobalDragAndDrop_Add(object, 0);
        const bool accepted = GlobalDragAndDrop_DropOn(&view);
        session->AfterEvent();
        return accepted;
    }
    template <class... M> bool DropModels(M*... models) { return DropOn(tool->ModelListBox(), {models...}); }
    template <class... M> bool DropBones(M*... bones) { return DropOn(Panel().listBonesList, {bones...}); }
    /// A rectangle over the whole viewer with the left button.
    void PickAll(int modifiers = 0)
    {
        ZViewer& viewer = session->GetViewer();
        viewer.Frame({});
        viewer.Press(0, 0, kButtonLeft, modifiers);
        viewer.Move(viewer.GetWidth() / 2, viewer.GetHeight() / 3);
        viewer.Move(viewer.GetWidth() - 1, viewer.GetHeight() - 1);
        viewer.Release(viewer.GetWidth() - 1, viewer.GetHeight() - 1);
        session->AfterEvent();
    }
    void SelectBones(const std::vector<int>& rows) { EXPECT_TRUE(Panel().listBonesList.UserSelect(rows)); }
    void SelectVertices(const std::vector<int>& rows) { EXPECT_TRUE(Panel().listVertexList.UserSelect(rows)); }
    void SlideTo(int row, const std::vector<double>& values)
    {
        ZtSpread& spread = Panel().spreadWeights;
        EXPECT_TRUE(spread.UserSlide(row, kSpreadSlider, kViewPress, values.front()));
        for (size_t i = 1; i + 1 < values.size(); ++i)
            spread.UserSlide(row, kSpreadSlider, kViewValueChanged, values[i]);
        spread.UserSlide(row, kSpreadSlider, kViewRelease, values.back());
    }
    bool Undo() { return session->Undo(); }
    bool Redo() { return session->Redo(); }

    // What is seen.
    static std::vector<std::string> Texts(const ZtListBox& list)
    {
        std::vector<std::string> texts;
        for (int row = 0; row < list.GetRowCount(); ++row)
            texts.push_back(list.GetRowText(row));
        return texts;
    }
    static std::vector<bool> Checks(const ZtListBox& list)
    {
        std::vector<bool> checks;
        for (int row = 0; row < list.GetRowCount(); ++row)
            checks.push_back(list.GetRowCheck(row));
        return checks;
    }
    template <class A> static std::vector<int> Ints(const A& array) { return {array.begin(), array.end()}; }
    double Cell(int row, int column) { return Panel().spreadWeights.GetCell(row, column)->value; }
    static double SkinWeight(ZModel* model, int link, int vertex)
    {
        ZSkin* const skin = model->GetSkin();
        skin->BeginLink(link);
        const int entry = skin->FindEntry(vertex);
        const double weight = entry >= 0 ? skin->EntryWeight(entry) : 0.0;
        skin->EndLink();
        return weight;
    }
    static std::vector<std::string> UndoNames() { return ZUndoStack::TheOne()->GetUndoNames(); }

    std::unique_ptr<ZSession> session;
    ZToolCharacterWeighting* tool = nullptr; ///< the first one that was opened

private:
    static IObject* MakeTool(IObject*, const char*, void*)
    {
        auto* const made = new ZToolCharacterWeighting;
        made->SetAllocated();
        return made;
    }
};

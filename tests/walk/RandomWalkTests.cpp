// SPDX-License-Identifier: MIT
// A random hand on all controls: drops, picks, weights, locks, colours, deletions, undo and redo, in any order. After
// every step the tables must agree. Every run takes another walk; its seed is printed, SKINDESK_WALK_SEED takes it
// again, SKINDESK_WALK_STEPS sets its length.
#include "ToolStage.h"
#include "ToolTables.h"

#include <algorithm>
#include <cstdlib>
#include <random>

namespace {

unsigned long FromEnvironment(const char* name, unsigned long otherwise)
{
    const char* const text = std::getenv(name);
    return text != nullptr ? std::strtoul(text, nullptr, 10) : otherwise;
}

class RandomWalk : public ToolStage
{
protected:
    struct Step
    {
        const char* name;
        int share; ///< how often, against the others
        void (RandomWalk::*act)();
    };

    RandomWalk()
    {
        seed = FromEnvironment("SKINDESK_WALK_SEED", std::random_device()());
        steps = static_cast<int>(FromEnvironment("SKINDESK_WALK_STEPS", 20000));
        hand.seed(static_cast<std::mt19937::result_type>(seed));
        std::printf("seed %lu, %d steps\n", seed, steps);
        ZToolKit_SetMessageAnswerer(
            [this](const ZtMessage& question) { return 1 + Dice(static_cast<int>(question.buttons.size())); });
    }

    // The hand.
    int Dice(int sides) { return sides > 0 ? std::uniform_int_distribution<int>(0, sides - 1)(hand) : 0; }
    bool Chance(int percent) { return Dice(100) < percent; }
    double Percent() { return std::uniform_real_distribution<double>(-10.0, 110.0)(hand); }
    ZModel* AnyModel()
    {
        const auto& models = Scene().GetModels();
        return models.empty() ? nullptr : models[static_cast<size_t>(Dice(static_cast<int>(models.size())))];
    }
    ZModel* AnyOf(bool bone)
    {
        std::vector<ZModel*> found;
        for (ZModel* const model : Scene().GetModels())
            if (model->IsBone() == bone)
                found.push_back(model);
        return found.empty() ? nullptr : found[static_cast<size_t>(Dice(static_cast<int>(found.size())))];
    }
    std::vector<int> AnyRows(const ZtListBox& list)
    {
        std::vector<int> rows;
        const int wanted = Chance(20) ? list.GetRowCount() : Dice(4);
        for (int i = 0; i < wanted && list.GetRowCount() > 0; ++i)
            rows.push_back(Dice(list.GetRowCount()));
        return rows;
    }

    // The scene.
    void Populate()
    {
        while (CountOf(true) < 5) {
            ZModel* const parent = Chance(50) ? AnyOf(true) : nullptr;
            AddBone(("bone" + std::to_string(++named)).c_str(), parent, {0.3 * Dice(9), 0.2 * Dice(9), 0},
                    {1, Chance(15) ? -1.0 : 1.0, 1});
        }
        while (CountOf(false) < 5) {
            const std::string name = "mesh" + std::to_string(++named);
            if (Chance(10)) {
                AddMesh(name.c_str(), 3); // no skin
                continue;
            }
            std::vector<ZModel*> bones;
            for (int i = 1 + Dice(3); i > 0; --i) {
                ZModel* const bone = AnyOf(true);
                const bool twice = std::find(bones.begin(), bones.end(), bone) != bones.end();
                if (twice && Chance(98))
                    continue;
                // Two links on one bone: merging lets one's weights replace the other's, and changes see the first
                // alone.
                leniency.weightsLost = leniency.weightsLost || twice;
                bones.push_back(bone);
            }
            const int mode = Chance(10) ? kDeformAdditive : Chance(30) ? kDeformTotal100 : kDeformNormalise;
            const double share = 1.0 / static_cast<double>(bones.size());
            ZModel* const mesh = Chance(25)
                                     ? AddSurface(name.c_str(), bones, share, mode)
                                     : AddSkinned(
                                           name.c_str(), 3 + Dice(9), bones, [share](int, int) { return share; }, mode);
            mesh->SetFileTransform(ZgeTranslation({0.7 * Dice(5), 1.0 * Dice(5), 0.5 * Dice(3)}));
        }
    }
    ZModel* AddSurface(const char* name, const std::vector<ZModel*>& bones, double share, int mode)
    {
        auto surface = std::make_unique<ZModelNurbs>(name);
        ZNurbsSurface nurbs;
        nurbs.degreeU = nurbs.degreeV = 1;
        nurbs.countU = 3;
        nurbs.countV = 2;
        nurbs.knotsU = {0, 0, 0.5, 1, 1};
        nurbs.knotsV = {0, 0, 1, 1};
        for (int v = 0; v < 2; ++v)
            for (int u = 0; u < 3; ++u)
                nurbs.points.insert(nurbs.points.end(), {1.0 * u, 1.0 * v, 0.0});
        std::string why;
        EXPECT_TRUE(surface->SetSurface(nurbs, 5, 5, &why)) << why;
        ZSkin* const skin = surface->MakeSkin(mode);
        for (ZModel* const bone : bones) {
            const int link = skin->AppendLink(bone, ZgeMatrix());
            skin->BeginLink(link);
            for (int vertex = 0; vertex < 6; ++vertex)
                skin->AddEntry(vertex, share);
            skin->EndLink();
        }
        return Scene().AddModel(std::move(surface));
    }
    int CountOf(bool bone)
    {
        int count = 0;
        for (const ZModel* const model : Scene().GetModels())
            count += model->IsBone() == bone ? 1 : 0;
        return count;
    }

    // Steps.
    void DropSome()
    {
        std::vector<IObject*> dragged;
        for (int i = 1 + Dice(3); i > 0; --i)
            dragged.push_back(Chance(90) ? AnyOf(false) : AnyModel());
        DropOn(tool->ModelListBox(), dragged);
    }
    void Check()
    {
        if (tool->ModelListBox().GetRowCount() > 0)
            tool->ModelListBox().UserSetCheck(Dice(tool->ModelListBox().GetRowCount()), Chance(70));
    }
    void DragModels() { DragFrom(tool->ModelListBox()); }
    void DragBones() { DragFrom(Panel().listBonesList); }
    void DragFrom(ZtView& view)
    {
        Object_SetKeyState(4, Chance(80));
        GlobalDragAndDrop_StartFrom(&view);
        GlobalDragAndDrop_End();
        Object_SetKeyState(4, false);
    }
    void DropBone() { DropOn(Panel().listBonesList, {AnyOf(true), Chance(30) ? AnyOf(true) : nullptr}); }
    void ChooseBones() { Panel().listBonesList.UserSelect(AnyRows(Panel().listBonesList)); }
    void ChooseVertices() { Panel().listVertexList.UserSelect(AnyRows(Panel().listVertexList)); }
    void Pick()
    {
        ZViewer& viewer = session->GetViewer();
        if (Chance(10))
            viewer.Frame({});
        constexpr int kModifiers[] = {0, 0, kModifierShift, kModifierControl, kModifierShift | kModifierControl};
        Object_SetKeyState('X', Chance(15));
        const int x = Dice(viewer.GetWidth()), y = Dice(viewer.GetHeight());
        viewer.Press(x, y, Chance(90) ? kButtonLeft : 1 + Dice(3), kModifiers[Dice(5)]);
        const bool rectangle = Chance(80);
        const int toX = rectangle ? Dice(viewer.GetWidth()) : x, toY = rectangle ? Dice(viewer.GetHeight()) : y;
        viewer.Move((x + toX) / 2, (y + toY) / 2);
        if (Chance(3)) {
            viewer.CancelGesture();
        } else {
            viewer.Move(toX, toY);
            viewer.Release(toX, toY);
        }
        Object_SetKeyState('X', false);
    }
    void PickMost() { PickAll(Chance(50) ? 0 : kModifierShift | kModifierControl); }
    /// Several active vertices of which only the first is changed: redo is another thing than the change was.
    void PrepareChange()
    {
        if (tool->WeightingMode() == kAffectAllSelected || Panel().selection.targetRows.GetCount() <= 1)
            return;
        if (Chance(90))
            Panel().listVertexList.UserSelect({Dice(Panel().selection.vertexRows.GetCount())});
        else
            changedFirstOfSeveral = true;
    }
    void Slide()
    {
        const int rows = Panel().spreadWeights.GetRowCount();
        if (rows == 0)
            return;
        PrepareChange();
        const int row = Dice(rows);
        ZtSpread& spread = Panel().spreadWeights;
        spread.UserSlide(row, kSpreadSlider, kViewPress, Percent());
        for (int i = Dice(4); i > 0; --i)
            spread.UserSlide(row, kSpreadSlider, kViewValueChanged, Percent());
        if (Chance(95)) // else the release is lost
            spread.UserSlide(row, kSpreadSlider, kViewRelease, Percent());
    }
    void TypeWeight()
    {
        PrepareChange();
        if (const int rows = Panel().spreadWeights.GetRowCount(); rows > 0)
            Panel().spreadWeights.UserType(Dice(rows), kSpreadWeight, Percent());
    }
    void Lock()
    {
        if (const int rows = Panel().spreadWeights.GetRowCount(); rows > 0)
            Panel().spreadWeights.UserType(Dice(rows), kSpreadLock, Dice(2));
    }
    void Colour() { Panel().boneColorEdit.UserSetColour(0.01 * Dice(101), 0.01 * Dice(101), 0.01 * Dice(101)); }
    void Modes()
    {
        Panel().listWeightingMode.UserChoose(Dice(2));
        Panel().colorModeList.UserChoose(Dice(3));
    }
    void Toggle()
    {
        ZtCheckBox* const boxes[] = {&Panel().automaticBoneSelectionButton, &Panel().cullFaceButton,
                                     &Panel().toRestPositionButton, &Panel().enableModelSelectionCheckBox};
        boxes[Dice(4)]->UserClick();
        Panel().sphereSizeSlider.UserSetValue(Dice(12));
    }
    void RowsAndColumns()
    {
        if (!picksRowsAndColumns)
            return;
        (Chance(50) ? Panel().selectUButton : Panel().selectVButton).UserClick();
        leniency.rowsOrColumnsPicked = true;
    }
    void Back()
    {
        for (int i = 1 + Dice(4); i > 0; --i)
            Undo();
    }
    void Forth()
    {
        for (int i = 1 + Dice(4); i > 0; --i)
            if (Redo() && changedFirstOfSeveral)
                leniency.firstVertexRedone = true;
    }
    void Key()
    {
        constexpr int kKeys[] = {27, 'W', 'F', 'X'};
        session->PressKey(kKeys[Dice(4)], 0);
    }
    void SelectInScene()
    {
        if (ZModel* const model = AnyModel())
            model->SetSelected(Chance(60));
    }
    void DeleteMesh()
    {
        if (ZModel* const model = AnyOf(false))
            Scene().DeleteModel(model);
        Populate();
    }
    void DeleteBone()
    {
        if (ZModel* const model = AnyOf(true)) {
            leniency.weightsLost = true;
            Scene().DeleteModel(model);
        }
        Populate();
    }
    void ClearAll()
    {
        session->ClearScene();
        leniency.weightsLost = leniency.firstVertexRedone = changedFirstOfSeveral = false;
        Populate();
    }
    void SwitchTool()
    {
        if (tool->IsToolActive())
            tool->ToolDeactivate();
        else
            tool->ToolActivate();
        if (Chance(70))
            tool->ToolActivate();
    }
    void Reopen()
    {
        session->CloseTool(tool);
        tool = nullptr;
        OpenTool();
        leniency.rowsOrColumnsPicked = false;
    }

    void Walk(const std::vector<Step>& kinds)
    {
        int total = 0, active = 0, summed = 0;
        for (const Step& kind : kinds)
            total += kind.share;
        Populate();
        OpenTool();
        for (int step = 0; step < steps; ++step) {
            int dice = Dice(total);
            size_t kind = 0;
            while (dice >= kinds[kind].share)
                dice -= kinds[kind++].share;
            SCOPED_TRACE(std::string("step ") + std::to_string(step) + ": " + kinds[kind].name);
            (this->*kinds[kind].act)();
            session->AfterEvent();
            const std::string complaint = ToolTables_Check(*tool, leniency);
            ASSERT_EQ(complaint, "") << "seed " << seed;
            active += Panel().selection.targetRows.IsEmpty() ? 0 : 1;
            summed += leniency.weightsLost || leniency.firstVertexRedone ? 0 : 1;
        }
        // A walk that never has anything in its hands shows nothing.
        std::printf("%d steps with active vertices, %d with all weights watched\n", active, summed);
        EXPECT_GT(active, steps / 8);
        EXPECT_GT(summed, steps / 8);
    }

    std::mt19937 hand;
    unsigned long seed = 0;
    int steps = 0;
    int named = 0;
    bool picksRowsAndColumns = false;
    bool changedFirstOfSeveral = false; ///< since the scene was last cleared
    ToolTableLeniency leniency;

    static std::vector<Step> AllSteps()
    {
        using W = RandomWalk;
        return {{"drop models", 30, &W::DropSome},
                {"check", 20, &W::Check},
                {"drag models out", 3, &W::DragModels},
                {"drop a bone", 12, &W::DropBone},
                {"drag bones out", 6, &W::DragBones},
                {"select bones", 50, &W::ChooseBones},
                {"select vertices", 40, &W::ChooseVertices},
                {"pick", 40, &W::Pick},
                {"pick most", 40, &W::PickMost},
                {"slide", 60, &W::Slide},
                {"type a weight", 50, &W::TypeWeight},
                {"lock", 20, &W::Lock},
                {"colour", 15, &W::Colour},
                {"modes", 15, &W::Modes},
                {"toggle", 20, &W::Toggle},
                {"rows and columns", 12, &W::RowsAndColumns},
                {"undo", 40, &W::Back},
                {"redo", 30, &W::Forth},
                {"key", 10, &W::Key},
                {"select in the scene", 15, &W::SelectInScene},
                {"delete a mesh", 3, &W::DeleteMesh},
                {"delete a bone", 2, &W::DeleteBone},
                {"clear the scene", 2, &W::ClearAll},
                {"switch the tool", 3, &W::SwitchTool},
                {"reopen", 2, &W::Reopen}};
    }
};

TEST_F(RandomWalk, TablesAgreeAfterEveryStep)
{
    Walk(AllSteps());
    while (Undo() && ToolTables_Check(*tool, leniency).empty()) {
    }
    EXPECT_EQ(ToolTables_Check(*tool, leniency), "");
}

TEST_F(RandomWalk, TablesAgreeWithRowsAndColumnsOfSurfacesPicked)
{
    picksRowsAndColumns = true;
    steps /= 4;
    Walk(AllSteps());
}

} // namespace

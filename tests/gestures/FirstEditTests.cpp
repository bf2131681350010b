// SPDX-License-Identifier: MIT
// The first edit from file to file, as a user makes it: open, drop, pick, type, undo, redo, save, reopen. Everything is
// real: the plug-in is loaded from its file, controls are found by name, the file is written and read again.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZGeometryModels.h"
#include "ztoolkit/ZToolKit.h"
#include "ztoolkit/ZtControls.h"
#include "ztoolkit/ZtListBox.h"
#include "ztoolkit/ZtSpread.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using testing::IsEmpty;

/// Undo records keep weights in single precision, as the tool's own records are.
constexpr double kFloatStep = 6e-8;

std::string Bytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

ZSession::Options WithPlugins()
{
    ZSession::Options options;
    options.pluginFolders = {SKINDESK_PLUGIN_FOLDER};
    return options;
}

/// What the user sees of the tool: every row, check, selection, cell and colour.
struct Picture
{
    std::vector<std::string> models, bones, vertices, labels;
    std::vector<bool> checks;
    std::vector<int> boneRows, vertexRows;
    std::vector<double> cells;
    friend bool operator==(const Picture&, const Picture&) = default;
};

class FirstEdit : public testing::TestWithParam<const char*>
{
protected:
    FirstEdit()
        : folder(fs::temp_directory_path() / ("skindesk-first-edit-" + std::to_string(::getpid()))),
          session(WithPlugins()), documents(session)
    {
        fs::create_directories(folder);
        ZToolKit_ClearMessages();
        session.LoadPlugins();
        source = std::string(SKINDESK_SOURCE_DIR) + "/" + GetParam();
        models = documents.Open(source);
        tool = session.OpenTool("Skins");
        std::vector<ZtView*> views;
        tool->CollectViews(views);
        for (ZtView* const view : views)
            controls[view->GetObjectName()] = view;
    }
    ~FirstEdit() override { fs::remove_all(folder); }

    template <class T> T& Control(const char* name) { return static_cast<T&>(*controls.at(name)); }
    ZtListBox& Vertices() { return Control<ZtListBox>("ListVertexList"); }
    ZtListBox& Bones() { return Control<ZtListBox>("ListBonesList"); }
    ZtSpread& Spread() { return Control<ZtSpread>("SpreadWeights"); }

    void DropSkinnedModels()
    {
        GlobalDragAndDrop_Begin();
        for (ZModel* const model : models)
            if (model->GetSkin() != nullptr)
                GlobalDragAndDrop_Add(model, 0);
        EXPECT_TRUE(GlobalDragAndDrop_DropOn(&Control<ZtListBox>("ModelListUI")));
        session.AfterEvent();
    }
    /// A rectangle over everything that the camera shows.
    void PickAll()
    {
        ZViewer& viewer = session.GetViewer();
        viewer.Frame({});
        viewer.Press(1, 1, 1, 0);
        viewer.Move(400, 300);
        viewer.Move(798, 598);
        viewer.Release(798, 598);
        session.AfterEvent();
    }
    /// The first bone, or the second where the first has all of the current vertex and would keep it.
    void SelectBoneThatCanChange()
    {
        Bones().UserSelect({0});
        if (Spread().GetCell(0, 3)->value == 100)
            Bones().UserSelect({1});
        session.AfterEvent();
    }
    Picture See()
    {
        Picture seen;
        const auto rows = [](const ZtListBox& list) {
            std::vector<std::string> texts;
            for (int row = 0; row < list.GetRowCount(); ++row)
                texts.push_back(list.GetRowText(row));
            return texts;
        };
        const ZtListBox& list = Control<ZtListBox>("ModelListUI");
        seen.models = rows(list);
        for (int row = 0; row < list.GetRowCount(); ++row)
            seen.checks.push_back(list.GetRowCheck(row));
        seen.bones = rows(Bones());
        seen.vertices = rows(Vertices());
        seen.boneRows = Bones().GetSelectedRows();
        seen.vertexRows = Vertices().GetSelectedRows();
        for (int row = 0; row < Spread().GetRowCount(); ++row) {
            seen.labels.push_back(Spread().GetRowLabel(row));
            for (int column = 0; column < 4; ++column) {
                const ZtSpreadCell& cell = *Spread().GetCell(row, column);
                seen.cells.insert(seen.cells.end(),
                                  {cell.value, static_cast<double>(cell.colour[0]), static_cast<double>(cell.colour[1]),
                                   static_cast<double>(cell.colour[2])});
            }
        }
        return seen;
    }
    /// Weights of one model, zero entries left out: (vertex, bone) -> weight.
    static std::map<std::pair<int, std::string>, double> Weights(const ZModel& model)
    {
        std::map<std::pair<int, std::string>, double> weights;
        std::vector<int> offsets, links;
        std::vector<double> values;
        model.GetSkin()->BuildCsr(offsets, links, values);
        for (size_t vertex = 0; vertex + 1 < offsets.size(); ++vertex)
            for (int at = offsets[vertex]; at < offsets[vertex + 1]; ++at)
                if (values[static_cast<size_t>(at)] != 0.0) {
                    const ZModel* const bone = model.GetSkin()->LinkModel(links[static_cast<size_t>(at)]);
                    weights[{static_cast<int>(vertex), bone->GetPath()}] += values[static_cast<size_t>(at)];
                }
        return weights;
    }
    std::vector<std::map<std::pair<int, std::string>, double>> AllWeights() const
    {
        std::vector<std::map<std::pair<int, std::string>, double>> all;
        for (const ZModel* const model : models)
            if (model->GetSkin() != nullptr)
                all.push_back(Weights(*model));
        return all;
    }
    static void ExpectNear(const std::vector<std::map<std::pair<int, std::string>, double>>& a,
                           const std::vector<std::map<std::pair<int, std::string>, double>>& b, double tolerance)
    {
        ASSERT_EQ(a.size(), b.size());
        for (size_t model = 0; model < a.size(); ++model) {
            for (const auto& [key, weight] : a[model]) {
                const auto other = b[model].find(key);
                const double found = other == b[model].end() ? 0.0 : other->second;
                ASSERT_NEAR(weight, found, tolerance) << "vertex " << key.first << ", " << key.second;
            }
            for (const auto& [key, weight] : b[model])
                if (a[model].count(key) == 0) {
                    ASSERT_NEAR(weight, 0.0, tolerance) << "vertex " << key.first << ", " << key.second;
                }
        }
    }

    fs::path folder;
    ZSession session;
    ZDocuments documents;
    std::string source;
    std::vector<ZModel*> models;
    ZTool* tool = nullptr;
    std::map<std::string, ZtView*> controls;
};

TEST_P(FirstEdit, UntouchedSaveIsTheSameBytes)
{
    const std::string saved = (folder / fs::path(source).filename()).string();
    documents.Save(saved);
    EXPECT_EQ(Bytes(saved), Bytes(source));
}

TEST_P(FirstEdit, WeightsOfTheSavedFileAreThoseOfTheDesk)
{
    DropSkinnedModels();
    EXPECT_THAT(ZToolKit_GetMessages(), IsEmpty());
    PickAll();
    ASSERT_GT(Vertices().GetRowCount(), 0);
    ASSERT_NE(Vertices().GetRowText(0), "Empty");
    SelectBoneThatCanChange();
    Control<ZtComboBox>("ListWeightingMode").UserChoose(1);
    ASSERT_EQ(Spread().GetRowCount(), 1);

    const auto before = AllWeights();
    const Picture seenBefore = See();
    EXPECT_TRUE(Spread().UserType(0, 3, 40));
    session.AfterEvent();
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().front(), "Apply Weight Change");
    const auto after = AllWeights();
    const Picture seenAfter = See();
    EXPECT_NE(seenBefore, seenAfter);

    EXPECT_TRUE(session.Undo());
    ExpectNear(AllWeights(), before, kFloatStep);
    EXPECT_EQ(See(), seenBefore);
    EXPECT_TRUE(session.Redo());
    ExpectNear(AllWeights(), after, kFloatStep);
    EXPECT_EQ(See(), seenAfter);

    const std::string saved = (folder / fs::path(source).filename()).string();
    const auto report = documents.Save(saved);
    EXPECT_GT(report.verticesChanged, 0U);
    session.CloseTool(tool);
    documents.Clear();
    models = documents.Open(saved);
    ExpectNear(AllWeights(), after, 1e-6);
    const double bound = 1e-6;
    for (const ZModel* const model : models) {
        if (model->GetSkin() == nullptr)
            continue;
        std::map<int, double> sums;
        for (const auto& [key, weight] : Weights(*model))
            sums[key.first] += weight;
        for (const auto& [vertex, sum] : sums)
            ASSERT_NEAR(sum, 1.0, bound) << model->GetObjectName() << " vertex " << vertex;
    }
}

TEST_P(FirstEdit, EveryStepIsTakenBackAndMadeAgain)
{
    std::vector<Picture> seen;
    std::vector<std::vector<std::map<std::pair<int, std::string>, double>>> weights;
    const auto look = [&] {
        seen.push_back(See());
        weights.push_back(AllWeights());
    };
    DropSkinnedModels();
    look();
    PickAll();
    Bones().UserSelect({0});
    session.Undo(); // a bone selection is no step: this takes the pick back
    session.Redo();
    SelectBoneThatCanChange();
    look();
    Spread().UserType(0, 3, 25);
    look();
    EXPECT_NE(See().cells, seen[1].cells);
    session.Undo();
    EXPECT_EQ(See(), seen[1]);
    ExpectNear(AllWeights(), weights[1], kFloatStep);
    session.Undo();
    EXPECT_EQ(See().vertices, seen[0].vertices);
    EXPECT_EQ(See().checks, seen[0].checks);
    session.Redo();
    EXPECT_EQ(See(), seen[1]);
    session.Redo();
    // With several active vertices redo gives the first one's spread to all of them; the current vertex is the first.
    EXPECT_EQ(See().cells, seen[2].cells);
}

INSTANTIATE_TEST_SUITE_P(Characters, FirstEdit,
                         testing::Values("samples/figure.glb", "tests/data/skinned/Fox.glb",
                                         "tests/data/skinned/CesiumMan.glb", "tests/data/skinned/RiggedSimple.gltf",
                                         "tests/data/skinned/KayKit_Knight.glb", "tests/data/skinned/greenman.glb",
                                         "tests/data/skinned/AG_SkinType_01_u8n/Animation_SkinType_01.gltf",
                                         "tests/data/skinned/AG_SkinType_02_u16n/Animation_SkinType_02.gltf"),
                         [](const testing::TestParamInfo<const char*>& character) {
                             std::string name = fs::path(character.param).stem().string();
                             std::replace_if(
                                 name.begin(), name.end(), [](char c) { return c == '-' || c == '.'; }, '_');
                             return name;
                         });

} // namespace

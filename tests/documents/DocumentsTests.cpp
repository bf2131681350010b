// SPDX-License-Identifier: MIT
// Files into the scene and back, through the same door as the desk and the Python module.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "gltf/FileError.h"
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZGeometryModels.h"
#include "ztoolkit/ZToolKit.h"

#include <gmock/gmock.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace fs = std::filesystem;
using skindesk::gltf::FileError;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const std::string kFigure = std::string(SKINDESK_SOURCE_DIR) + "/samples/figure.glb";
std::string Skinned(const std::string& name)
{
    return std::string(SKINDESK_SOURCE_DIR) + "/tests/data/skinned/" + name;
}

std::string Bytes(const std::string& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

class DocumentsTest : public testing::Test
{
protected:
    DocumentsTest()
        : folder(fs::temp_directory_path() / ("skindesk-documents-" + std::to_string(::getpid()) + "-" +
                                              testing::UnitTest::GetInstance()->current_test_info()->name())),
          session({}), documents(session)
    {
        fs::create_directories(folder);
        ZReport_ClearWarnings();
        ZToolKit_ClearMessages();
    }
    ~DocumentsTest() override
    {
        ZToolKit_SetMessageAnswerer({});
        fs::remove_all(folder);
    }
    std::string Out(const std::string& name) const { return (folder / name).string(); }
    ZModel* Find(const std::string& name)
    {
        for (ZModel* const model : session.GetScene().GetModels())
            if (model->GetObjectName() == name)
                return model;
        return nullptr;
    }
    /// Sets one weight of a vertex, as a tool would.
    static void SetWeight(ZModel& model, int link, int vertex, double weight)
    {
        ZSkin& skin = *model.GetSkin();
        skin.BeginLink(link);
        const int entry = skin.FindEntry(vertex);
        if (entry >= 0)
            skin.SetEntryWeight(weight, entry);
        else
            skin.AddEntry(vertex, weight);
        skin.EndLink();
    }
    static double Weight(ZModel& model, int link, int vertex)
    {
        ZSkin& skin = *model.GetSkin();
        skin.BeginLink(link);
        const int entry = skin.FindEntry(vertex);
        const double weight = entry >= 0 ? skin.EntryWeight(entry) : 0.0;
        skin.EndLink();
        return weight;
    }

    fs::path folder;
    ZSession session;
    ZDocuments documents;
};

TEST_F(DocumentsTest, OpenAddsEveryNodeAndAnswersTheGeometry)
{
    const std::vector<ZModel*> models = documents.Open(kFigure);
    ASSERT_THAT(models, SizeIs(1));
    EXPECT_EQ(models[0]->GetObjectName(), "Figure");
    EXPECT_EQ(models[0]->Geometry().VertexCount(), 4164);
    EXPECT_EQ(models[0]->GetSkin()->LinkCount(), 21);
    ASSERT_NE(Find("Forearm.L"), nullptr);
    EXPECT_TRUE(Find("Forearm.L")->IsBone());
    EXPECT_EQ(static_cast<ZModel*>(Find("Forearm.L")->GetParent())->GetObjectName(), "UpperArm.L");
    EXPECT_THAT(session.GetScene().GetAnimations(), SizeIs(1));
    EXPECT_EQ(session.GetScene().GetAnimations()[0]->name, "Walk");
    EXPECT_FALSE(documents.HasUnsavedChanges());
}

TEST_F(DocumentsTest, UntouchedSaveIsTheSameBytes)
{
    documents.Open(kFigure);
    documents.Save(Out("figure.glb"));
    EXPECT_EQ(Bytes(Out("figure.glb")), Bytes(kFigure));
}

TEST_F(DocumentsTest, RestPoseDeformsNothing)
{
    ZModel* const model = documents.Open(kFigure)[0];
    const float* const bound = model->Geometry().VertexPositions(0);
    const std::vector<float> base(bound, bound + 4 * model->Geometry().VertexCount());
    const float* const deformed = model->Geometry().VertexPositions(1);
    for (size_t i = 0; i < base.size(); ++i)
        ASSERT_NEAR(base[i], deformed[i], 2e-5F) << i;
}

TEST_F(DocumentsTest, EditedWeightComesBackFromTheSavedFile)
{
    ZModel* const model = documents.Open(kFigure)[0];
    int from = 0;
    while (model->GetSkin()->GetEntryVertices(from).IsEmpty())
        ++from;
    const int vertex = model->GetSkin()->GetEntryVertices(from)[0];
    const int to = from == 0 ? 1 : 0;
    for (int link = 0; link < model->GetSkin()->LinkCount(); ++link)
        SetWeight(*model, link, vertex, 0.0);
    SetWeight(*model, from, vertex, 0.25);
    SetWeight(*model, to, vertex, 0.75);
    EXPECT_TRUE(documents.HasUnsavedChanges());
    const auto report = documents.Save(Out("edited.glb"));
    EXPECT_EQ(report.verticesChanged, 1U);
    EXPECT_FALSE(documents.HasUnsavedChanges());

    documents.Clear();
    EXPECT_THAT(session.GetScene().GetModels(), IsEmpty());
    ZModel* const again = documents.Open(Out("edited.glb"))[0];
    EXPECT_NEAR(Weight(*again, from, vertex), 0.25, 1e-7);
    EXPECT_NEAR(Weight(*again, to, vertex), 0.75, 1e-7);
}

TEST_F(DocumentsTest, AddedLinkBecomesAJointWithItsBindMatrix)
{
    ZModel* const model = documents.Open(Skinned("RiggedSimple.gltf"))[0];
    ZModel* bone = nullptr;
    for (ZModel* const candidate : session.GetScene().GetModels())
        if (!candidate->IsBone() && candidate != model)
            bone = candidate;
    ASSERT_NE(bone, nullptr);
    const int before = model->GetSkin()->LinkCount();
    const int link = model->GetSkin()->AddLink(bone);
    const ZgeMatrix bind = model->GetSkin()->GetInverseBind(link);
    SetWeight(*model, link, 7, 0.5);
    documents.Save(Out("added.gltf"));

    documents.Clear();
    ZModel* const again = documents.Open(Out("added.gltf"))[0];
    ASSERT_EQ(again->GetSkin()->LinkCount(), before + 1);
    EXPECT_NEAR(Weight(*again, before, 7), 0.5, 1e-7);
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            EXPECT_NEAR(again->GetSkin()->GetInverseBind(before)(row, column), bind(row, column), 1e-5);
}

TEST_F(DocumentsTest, DeletedBoneStaysInTheFileAndItsVerticesAreRenormalised)
{
    documents.Open(kFigure);
    const size_t nodes = session.GetScene().GetModels().size();
    session.GetScene().DeleteModel(Find("Toes.L"));
    const auto report = documents.Save(Out("less.glb"));
    EXPECT_GT(report.verticesChanged, 0U);
    documents.Clear();
    ZModel* const again = documents.Open(Out("less.glb"))[0];
    EXPECT_EQ(session.GetScene().GetModels().size(), nodes);
    EXPECT_NE(Find("Toes.L"), nullptr);
    std::vector<int> offsets, links;
    std::vector<double> weights;
    again->GetSkin()->BuildCsr(offsets, links, weights);
    for (size_t vertex = 0; vertex + 1 < offsets.size(); ++vertex) {
        double sum = 0;
        for (int at = offsets[vertex]; at < offsets[vertex + 1]; ++at)
            sum += weights[static_cast<size_t>(at)];
        if (offsets[vertex] != offsets[vertex + 1]) {
            ASSERT_NEAR(sum, 1.0, 1e-6) << vertex;
        }
    }
}

TEST_F(DocumentsTest, TwoFilesAreSavedByThemselves)
{
    documents.Open(kFigure);
    ZModel* const simple = documents.Open(Skinned("RiggedSimple.gltf"))[0];
    EXPECT_THROW(documents.Save(Out("which.glb")), FileError);
    SetWeight(*simple, 0, 3, 0.125);
    ZSaveOptions figure;
    figure.source = kFigure;
    documents.Save(Out("figure.glb"), figure);
    EXPECT_EQ(Bytes(Out("figure.glb")), Bytes(kFigure));
    EXPECT_EQ(documents.GetDocuments().size(), 2U);
    EXPECT_FALSE(documents.GetDocuments()[0].unsavedChanges);
    EXPECT_TRUE(documents.GetDocuments()[1].unsavedChanges);
}

TEST_F(DocumentsTest, RefusedFileLeavesNothingBehind)
{
    std::ofstream(Out("text.glb")) << "this is no model";
    try {
        documents.Open(Out("text.glb"));
        FAIL() << "a text file was opened";
    } catch (const FileError& error) {
        EXPECT_EQ(error.path(), Out("text.glb"));
        EXPECT_THAT(error.what(), HasSubstr("text.glb"));
    }
    EXPECT_THAT(session.GetScene().GetModels(), IsEmpty());
    EXPECT_THAT(documents.GetDocuments(), IsEmpty());
}

TEST_F(DocumentsTest, FileChangedByOthersIsNotOverwrittenUnasked)
{
    fs::copy_file(kFigure, Out("mine.glb"));
    ZModel* const model = documents.Open(Out("mine.glb"))[0];
    const int id = documents.GetDocuments()[0].id;
    EXPECT_FALSE(documents.ChangedByOthers(id));
    std::ofstream(Out("mine.glb"), std::ios::app) << "more";
    EXPECT_TRUE(documents.ChangedByOthers(id));
    SetWeight(*model, 0, 0, 0.5);
    const std::string theirs = Bytes(Out("mine.glb"));
    EXPECT_THROW(documents.Save(Out("mine.glb")), FileError);
    EXPECT_EQ(Bytes(Out("mine.glb")), theirs);
    EXPECT_TRUE(documents.HasUnsavedChanges());
    ASSERT_THAT(ZToolKit_GetMessages(), SizeIs(1));
    EXPECT_THAT(ZToolKit_GetMessages()[0].buttons, ElementsAre("Overwrite", "Cancel"));
    ZToolKit_SetMessageAnswerer([](const ZtMessage&) { return 1; });
    documents.Save(Out("mine.glb"));
    EXPECT_NE(Bytes(Out("mine.glb")), theirs);
    EXPECT_FALSE(documents.ChangedByOthers(id));
}

TEST_F(DocumentsTest, SavingInTheMiddleOfAGestureIsRefused)
{
    documents.Open(kFigure);
    ZUndoStack::TheOne()->TransactionBegin("gesture", false);
    EXPECT_THROW(documents.Save(Out("open.glb")), FileError);
    ZUndoStack::TheOne()->TransactionEnd(false, false);
    EXPECT_FALSE(fs::exists(Out("open.glb")));
}

TEST_F(DocumentsTest, FileVerticesMapEverySeamCopyToItsDeskVertex)
{
    ZModel* const model = documents.Open(kFigure)[0];
    size_t total = 0;
    for (const auto& [primitive, map] : documents.GetFileVertices(*model)) {
        total += map.size();
        for (const std::int32_t vertex : map)
            ASSERT_LT(vertex, 4164);
    }
    EXPECT_EQ(total, 4696U);
    EXPECT_THAT(documents.GetFileVertices(*Find("Head")), IsEmpty());
}

TEST_F(DocumentsTest, LimitReportSaysWhatWouldBeDroppedAndWritesNothing)
{
    documents.Open(kFigure);
    const std::vector<ZLimitLine> lines = documents.LimitReport(1);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ(lines[0].model->GetObjectName(), "Figure");
    EXPECT_GT(lines[0].vertices, 0);
    EXPECT_THAT(documents.LimitReport(4), IsEmpty());
}

TEST_F(DocumentsTest, NodesWithoutNamesAreNumbered)
{
    documents.Open(Skinned("AG_Skin_03_noIBM/Animation_Skin_03.gltf"));
    for (ZModel* const model : session.GetScene().GetModels())
        EXPECT_FALSE(model->GetObjectName().empty());
}

} // namespace

// SPDX-License-Identifier: MIT
// Weight tables: CSV and JSON, out of the scene and back as one undo step.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "documents/ZWeightTable.h"
#include "gltf/FileError.h"
#include "object/ZUndoStack.h"
#include "zmodel/ZGeometryModels.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace fs = std::filesystem;
using skindesk::gltf::FileError;

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

ZWeightTable OneOfEach()
{
    return {{"Body", {{0, "Hip", 0.25}, {0, "a \"bone\", odd", 0.75}, {3, "", 0}}},
            {"Root/Hat", {{7, "Kopf\n2", 1e-9}}}};
}

void ExpectEqual(const ZWeightTable& a, const ZWeightTable& b)
{
    ASSERT_EQ(a.size(), b.size());
    for (const auto& [model, rows] : a) {
        ASSERT_TRUE(b.count(model)) << model;
        const std::vector<ZWeightRow>& others = b.at(model);
        ASSERT_EQ(rows.size(), others.size());
        for (size_t i = 0; i < rows.size(); ++i) {
            EXPECT_EQ(rows[i].vertex, others[i].vertex);
            EXPECT_EQ(rows[i].bone, others[i].bone);
            EXPECT_EQ(rows[i].weight, others[i].weight);
        }
    }
}

std::string Complaint(const std::string& csv)
{
    try {
        ZWeightTable_FromCsv(csv, "t.csv");
    } catch (const FileError& error) {
        return error.what();
    }
    return "accepted";
}

TEST(WeightTable, CsvSurvivesQuotesCommasAndLineBreaks)
{
    ExpectEqual(ZWeightTable_FromCsv(ZWeightTable_ToCsv(OneOfEach()), "t.csv"), OneOfEach());
}

TEST(WeightTable, JsonSurvivesToo)
{
    ExpectEqual(ZWeightTable_FromJson(ZWeightTable_ToJson(OneOfEach()), "t.json"), OneOfEach());
}

TEST(WeightTable, CsvOfASpreadsheetIsRead)
{
    const ZWeightTable table =
        ZWeightTable_FromCsv("\xEF\xBB\xBFmodel,vertex,bone,weight\r\nBody,1,Hip,0.5\r\n\r\n", "t.csv");
    ASSERT_THAT(table.at("Body"), SizeIs(1));
    EXPECT_EQ(table.at("Body")[0].weight, 0.5);
}

TEST(WeightTable, BadLinesAreNamed)
{
    const std::string header = "model,vertex,bone,weight\n";
    EXPECT_THAT(Complaint(""), HasSubstr("is empty"));
    EXPECT_THAT(Complaint("a,b\n"), HasSubstr("line 1"));
    EXPECT_THAT(Complaint(header + "Body,1,Hip\n"), HasSubstr("line 2: has 3 fields"));
    EXPECT_THAT(Complaint(header + "Body,x,Hip,1\n"), HasSubstr("\"x\" is not a vertex number"));
    EXPECT_THAT(Complaint(header + "Body,1,Hip,nan\n"), HasSubstr("line 2"));
    EXPECT_THAT(Complaint(header + "Body,-1,Hip,1\n"), HasSubstr("negative"));
    EXPECT_THAT(Complaint(header + "Body,1,Hip,0,5\n"), HasSubstr("has 5 fields"));
    EXPECT_THAT(Complaint(header + "\"Body,1,Hip,1\n"), HasSubstr("has no end"));
}

TEST(WeightTable, BadJsonIsNamedByPlace)
{
    const auto complaint = [](const char* text) -> std::string {
        try {
            ZWeightTable_FromJson(text, "t.json");
        } catch (const FileError& error) {
            return error.where() + "|" + error.what();
        }
        return "accepted";
    };
    EXPECT_THAT(complaint("{"), HasSubstr("is no JSON"));
    EXPECT_THAT(complaint("{}"), HasSubstr("/skindesk-weights"));
    EXPECT_THAT(complaint(R"({"skindesk-weights":1,"models":{"B":[[0,"x",1],[1,"x"]]}})"), HasSubstr("/models/B/1|"));
    EXPECT_THAT(complaint(R"({"skindesk-weights":1,"models":{"B":[[0,"x",-1]]}})"), HasSubstr("at least 0"));
}

class WeightTableScene : public testing::Test
{
protected:
    WeightTableScene()
        : folder(fs::temp_directory_path() / ("skindesk-tables-" + std::to_string(::getpid()))), session({}),
          documents(session)
    {
        fs::create_directories(folder);
        model = documents.Open(std::string(SKINDESK_SOURCE_DIR) + "/samples/figure.glb")[0];
    }
    ~WeightTableScene() override { fs::remove_all(folder); }
    std::vector<double> Weights() const
    {
        std::vector<int> offsets, links;
        std::vector<double> weights;
        model->GetSkin()->BuildCsr(offsets, links, weights);
        std::vector<double> dense(static_cast<size_t>(model->GetSkin()->GetVertexCount() * 21), 0.0);
        for (size_t v = 0; v + 1 < offsets.size(); ++v)
            for (int at = offsets[v]; at < offsets[v + 1]; ++at)
                dense[v * 21 + static_cast<size_t>(links[static_cast<size_t>(at)])] = weights[static_cast<size_t>(at)];
        return dense;
    }
    std::string Write(const std::string& name, const std::string& text)
    {
        std::ofstream(folder / name) << text;
        return (folder / name).string();
    }

    fs::path folder;
    ZSession session;
    ZDocuments documents;
    ZModel* model = nullptr;
};

TEST_F(WeightTableScene, ExportAndImportChangeNoWeight)
{
    const std::vector<double> before = Weights();
    for (const char* const name : {"w.csv", "w.json"}) {
        documents.ExportWeights((folder / name).string());
        const ZImportReport report = documents.ImportWeights((folder / name).string());
        EXPECT_THAT(report.unmatched, IsEmpty());
        EXPECT_EQ(Weights(), before) << name;
    }
}

TEST_F(WeightTableScene, ImportIsOneUndoStep)
{
    const std::vector<double> before = Weights();
    const ZImportReport report = documents.ImportWeights(
        Write("t.csv", "model,vertex,bone,weight\nFigure,5,Head,0.5\nFigure,5,Neck,0.5\nFigure,9,Head,1\n"));
    EXPECT_EQ(report.verticesChanged, 2);
    const std::vector<double> after = Weights();
    EXPECT_NE(after, before);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().front(), "Import Weights");
    ZUndoStack::TheOne()->Undo();
    EXPECT_EQ(Weights(), before);
    ZUndoStack::TheOne()->Redo();
    EXPECT_EQ(Weights(), after);
}

TEST_F(WeightTableScene, WhatDoesNotMatchIsReported)
{
    const ZImportReport report = documents.ImportWeights(
        Write("t.csv", "model,vertex,bone,weight\nFigure,5,Tail,1\nFigure,999999,Head,1\nGhost,0,Head,1\n"));
    ASSERT_THAT(report.unmatched, SizeIs(3));
    EXPECT_THAT(report.unmatched[0], HasSubstr("\"Tail\""));
    EXPECT_THAT(report.unmatched[1], HasSubstr("4164"));
    EXPECT_THAT(report.unmatched[2], HasSubstr("\"Ghost\""));
}

TEST_F(WeightTableScene, RefusedWhileAToolHoldsTheModel)
{
    model->Geometry().BeginEdit();
    EXPECT_THROW(documents.ImportWeights(Write("t.csv", "model,vertex,bone,weight\nFigure,5,Head,1\n")), FileError);
    model->Geometry().EndEdit();
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoCount(), 0);
}

TEST_F(WeightTableScene, OtherExtensionsAreRefused)
{
    EXPECT_THROW(documents.ExportWeights((folder / "w.txt").string()), FileError);
    EXPECT_FALSE(fs::exists(folder / "w.txt"));
}

} // namespace

// SPDX-License-Identifier: MIT
// When a document has unsaved changes: what would be written is asked, not how often something was changed.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "gltf/FileError.h"
#include "object/ZUndoStack.h"
#include "zmodel/ZModel.h"
#include "zmodel/ZSkin.h"

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

#include <filesystem>
#include <iterator>
#include <unistd.h>
#include <vector>

namespace fs = std::filesystem;

namespace {

const std::string kFigure = std::string(SKINDESK_SOURCE_DIR) + "/samples/figure.glb";

double WeightOf(ZSkin& skin, int link, int vertex)
{
    skin.BeginLink(link);
    const int entry = skin.FindEntry(vertex);
    const double weight = entry >= 0 ? skin.EntryWeight(entry) : 0;
    skin.EndLink();
    return weight;
}

void SetWeight(ZSkin& skin, int link, int vertex, double weight)
{
    skin.BeginLink(link);
    const int entry = skin.FindEntry(vertex);
    if (entry >= 0)
        skin.SetEntryWeight(weight, entry);
    else
        skin.AddEntry(vertex, weight);
    skin.EndLink();
}

/// One weight, as a tool's record keeps it.
class WeightUndo : public IUndo
{
public:
    WeightUndo(ZSkin& skin, int link, int vertex, double weight)
        : m_skin(skin), m_link(link), m_vertex(vertex), m_other(weight)
    {
        Swap();
    }
    void* IQuery(int interfaceId, int) override { return interfaceId == kInterfaceUndo ? this : nullptr; }
    void Destroy() override { delete this; }
    bool IsEmpty() override { return false; }
    void TransactionClosed() override {}
    void Undo() override { Swap(); }
    void Redo() override { Swap(); }
    const char* GetName() override { return "WeightUndo"; }

private:
    void Swap()
    {
        const double now = WeightOf(m_skin, m_link, m_vertex);
        SetWeight(m_skin, m_link, m_vertex, m_other);
        m_other = now;
    }
    ZSkin& m_skin;
    int m_link, m_vertex;
    double m_other;
};

struct Stage
{
    Stage()
    {
        documents.Open(kFigure);
        for (ZModel* const model : session.GetScene().GetModels())
            if (model->GetSkin() != nullptr)
                skin = model->GetSkin();
        folder = fs::temp_directory_path() / ("skindesk-unsaved-" + std::to_string(::getpid()));
        fs::create_directories(folder);
    }
    ~Stage() { fs::remove_all(folder); }
    void Edit(int link, int vertex, double weight)
    {
        ZUndoStack* const stack = ZUndoStack::TheOne();
        stack->TransactionBegin("Edit", false);
        stack->TransactionAdd(new WeightUndo(*skin, link, vertex, weight));
        stack->TransactionEnd(false, false);
    }
    std::string Out(const char* name) const { return (folder / name).string(); }

    ZSession session{{}};
    ZDocuments documents{session};
    ZSkin* skin = nullptr;
    fs::path folder;
};

TEST(UnsavedChanges, UndoBackToTheOpenedWeightsLeavesNone)
{
    Stage stage;
    stage.Edit(0, 5, 0.25);
    EXPECT_TRUE(stage.documents.HasUnsavedChanges());
    stage.session.Undo();
    EXPECT_FALSE(stage.documents.HasUnsavedChanges());
    stage.session.Redo();
    EXPECT_TRUE(stage.documents.HasUnsavedChanges());
}

TEST(UnsavedChanges, UndoBehindTheSavedStateMakesThemAndRedoTakesThemAway)
{
    Stage stage;
    stage.Edit(0, 5, 0.25);
    stage.documents.Save(stage.Out("saved.glb"));
    EXPECT_FALSE(stage.documents.HasUnsavedChanges());
    stage.session.Undo();
    EXPECT_TRUE(stage.documents.HasUnsavedChanges());
    stage.session.Redo();
    EXPECT_FALSE(stage.documents.HasUnsavedChanges());
}

TEST(UnsavedChanges, EntryThatIsLeftWithWeightZeroIsNone)
{
    Stage stage;
    int link = 0;
    while (WeightOf(*stage.skin, link, 5) != 0)
        ++link;
    stage.Edit(link, 5, 0.5);
    stage.session.Undo();
    EXPECT_EQ(WeightOf(*stage.skin, link, 5), 0);
    EXPECT_FALSE(stage.documents.HasUnsavedChanges());
}

TEST(UnsavedChanges, RoundingWithinTheFilesToleranceIsNone)
{
    Stage stage;
    stage.Edit(0, 5, WeightOf(*stage.skin, 0, 5) + 2e-7);
    EXPECT_FALSE(stage.documents.HasUnsavedChanges());
    stage.Edit(0, 5, WeightOf(*stage.skin, 0, 5) + 2e-5);
    EXPECT_TRUE(stage.documents.HasUnsavedChanges());
}

TEST(UnsavedChanges, LostEntryIsOne)
{
    Stage stage;
    int link = 0;
    while (stage.skin->GetEntryVertices(link).GetCount() == 0)
        ++link;
    stage.skin->BeginLink(link);
    stage.skin->ClearEntries();
    stage.skin->EndLink();
    EXPECT_TRUE(stage.documents.HasUnsavedChanges());
}

TEST(UnsavedChanges, NewDocumentHasThemUntilItIsSavedElsewhere)
{
    ZSession session({});
    ZDocuments documents(session);
    ZReadDocument read = ZDocuments::Read(kFigure);
    read.isNew = true;
    documents.Adopt(std::move(read));
    EXPECT_TRUE(documents.HasUnsavedChanges());
    EXPECT_TRUE(documents.GetDocuments().front().isNew);
    EXPECT_THROW(documents.Save(kFigure), skindesk::gltf::FileError);

    const fs::path target = fs::temp_directory_path() / ("skindesk-new-" + std::to_string(::getpid()) + ".glb");
    ZSaveOptions copy;
    copy.asCopy = true;
    documents.Save(target.string(), copy);
    EXPECT_TRUE(documents.HasUnsavedChanges()) << "a copy saves nothing";
    documents.Save(target.string());
    EXPECT_FALSE(documents.HasUnsavedChanges());
    fs::remove(target);
}

/// All weights, for comparing.
std::vector<std::vector<double>> AllWeights(const ZSkin& skin, int links)
{
    std::vector<std::vector<double>> weights;
    for (int link = 0; link < links; ++link) {
        auto& row = weights.emplace_back(static_cast<size_t>(skin.GetVertexCount()), 0.0);
        for (int entry = 0; entry < skin.GetEntryVertices(link).GetCount(); ++entry)
            row[static_cast<size_t>(skin.GetEntryVertices(link)[entry])] = skin.GetEntryWeights(link)[entry];
    }
    return weights;
}

// Whatever the order of edits, undo, redo and saving, the answer is whether the weights are the saved ones.
RC_GTEST_PROP(UnsavedChanges, AreThereExactlyWhenTheWeightsAreNotTheSavedOnes, ())
{
    constexpr int kEditedLinks = 3;
    Stage stage;
    auto saved = AllWeights(*stage.skin, kEditedLinks);
    const auto gestures = *rc::gen::container<std::vector<int>>(8, rc::gen::inRange(0, 6));
    for (const int gesture : gestures) {
        if (gesture == 0)
            stage.Edit(0, 5, 0.25);
        else if (gesture == 1)
            stage.Edit(1, 6, 0.5);
        else if (gesture == 2)
            stage.session.Undo();
        else if (gesture == 3)
            stage.session.Redo();
        else if (gesture == 4)
            stage.session.Undo(), stage.session.Undo();
        if (gesture == 5) {
            stage.documents.Save(stage.Out("last.glb"));
            saved = AllWeights(*stage.skin, kEditedLinks);
        }
        const bool says = stage.documents.HasUnsavedChanges();
        const bool differs = AllWeights(*stage.skin, kEditedLinks) != saved;
        // A weight that an edit brought back by itself may be called a change; a change may never be called none.
        if (differs)
            RC_ASSERT(says);
        if (gesture >= 2 && !differs)
            RC_ASSERT(!says);
    }
}

TEST(UnsavedChanges, StoppedSavingLeavesTheOldFileAndTheChanges)
{
    Stage stage;
    stage.documents.Save(stage.Out("saved.glb"));
    const auto size = fs::file_size(stage.Out("saved.glb"));
    const auto time = fs::last_write_time(stage.Out("saved.glb"));
    stage.Edit(0, 5, 0.25);
    ZSaveWork work = stage.documents.PrepareSave(stage.Out("saved.glb"), {});
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(ZDocuments::WriteSave(work, stop.get_token()), skindesk::gltf::FileError);
    EXPECT_EQ(fs::file_size(stage.Out("saved.glb")), size);
    EXPECT_EQ(fs::last_write_time(stage.Out("saved.glb")), time);
    EXPECT_TRUE(stage.documents.HasUnsavedChanges());
    EXPECT_EQ(std::distance(fs::directory_iterator(stage.folder), fs::directory_iterator()), 1);
}

TEST(UnsavedChanges, EditDuringASavingStaysOne)
{
    Stage stage;
    stage.Edit(0, 5, 0.25);
    ZSaveWork work = stage.documents.PrepareSave(stage.Out("saved.glb"), {});
    ZDocuments::WriteSave(work);
    stage.Edit(0, 7, 0.75);
    stage.documents.FinishSave(std::move(work));
    EXPECT_TRUE(stage.documents.HasUnsavedChanges());
}

TEST(GivenUpOpening, ThrowsAndAddsNothing)
{
    std::stop_source stop;
    stop.request_stop();
    EXPECT_THROW(ZDocuments::Read(kFigure, stop.get_token()), skindesk::gltf::FileError);
}

} // namespace

// SPDX-License-Identifier: MIT
// Posing a bone of the built-in character by its rings while the real tool is open: the file stays as it is, and the
// tool goes on where it was.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "object/ZUndoStack.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZPose.h"
#include "ztoolkit/ZtListBox.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <unistd.h>

namespace fs = std::filesystem;

namespace {

using testing::ElementsAre;

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

class PosingTheFigure : public testing::Test
{
protected:
    PosingTheFigure()
        : folder(fs::temp_directory_path() / ("skindesk-posing-the-figure-" + std::to_string(::getpid()))),
          session(WithPlugins()), documents(session)
    {
        fs::create_directories(folder);
        session.LoadPlugins();
        figure = documents.Open(source).front();
        tool = session.OpenTool("Skins");
        GlobalDragAndDrop_Begin();
        GlobalDragAndDrop_Add(figure, 0);
        GlobalDragAndDrop_DropOn(&List("ModelListUI"));
        session.GetViewer().Frame({});
        session.AfterEvent();
        forearm = Find("Forearm.L");
    }
    ~PosingTheFigure() override
    {
        ZTransformManager::TheOne()->SetPosing(false);
        fs::remove_all(folder);
    }
    ZModel* Find(const std::string& name)
    {
        for (ZModel* const model : session.GetScene().GetModels())
            if (model->GetObjectName() == name)
                return model;
        throw std::runtime_error("no model " + name);
    }
    ZtListBox& List(const char* name)
    {
        std::vector<ZtView*> views;
        tool->CollectViews(views);
        for (ZtView* const view : views)
            if (view->GetObjectName() == name && Object_Cast<ZtListBox>(static_cast<ZObject*>(view)) != nullptr)
                return static_cast<ZtListBox&>(*view);
        throw std::runtime_error(std::string("no list ") + name);
    }
    /// Moves over the picture until a handle lights up, takes it and drags it.
    bool DragAHandle()
    {
        ZViewer& viewer = session.GetViewer();
        for (int y = 0; y < viewer.GetHeight(); y += 5)
            for (int x = 0; x < viewer.GetWidth(); x += 5) {
                if (!viewer.Move(x, y))
                    continue;
                viewer.Press(x, y, 1, 0);
                viewer.Move(x + 20, y + 10);
                viewer.Move(x + 40, y + 30);
                viewer.Release(x + 40, y + 30);
                session.AfterEvent();
                return true;
            }
        return false;
    }
    void PickAll()
    {
        ZViewer& viewer = session.GetViewer();
        viewer.Press(1, 1, 1, 0);
        viewer.Move(400, 300);
        viewer.Release(798, 598);
        session.AfterEvent();
    }

    const std::string source = SKINDESK_SOURCE_DIR "/samples/figure.glb";
    fs::path folder;
    ZSession session;
    ZDocuments documents;
    ZModel* figure = nullptr;
    ZModel* forearm = nullptr;
    ZTool* tool = nullptr;
};

TEST_F(PosingTheFigure, ADraggedHandleMovesTheArmAndIsNeverSaved)
{
    forearm->SetSelected(true);
    ZTransformManager::TheOne()->SetPosing(true);
    const ZgeMatrix file = forearm->GetTransformMatrix(true);
    const auto steps = ZUndoStack::TheOne()->GetUndoNames().size();
    const float* const places = figure->Geometry().VertexPositions(1);
    const std::vector<float> before(places, places + 4 * figure->Geometry().VertexCount());
    ASSERT_TRUE(DragAHandle());
    EXPECT_NE(forearm->GetTransformMatrix(true), file);
    const float* const after = figure->Geometry().VertexPositions(1);
    EXPECT_FALSE(std::equal(before.begin(), before.end(), after)) << "the mesh follows";
    ASSERT_EQ(ZUndoStack::TheOne()->GetUndoNames().size(), steps + 1);
    EXPECT_EQ(ZUndoStack::TheOne()->GetUndoNames().front(), "Pose Forearm.L");
    EXPECT_FALSE(documents.HasUnsavedChanges());
    documents.Save((folder / "posed.glb").string(), {});
    EXPECT_EQ(Bytes((folder / "posed.glb").string()), Bytes(source));
    EXPECT_TRUE(session.Undo());
    EXPECT_EQ(forearm->GetTransformMatrix(true), file);
}

TEST_F(PosingTheFigure, TheToolPicksAgainAfterPosingAndNothingMeanwhile)
{
    forearm->SetSelected(true);
    ZTransformManager::TheOne()->SetPosing(true);
    PickAll();
    EXPECT_EQ(List("ListVertexList").GetRowText(0), "Empty");
    EXPECT_FALSE(session.GetViewer().IsPickRectShown());
    ZTransformManager::TheOne()->SetPosing(false);
    PickAll();
    EXPECT_GT(List("ListVertexList").GetRowCount(), 100);
}

TEST_F(PosingTheFigure, KeyWGoesBackToTheToolAndEndsPosing)
{
    ZTransformManager::TheOne()->SetPosing(true);
    session.PressKey('W', 0);
    EXPECT_FALSE(ZTransformManager::TheOne()->IsPosing());
    PickAll();
    EXPECT_GT(List("ListVertexList").GetRowCount(), 100);
}

TEST_F(PosingTheFigure, ClosingTheToolEndsPosingAndItsDrag)
{
    forearm->SetSelected(true);
    ZTransformManager::TheOne()->SetPosing(true);
    ASSERT_TRUE(DragAHandle());
    session.CloseTool(tool);
    EXPECT_FALSE(ZTransformManager::TheOne()->IsPosing());
    EXPECT_TRUE(ZPose_IsPosed(session.GetScene())) << "the pose stays until it is put away";
    EXPECT_TRUE(ZPose_Clear(session.GetScene()));
}

} // namespace

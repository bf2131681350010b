// SPDX-License-Identifier: MIT
// Files of other kinds become new documents, saved as glTF.
#include "bcore/ZSession.h"
#include "documents/ZDocuments.h"
#include "documents/ZForeignFile.h"
#include "gltf/FileError.h"
#include "zbaselib/ZReport.h"
#include "zmodel/ZGeometryModels.h"
#include "ztoolkit/ZToolKit.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <unistd.h>

namespace fs = std::filesystem;
using skindesk::gltf::FileError;

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

const char* const kSurface = "o Leaf\nv 0 0 0\nv 1 0 1\nv 2 0 0\nv 0 1 0\nv 1 1 1\nv 2 1 0\ncstype bspline\ndeg 2 1\n"
                             "surf 0 1 0 1 1 2 3 4 5 6\nparm u 0 0 0 1 1 1\nparm v 0 0 1 1\nend\n"
                             "o Plate\nf 1 2 5 4\n";

class ForeignFileTest : public testing::Test
{
protected:
    ForeignFileTest()
        : folder(fs::temp_directory_path() / ("skindesk-foreign-" + std::to_string(::getpid()) + "-" +
                                              testing::UnitTest::GetInstance()->current_test_info()->name())),
          session({}), documents(session)
    {
        fs::create_directories(folder);
        ZReport_ClearWarnings();
        ZToolKit_ClearMessages();
        Write("leaf.obj", kSurface);
    }
    ~ForeignFileTest() override { fs::remove_all(folder); }

    std::string Path(const std::string& name) const { return (folder / name).string(); }
    void Write(const std::string& name, const std::string& text) const { std::ofstream(Path(name)) << text; }
    std::string RefusalOf(const std::string& name, const std::string& source = "")
    {
        try {
            ZSaveOptions options;
            options.source = source;
            documents.Save(Path(name), options);
        } catch (const FileError& error) {
            return error.what();
        }
        return "";
    }

    fs::path folder;
    ZSession session;
    ZDocuments documents;
};

TEST_F(ForeignFileTest, SurfacesAndMeshesBecomeModels)
{
    const std::vector<ZModel*> models = documents.Open(Path("leaf.obj"));
    ASSERT_THAT(models, SizeIs(2));
    EXPECT_EQ(models[0]->GetObjectName(), "Leaf");
    auto* const leaf = dynamic_cast<ZModelNurbs*>(models[0]);
    ASSERT_NE(leaf, nullptr);
    EXPECT_EQ(leaf->GetSurface().countU, 3);
    EXPECT_EQ(leaf->GetSurface().degreeU, 2);
    EXPECT_EQ(models[0]->GetSkin(), nullptr);
    EXPECT_EQ(models[1]->GetObjectName(), "Plate");
    EXPECT_NE(dynamic_cast<ZModelPolymesh*>(models[1]), nullptr);
}

TEST_F(ForeignFileTest, ADocumentMadeOfOneIsNewUntilItIsSaved)
{
    documents.Open(Path("leaf.obj"));
    ASSERT_THAT(documents.GetDocuments(), SizeIs(1));
    EXPECT_TRUE(documents.GetDocuments()[0].isNew);
    EXPECT_TRUE(documents.HasUnsavedChanges());
    EXPECT_EQ(documents.GetDocuments()[0].path, Path("leaf.obj"));
    EXPECT_FALSE(documents.ChangedByOthers(documents.GetDocuments()[0].id));
    documents.Save(Path("leaf.glb"));
    EXPECT_FALSE(documents.GetDocuments()[0].isNew);
    EXPECT_FALSE(documents.HasUnsavedChanges());
    EXPECT_EQ(documents.GetDocuments()[0].path, Path("leaf.glb"));
    EXPECT_FALSE(documents.ChangedByOthers(documents.GetDocuments()[0].id));
    Write("leaf.glb", "somebody else was here");
    EXPECT_TRUE(documents.ChangedByOthers(documents.GetDocuments()[0].id));
}

TEST_F(ForeignFileTest, IsSavedAsGlbAndAsGltfAndReadAgain)
{
    for (const char* const name : {"leaf.glb", "leaf.gltf", "LEAF.GLB"}) {
        documents.Open(Path("leaf.obj"));
        EXPECT_GT(documents.Save(Path(name)).bytes, 1000U) << name;
        documents.Clear();
        const std::vector<ZModel*> models = documents.Open(Path(name));
        ASSERT_THAT(models, SizeIs(2)) << name;
        EXPECT_NE(dynamic_cast<ZModelNurbs*>(models[0]), nullptr) << name;
        EXPECT_EQ(models[0]->GetObjectName(), "Leaf") << name;
        EXPECT_FALSE(documents.HasUnsavedChanges()) << name;
        documents.Clear();
    }
    std::ifstream text(Path("leaf.gltf"));
    EXPECT_EQ(text.get(), '{');
}

TEST_F(ForeignFileTest, TheOtherFileItselfIsNeverOverwritten)
{
    documents.Open(Path("leaf.obj"));
    EXPECT_THAT(RefusalOf("leaf.obj"), HasSubstr("leaf.obj"));
    EXPECT_THAT(RefusalOf("other.obj"), HasSubstr("is saved as .glb or .gltf"));
    EXPECT_THAT(RefusalOf("leaf"), HasSubstr("is saved as .glb or .gltf"));
    EXPECT_EQ(RefusalOf("leaf.glb"), "");
    EXPECT_THAT(RefusalOf("leaf.obj"), HasSubstr("is saved as .glb or .gltf"));
    std::ifstream in(Path("leaf.obj"));
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), kSurface);
    EXPECT_FALSE(fs::exists(Path("other.obj")));
}

TEST_F(ForeignFileTest, AsASourceItIsFoundByBothItsNames)
{
    documents.Open(Path("leaf.obj"));
    Write("second.obj", kSurface);
    documents.Open(Path("second.obj"));
    EXPECT_EQ(RefusalOf("leaf.glb", Path("leaf.obj")), "");
    EXPECT_EQ(RefusalOf("leaf.glb", Path("leaf.glb")), "");
    EXPECT_EQ(RefusalOf("leaf.glb", Path("leaf.obj")), "");
}

TEST_F(ForeignFileTest, WhatIsLostIsSaidWithTheNameOfTheFile)
{
    Write("trimmed.obj", std::string(kSurface) + "l 1 2\n");
    documents.Open(Path("trimmed.obj"));
    EXPECT_THAT(ZReport_Warnings(), ElementsAre("trimmed.obj: line 16: left out: lines (l)"));
}

TEST_F(ForeignFileTest, ABrokenOneIsRefusedWithItsLineAndLeavesTheScene)
{
    Write("broken.OBJ", std::string(kSurface) + "f 1 2 77\n");
    try {
        documents.Open(Path("broken.OBJ"));
        FAIL() << "the file was opened";
    } catch (const FileError& error) {
        EXPECT_EQ(error.path(), Path("broken.OBJ"));
        EXPECT_EQ(error.where(), "line 16");
    }
    EXPECT_THROW(documents.Open(Path("missing.obj")), FileError);
    EXPECT_THAT(session.GetScene().GetModels(), IsEmpty());
    EXPECT_THAT(documents.GetDocuments(), IsEmpty());
}

TEST_F(ForeignFileTest, TheKindsAreListedForDialogs)
{
    EXPECT_THAT(ZForeignFile_Kinds(), Contains(testing::Field(&ZForeignKind::extension, testing::StrEq(".obj"))));
    for (const ZForeignKind& kind : ZForeignFile_Kinds())
        EXPECT_EQ(ZForeignFile_KindOf(std::string("a") + kind.extension), &kind);
    EXPECT_EQ(ZForeignFile_KindOf("a.glb"), nullptr);
    EXPECT_EQ(ZForeignFile_KindOf("obj"), nullptr);
}

} // namespace

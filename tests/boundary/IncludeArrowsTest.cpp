// SPDX-License-Identifier: MIT
// The include arrows of the whole tree, and that the reader which checks them finds what it should.
#include "IncludeArrows.h"

#include <gmock/gmock.h>

#include <set>

namespace {

using boundary::CheckIncludes;
using testing::ElementsAre;
using testing::Field;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

/// The reason why a file at `path` may not include this, or nothing.
std::string ReasonFor(const std::string& path, const std::string& include)
{
    const auto violations = CheckIncludes(path, "#include " + include + "\n");
    return violations.empty() ? std::string() : violations.front().reason;
}

TEST(IncludeArrows, EverySourceOfTheTreeFollowsThem)
{
    const std::filesystem::path top = SKINDESK_SOURCE_DIR;
    std::set<std::string> rooms;
    for (const std::string& path : boundary::SourcesOf(top)) {
        rooms.insert(path.substr(0, path.find('/')));
        for (const boundary::Violation& violation : CheckIncludes(path, boundary::ReadText(top / path)))
            ADD_FAILURE() << boundary::Describe(violation);
    }
    // Had the walk missed the tree, it would have found no violation either.
    EXPECT_THAT(rooms, testing::IsSupersetOf(
                           {"host", "weights", "editing", "panel", "viewport", "tool", "plugin", "formats", "tests"}));
}

TEST(IncludeArrows, TheHostAndItsDoorsNameNoPlugin)
{
    const std::filesystem::path top = SKINDESK_SOURCE_DIR;
    for (const std::string& path : boundary::SourcesOf(top)) {
        if (path.starts_with("host/") || path.starts_with("desk/") || path.starts_with("python/")) {
            EXPECT_THAT(boundary::ReadText(top / path), testing::Not(HasSubstr("toolweighting"))) << path;
        }
    }
}

TEST(IncludeArrows, AnIncludeOfAHigherHostLibraryIsFound)
{
    EXPECT_EQ(ReasonFor("host/object/ZObject.h", "\"zmodel/ZSkin.h\""), "host/object may not look into host/zmodel");
    EXPECT_EQ(ReasonFor("host/zmodel/ZSkin.h", "\"object/ZObject.h\""), "");
}

TEST(IncludeArrows, HostLibrariesOfOneLayerDoNotSeeEachOther)
{
    EXPECT_EQ(ReasonFor("host/zmodel/ZModel.h", "\"ztoolkit/ZtView.h\""),
              "host/zmodel may not look into host/ztoolkit");
    EXPECT_EQ(ReasonFor("host/zdesktop/ZTool.h", "\"ztoolkit/ZtView.h\""), "");
}

TEST(IncludeArrows, TheHostSeesNoGuest)
{
    EXPECT_EQ(ReasonFor("host/bcore/src/ZSession.cpp", "\"weights/IWeightGeom.h\""),
              "host/bcore may not look into weights");
}

TEST(IncludeArrows, PanelAndViewportDoNotSeeEachOtherOrTheTool)
{
    EXPECT_NE(ReasonFor("panel/A.cpp", "\"viewport/ZWeightPick.h\""), "");
    EXPECT_NE(ReasonFor("viewport/A.cpp", "\"panel/A.h\""), "");
    EXPECT_NE(ReasonFor("panel/A.cpp", "\"tool/A.h\""), "");
    EXPECT_EQ(ReasonFor("tool/A.cpp", "\"panel/A.h\""), "");
}

TEST(IncludeArrows, PrivateHeadersOfAnotherRoomAreFound)
{
    EXPECT_EQ(ReasonFor("weights/A.cpp", "\"zmodel/src/SkinStore.h\""), "src/ of host/zmodel is private");
    EXPECT_EQ(ReasonFor("weights/A.cpp", "\"../host/zmodel/src/SkinStore.h\""), "src/ of host/zmodel is private");
    EXPECT_EQ(ReasonFor("host/zmodel/src/ZSkin.cpp", "\"../ZSkin.h\""), "");
    EXPECT_EQ(ReasonFor("host/zmodel/src/ZSkin.cpp", "\"SkinStore.h\""), "");
}

TEST(IncludeArrows, ADetourThroughTheParentFolderIsFound)
{
    EXPECT_EQ(ReasonFor("editing/A.cpp", "\"../panel/A.h\""), "editing may not look into panel");
    EXPECT_EQ(ReasonFor("editing/A.cpp", "\"../../elsewhere/A.h\""), "it leads out of every room");
}

TEST(IncludeArrows, QtJsonAndOpenGlStayInTheirRooms)
{
    EXPECT_EQ(ReasonFor("tool/A.cpp", "<QWidget>"), "tool may not include Qt");
    EXPECT_EQ(ReasonFor("desk/model/A.cpp", "<QtWidgets/QWidget>"), "desk/model may not include Qt");
    EXPECT_EQ(ReasonFor("desk/windows/A.cpp", "<QWidget>"), "");
    EXPECT_EQ(ReasonFor("host/zmodel/A.h", "<nlohmann/json.hpp>"), "host/zmodel may not include JSON");
    EXPECT_EQ(ReasonFor("formats/gltf/A.cpp", "<nlohmann/json.hpp>"), "");
    EXPECT_EQ(ReasonFor("panel/A.cpp", "<GL/gl.h>"), "panel may not include OpenGL");
    EXPECT_EQ(ReasonFor("host/zmanipulator/src/A.cpp", "<EGL/egl.h>"), "");
    EXPECT_EQ(ReasonFor("viewport/A.cpp", "<EGL/egl.h>"), "viewport may not include EGL");
}

TEST(IncludeArrows, OfWeightsOnlyTheAdaptersDraw)
{
    EXPECT_EQ(ReasonFor("weights/ZWeightGeomPoly.cpp", "<GL/gl.h>"), "");
    EXPECT_EQ(ReasonFor("weights/ZWeightUIModelData.cpp", "<GL/gl.h>"), "weights may not include OpenGL");
    EXPECT_EQ(ReasonFor("weights/ZWeightGeomPoly.h", "<GL/gl.h>"), "weights may not include OpenGL");
}

TEST(IncludeArrows, ALibraryThatNobodyNamedIsFound)
{
    EXPECT_EQ(ReasonFor("weights/A.cpp", "<boost/array.hpp>"), "weights may not include boost");
    EXPECT_EQ(ReasonFor("weights/A.cpp", "\"boost/array.hpp\""), "weights may not include boost");
    EXPECT_EQ(ReasonFor("weights/A.cpp", "<vector>"), "");
    EXPECT_EQ(ReasonFor("host/bcore/src/A.cpp", "<dlfcn.h>"), "");
    EXPECT_EQ(ReasonFor("formats/gltf/A.cpp", "<sys/stat.h>"), "");
}

TEST(IncludeArrows, ASourceOutsideEveryRoomIsFound)
{
    EXPECT_THAT(CheckIncludes("misc/helpers.h", ""),
                ElementsAre(Field(&boundary::Violation::reason, "it lies in no room")));
}

TEST(IncludeArrows, CommentsAndSpacingDoNotHideOrMakeAnInclude)
{
    const std::string text =
        "// #include <QWidget>\n/* #include <QWidget>\n#include <QWidget> */\n  #  include <QString>\n";
    const auto violations = CheckIncludes("tool/A.cpp", text);
    ASSERT_THAT(violations, SizeIs(1));
    EXPECT_EQ(violations[0].line, 4);
    EXPECT_EQ(boundary::Describe(violations[0]), "tool/A.cpp:4: includes QString: tool may not include Qt");
}

TEST(IncludeArrows, TestsMayIncludeEverything)
{
    EXPECT_THAT(CheckIncludes("tests/zmodel/A.cpp", "#include \"zmodel/src/SkinStore.h\"\n#include <gtest/gtest.h>\n"),
                IsEmpty());
}

} // namespace

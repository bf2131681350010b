// SPDX-License-Identifier: MIT
// Tools: life, the list of those that live, sizes, news through their entity.
#include "zbaselib/ZReport.h"
#include "zdesktop/ZTool.h"

#include <gmock/gmock.h>

#include <memory>

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

TEST(Tool, ActiveTwiceIsNoChange)
{
    ZTool tool("tool");
    EXPECT_FALSE(tool.IsToolActive());
    EXPECT_TRUE(tool.ToolActivate());
    EXPECT_TRUE(tool.ToolActivate());
    EXPECT_TRUE(tool.IsToolActive());
    EXPECT_TRUE(tool.ToolDeactivate());
    EXPECT_TRUE(tool.ToolDeactivate());
    EXPECT_FALSE(tool.IsToolActive());
}

TEST(Tool, LivingToolsAreListedInOrderOfMaking)
{
    ZTool first("first");
    auto second = std::make_unique<ZTool>("second");
    ZTool third("third");
    EXPECT_THAT(ZTool::GetTools(), ElementsAre(&first, second.get(), &third));
    second.reset();
    EXPECT_THAT(ZTool::GetTools(), ElementsAre(&first, &third));
}

TEST(Tool, OneThatTheHostDestroyedIsListedNoMoreAndCannotBeActivated)
{
    ZTool tool("tool");
    tool.DestroyObject();
    EXPECT_THAT(ZTool::GetTools(), Not(Contains(&tool)));
    EXPECT_THROW(tool.ToolActivate(), ZHostMisuse);
}

TEST(Tool, SizesAreKept)
{
    ZTool tool("fmtool");
    tool.SetToolSize(1146, 311);
    tool.SetToolMinimumSize(200, 200);
    EXPECT_EQ(tool.GetToolWidth(), 1146);
    EXPECT_EQ(tool.GetToolHeight(), 311);
    EXPECT_EQ(tool.GetToolMinimumWidth(), 200);
    EXPECT_EQ(tool.GetToolMinimumHeight(), 200);
    EXPECT_EQ(tool.GetObjectName(), "fmtool");
    EXPECT_EQ(tool.GetViewKind(), ZtViewKind::Form);
}

TEST(Tool, TheHostHoldsTheCurrentManipulationWithoutOwningIt)
{
    ZTool tool("tool");
    ZObject manipulation("lock");
    tool.SetCurrentManipulation(&manipulation);
    EXPECT_EQ(tool.GetCurrentManipulation(), &manipulation);
    tool.SetCurrentManipulation(nullptr);
    EXPECT_EQ(tool.GetCurrentManipulation(), nullptr);
}

namespace {
struct Listener
{
    std::vector<int> kinds;
    void Hear(ZObject*, ZEvent& event) { kinds.push_back(event.kind); }
};
} // namespace

TEST(Tool, ItsEntityHearsOfPlugs)
{
    ZEntity other("other");
    Listener listener;
    auto tool = std::make_unique<ZTool>("tool");
    tool->GetEntity().EntityPlugNotifyRegister(ZMakeHandler<&Listener::Hear>(&listener));
    ZPlugEvent event(kPlugNotifyDeleted, &other, &other);
    ZEntity::Notify(event);
    tool.reset();
    ZEntity::Notify(event); // the entity went with its tool
    EXPECT_THAT(listener.kinds, ElementsAre(kPlugNotifyDeleted));
}

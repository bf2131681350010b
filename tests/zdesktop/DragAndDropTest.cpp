// SPDX-License-Identifier: MIT
// Drag and drop: stages, acceptance, drags that are ended or begun in the middle, objects that go.
#include "zbaselib/ZReport.h"
#include "zdesktop/ZDragAndDrop.h"
#include "zmodel/ZGeometryModels.h"
#include "zmodel/ZScene.h"
#include "ztoolkit/ZtListBox.h"

#include <gmock/gmock.h>

#include <memory>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

namespace {
/// A list that keeps the stages that it saw, accepts when told to, and keeps what was dropped.
struct Target
{
    ZtListBox list{"list"};
    bool accepts = true;
    bool endsAtOver = false;
    std::vector<int> stages;
    std::vector<IObject*> dropped;
    std::vector<IObject*> offered; ///< put into a drag that starts here

    Target() { list.RegisterHandler(kViewDragAndDrop, ZMakeHandler<&Target::OnDrag>(this)); }

private:
    void OnDrag(ZObject*, ZEvent& event)
    {
        const int stage = static_cast<ZtEvent&>(event).stage;
        stages.push_back(stage);
        if (stage == kDragOver && accepts)
            GlobalDragAndDrop_Accept();
        if (stage == kDragOver && endsAtOver)
            GlobalDragAndDrop_End();
        if (stage == kDragDrop)
            for (int i = 0; i < GlobalDragAndDrop_GetCount(); ++i)
                dropped.push_back(GlobalDragAndDrop_Get(i));
        if (stage == kDragStart)
            for (IObject* const object : offered)
                GlobalDragAndDrop_Add(object, 0);
    }
};

ZModel* AddNode(ZScene& scene, const char* name, ZModel* parent)
{
    ZModel* const node = scene.AddModel(std::make_unique<ZModel>(name));
    node->SetParent(parent);
    return node;
}

ZModel* AddMesh(ZScene& scene, const char* name, ZModel* parent)
{
    auto mesh = std::make_unique<ZModelPolymesh>(name);
    const float triangle[] = {0, 0, 0, 1, 0, 0, 0, 1, 0};
    mesh->SetGeometry(triangle, 3, {0, 1, 2}, {3});
    ZModel* const added = scene.AddModel(std::move(mesh));
    added->SetParent(parent);
    return added;
}

class DragAndDrop : public testing::Test
{
protected:
    void TearDown() override { GlobalDragAndDrop_End(); }
    Target target;
    ZScene scene;
};
} // namespace

TEST_F(DragAndDrop, WhatIsAcceptedIsDroppedAndTheDragIsOver)
{
    ZModel* const a = AddMesh(scene, "a", nullptr);
    ZModel* const b = AddMesh(scene, "b", nullptr);
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(a, 0);
    GlobalDragAndDrop_Add(b, 0);
    EXPECT_EQ(GlobalDragAndDrop_GetCount(), 2);
    EXPECT_TRUE(GlobalDragAndDrop_DropOn(&target.list));
    EXPECT_THAT(target.stages, ElementsAre(kDragOver, kDragDrop));
    EXPECT_THAT(target.dropped, ElementsAre(a, b));
    EXPECT_EQ(GlobalDragAndDrop_GetCount(), 0);
    EXPECT_EQ(GlobalDragAndDrop_Get(0), nullptr);
}

TEST_F(DragAndDrop, WithoutAcceptanceNothingIsDropped)
{
    target.accepts = false;
    GlobalDragAndDrop_Begin();
    EXPECT_FALSE(GlobalDragAndDrop_DropOn(&target.list));
    EXPECT_THAT(target.stages, ElementsAre(kDragOver));
}

TEST_F(DragAndDrop, AnEarlierAcceptanceDoesNotCount)
{
    target.accepts = false;
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Accept();
    EXPECT_FALSE(GlobalDragAndDrop_DropOn(&target.list));
}

TEST_F(DragAndDrop, ADisabledViewAndNoViewAcceptNothing)
{
    target.list.SetEnabled(false);
    GlobalDragAndDrop_Begin();
    EXPECT_FALSE(GlobalDragAndDrop_DropOn(&target.list));
    GlobalDragAndDrop_Begin();
    EXPECT_FALSE(GlobalDragAndDrop_DropOn(nullptr));
    EXPECT_EQ(GlobalDragAndDrop_StartFrom(&target.list), 0);
    EXPECT_THAT(target.stages, IsEmpty());
}

TEST_F(DragAndDrop, ADragThatIsEndedOverTheViewIsNotDropped)
{
    target.endsAtOver = true;
    GlobalDragAndDrop_Begin();
    EXPECT_FALSE(GlobalDragAndDrop_DropOn(&target.list));
    EXPECT_THAT(target.stages, ElementsAre(kDragOver));
}

TEST_F(DragAndDrop, NullObjectsArePassedOn)
{
    ZModel* const a = AddMesh(scene, "a", nullptr);
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(nullptr, 0);
    GlobalDragAndDrop_Add(a, 0);
    EXPECT_TRUE(GlobalDragAndDrop_DropOn(&target.list));
    EXPECT_THAT(target.dropped, ElementsAre(nullptr, a));
}

TEST_F(DragAndDrop, AnObjectThatIsDestroyedInTheCourseStaysAsNull)
{
    ZModel* const a = AddMesh(scene, "a", nullptr);
    ZModel* const b = AddMesh(scene, "b", nullptr);
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(a, 0);
    GlobalDragAndDrop_Add(b, 0);
    scene.DeleteModel(a);
    EXPECT_TRUE(GlobalDragAndDrop_DropOn(&target.list));
    EXPECT_THAT(target.dropped, ElementsAre(nullptr, b));
}

TEST_F(DragAndDrop, APlainNodeStandsForTheGeometryUnderItDepthFirst)
{
    ZModel* const root = AddNode(scene, "root", nullptr);
    ZModel* const arm = AddNode(scene, "arm", root);
    ZModel* const late = AddMesh(scene, "late", root);
    ZModel* const hand = AddMesh(scene, "hand", arm);
    ZModel* const ring = AddMesh(scene, "ring", hand);
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(root, 0);
    GlobalDragAndDrop_DropOn(&target.list);
    EXPECT_THAT(target.dropped, ElementsAre(hand, ring, late));
}

TEST_F(DragAndDrop, ABoneStandsForItselfAndSoDoesANodeWithNothingUnderIt)
{
    ZModel* const bone = AddNode(scene, "bone", nullptr);
    bone->SetBone(true);
    AddMesh(scene, "worn", bone);
    ZModel* const alone = AddNode(scene, "alone", nullptr);
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(bone, 0);
    GlobalDragAndDrop_Add(alone, 0);
    GlobalDragAndDrop_DropOn(&target.list);
    EXPECT_THAT(target.dropped, ElementsAre(bone, alone));
}

TEST_F(DragAndDrop, ADragThatStartsFromAControlHoldsWhatItPutIn)
{
    ZModel* const a = AddMesh(scene, "a", nullptr);
    target.offered = {a};
    EXPECT_EQ(GlobalDragAndDrop_StartFrom(&target.list), 1);
    EXPECT_EQ(GlobalDragAndDrop_Get(0), a);
    EXPECT_THAT(target.stages, ElementsAre(kDragStart));
    Target other;
    EXPECT_TRUE(GlobalDragAndDrop_DropOn(&other.list));
    EXPECT_THAT(other.dropped, ElementsAre(a));
}

TEST_F(DragAndDrop, BeginTakesThePlaceOfADragThatNobodyEnded)
{
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(nullptr, 0);
    GlobalDragAndDrop_Begin();
    EXPECT_EQ(GlobalDragAndDrop_GetCount(), 0);
}

TEST_F(DragAndDrop, CallsWithoutADragAreMisuse)
{
    EXPECT_THAT([] { GlobalDragAndDrop_Accept(); },
                ThrowsMessage<ZHostMisuse>(HasSubstr("GlobalDragAndDrop_Accept: no drag")));
    EXPECT_THROW(GlobalDragAndDrop_Add(nullptr, 0), ZHostMisuse);
    EXPECT_THROW(GlobalDragAndDrop_DropOn(&target.list), ZHostMisuse);
    EXPECT_NO_THROW(GlobalDragAndDrop_End());
}

namespace {
struct Nester
{
    ZtListBox* list;
    int misuses = 0;
    void OnDrag(ZObject*, ZEvent& event)
    {
        if (static_cast<ZtEvent&>(event).stage == kDragOver)
            GlobalDragAndDrop_Accept();
        for (const auto& call : {+[](ZtListBox*) { GlobalDragAndDrop_Begin(); },
                                 +[](ZtListBox* view) { GlobalDragAndDrop_StartFrom(view); },
                                 +[](ZtListBox* view) { GlobalDragAndDrop_DropOn(view); }})
            try {
                call(list);
            } catch (const ZHostMisuse&) {
                ++misuses;
            }
    }
};
} // namespace

TEST_F(DragAndDrop, NoOtherDragBeginsWhileOneIsHandled)
{
    ZtListBox list("list");
    Nester nester{&list};
    list.RegisterHandler(kViewDragAndDrop, ZMakeHandler<&Nester::OnDrag>(&nester));
    ZModel* const a = AddMesh(scene, "a", nullptr);
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(a, 0);
    EXPECT_TRUE(GlobalDragAndDrop_DropOn(&list));
    EXPECT_EQ(nester.misuses, 6);
    GlobalDragAndDrop_Begin(); // afterwards all is well
}

namespace {
struct Destroyer
{
    std::unique_ptr<ZtListBox>* list;
    int stage;
    void OnDrag(ZObject*, ZEvent& event)
    {
        const int now = static_cast<ZtEvent&>(event).stage;
        if (now == kDragOver)
            GlobalDragAndDrop_Accept();
        if (now == stage)
            list->reset();
    }
};
struct Thrower
{
    void OnDrag(ZObject*, ZEvent&) { throw std::runtime_error("a guest's mistake"); }
};
} // namespace

TEST_F(DragAndDrop, AHandlerMayDestroyTheView)
{
    for (const int stage : {kDragOver, kDragDrop}) {
        auto list = std::make_unique<ZtListBox>("list");
        Destroyer destroyer{&list, stage};
        list->RegisterHandler(kViewDragAndDrop, ZMakeHandler<&Destroyer::OnDrag>(&destroyer));
        GlobalDragAndDrop_Begin();
        EXPECT_EQ(GlobalDragAndDrop_DropOn(list.get()), stage == kDragDrop);
        EXPECT_EQ(list, nullptr);
    }
}

TEST_F(DragAndDrop, AHandlerThatThrowsLeavesNoDragBehind)
{
    ZtListBox list("list");
    Thrower thrower;
    list.RegisterHandler(kViewDragAndDrop, ZMakeHandler<&Thrower::OnDrag>(&thrower));
    GlobalDragAndDrop_Begin();
    GlobalDragAndDrop_Add(nullptr, 0);
    EXPECT_THROW(GlobalDragAndDrop_DropOn(&list), std::runtime_error);
    EXPECT_EQ(GlobalDragAndDrop_GetCount(), 0);
    EXPECT_THROW(GlobalDragAndDrop_StartFrom(&list), std::runtime_error);
    EXPECT_NO_THROW(GlobalDragAndDrop_Begin());
}

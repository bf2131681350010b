// SPDX-License-Identifier: MIT
// The typed list of model data.
#include "support/WeightStage.h"
#include "weights/ZWeightUIModelDataList.h"

#include <gtest/gtest.h>

#include <utility>

namespace {

class ModelDataList : public testing::Test
{
protected:
    ModelDataList()
    {
        stage.character.AddBones(1);
        for (auto& item : items)
            item = stage.Admit(stage.character.AddMesh("Body", 1));
    }
    WeightStage stage;
    std::unique_ptr<ZWeightUIModelData> items[3];
};

TEST_F(ModelDataList, MoveLeavesTheSourceInPlace)
{
    ZWeightUIModelDataList source;
    source.Add(items[0].get());
    source.Add(items[1].get());
    const ZWeightUIModelDataList moved(std::move(source));
    EXPECT_EQ(source.GetCount(), 2);
    EXPECT_EQ(moved.GetCount(), 2);
    EXPECT_EQ(moved[1], source[1]);
    ZWeightUIModelDataList assigned;
    assigned = std::move(source);
    EXPECT_EQ(source.GetCount(), 2);
    EXPECT_EQ(assigned[0], items[0].get());
}

TEST_F(ModelDataList, RemovingWhatIsNotThereChangesNothing)
{
    ZWeightUIModelDataList list;
    EXPECT_EQ(list.Add(items[0].get()), 0);
    EXPECT_FALSE(list.Remove(items[1].get()));
    EXPECT_EQ(list.GetCount(), 1);
    EXPECT_TRUE(list.Remove(items[0].get()));
    EXPECT_EQ(list.GetCount(), 0);
}

TEST_F(ModelDataList, KeepsOrderAndOwnsNothing)
{
    ZWeightUIModelDataList list;
    list.Add(items[0].get());
    list.Add(items[1].get());
    EXPECT_EQ(list.InsertAt(1, items[2].get()), 1);
    EXPECT_EQ(list[1], items[2].get());
    EXPECT_EQ(list.SetAt(0, items[1].get()), 0);
    const ZWeightUIModelDataList copy = list;
    list = ZWeightUIModelDataList();
    EXPECT_EQ(copy.GetCount(), 3);
    EXPECT_FALSE(items[0]->IsDestroyed());
}

} // namespace

// SPDX-License-Identifier: MIT
#include "zbaselib/ZGenericObjectList.h"
#include "zbaselib/ZMap.h"
#include "zbaselib/ZStringList.h"

#include <gtest/gtest.h>
#include <utility>

TEST(ZGenericObjectList, AnswersNullAndMinusOneOutOfRange)
{
    int a = 0;
    ZObjectListTemplate<int> list;
    EXPECT_EQ(list[0], nullptr);
    EXPECT_EQ(list[-1], nullptr);
    EXPECT_EQ(list.Add(&a), 0);
    EXPECT_EQ(list[1], nullptr);
    EXPECT_EQ(list.InsertAt(2, &a), -1);
    EXPECT_EQ(list.InsertAt(-1, &a), -1);
    EXPECT_EQ(list.SetAt(1, &a), -1);
    EXPECT_FALSE(list.InternalRemoveAt(1));
    EXPECT_EQ(list.GetCount(), 1);
}

TEST(ZGenericObjectList, RemovesTheFirstOfEqualObjects)
{
    int a = 0, b = 0;
    ZObjectListTemplate<int> list;
    list.Add(&a);
    list.Add(&b);
    list.Add(&a);
    EXPECT_TRUE(list.Remove(&a));
    EXPECT_EQ(list[0], &b);
    EXPECT_EQ(list[1], &a);
    EXPECT_TRUE(list.Remove(&a));
    EXPECT_FALSE(list.Remove(&a));
}

TEST(ZGenericObjectList, AMoveCopies)
{
    int a = 0;
    ZObjectListTemplate<int> list;
    list.Add(&a);
    ZObjectListTemplate<int> moved(std::move(list));
    EXPECT_EQ(moved[0], &a);
    EXPECT_EQ(list[0], &a);
}

TEST(ZMap, OrdersTextsByContentAndNullFirst)
{
    const std::string one = "bone", same = "bone";
    ZMap<const char*, int, ZCharPointerLessCompare> map;
    map.Set(one.c_str(), 1);
    map.Set(nullptr, 2);
    ASSERT_NE(map.Find(same.c_str()), nullptr);
    EXPECT_EQ(*map.Find(same.c_str()), 1);
    EXPECT_EQ(*map.Find(nullptr), 2);
    EXPECT_EQ(map.Find("other"), nullptr);
    EXPECT_TRUE(map.Remove(same.c_str()));
    EXPECT_FALSE(map.Remove(same.c_str()));
    EXPECT_EQ(map.GetCount(), 1);
}

TEST(ZStringList, SplitsAndJoins)
{
    ZStringList list;
    list.SetText("one;two;;four;", ';');
    ASSERT_EQ(list.GetCount(), 5);
    EXPECT_EQ(list.GetAt(2), "");
    EXPECT_EQ(list.GetAt(4), "");
    EXPECT_EQ(list.GetText(';'), "one;two;;four;");
    EXPECT_EQ(list.GetAt(9), "");
    EXPECT_EQ(list.GetAt(-1), "");
    list.SetText("", ';');
    EXPECT_EQ(list.GetCount(), 0);
}

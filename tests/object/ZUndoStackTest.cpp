// SPDX-License-Identifier: MIT
// Steps, nesting, dropping, failures.
#include "object/ZUndoStack.h"
#include "zbaselib/ZReport.h"

#include <functional>
#include <gmock/gmock.h>
#include <stdexcept>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {
/// Sets a number, and writes down what happens to it.
class SetNumber : public IUndo
{
public:
    SetNumber(std::vector<std::string>& log, std::string name) : m_log(log), m_name(std::move(name)) {}
    ~SetNumber() override { m_log.push_back("free " + m_name); }
    void* IQuery(int id, int) override { return id == 0 || id == kInterfaceUndo ? this : nullptr; }
    void Destroy() override { delete this; }
    bool IsEmpty() override { return empty; }
    void TransactionClosed() override { ++closed; }
    void Undo() override { Do("undo "); }
    void Redo() override { Do("redo "); }
    const char* GetName() override { return m_name.c_str(); }

    bool empty = false;
    int closed = 0;
    bool fails = false;
    std::function<void()> then;

private:
    void Do(const char* what)
    {
        m_log.push_back(what + m_name);
        if (then)
            then();
        if (fails)
            throw std::runtime_error("the disk is gone");
    }
    std::vector<std::string>& m_log;
    std::string m_name;
};

class UndoStack : public testing::Test
{
protected:
    void TearDown() override
    {
        m_stack.Clear();
        ZReport_SetMisuseFatal(true);
        ZReport_ClearWarnings();
    }
    SetNumber* Add(const std::string& name)
    {
        auto* record = new SetNumber(m_log, name);
        m_stack.TransactionAdd(record);
        return record;
    }
    void Step(const std::string& name, const std::vector<std::string>& records)
    {
        m_stack.TransactionBegin(name.c_str(), false);
        for (const std::string& record : records)
            Add(record);
        m_stack.TransactionEnd(false, false);
    }

    std::vector<std::string> m_log;
    ZUndoStack m_stack;
};
} // namespace

TEST_F(UndoStack, UndoesLastToFirstAndRedoesFirstToLast)
{
    Step("s", {"a", "b"});
    EXPECT_TRUE(m_stack.Undo());
    EXPECT_TRUE(m_stack.Redo());
    EXPECT_THAT(m_log, ElementsAre("undo b", "undo a", "redo a", "redo b"));
    EXPECT_FALSE(m_stack.Redo());
}

TEST_F(UndoStack, InnerTransactionsJoinTheOuterStepUnderItsName)
{
    m_stack.TransactionBegin("outer", false);
    Add("a");
    m_stack.TransactionBegin("inner", false);
    Add("b");
    m_stack.TransactionEnd(false, false);
    EXPECT_TRUE(m_stack.IsTransactionOpen());
    EXPECT_EQ(m_stack.GetUndoCount(), 0);
    Add("c");
    m_stack.TransactionEnd(false, false);
    EXPECT_THAT(m_stack.GetUndoNames(), ElementsAre("outer"));
    m_stack.Undo();
    EXPECT_THAT(m_log, ElementsAre("undo c", "undo b", "undo a"));
}

TEST_F(UndoStack, StepsAndRecordsAreCountedFromOneAndTheOpenOneCounts)
{
    Step("first", {"a", "b"});
    m_stack.TransactionBegin("second", false);
    EXPECT_EQ(m_stack.TransactionGetCount(), 2);
    EXPECT_EQ(m_stack.TransactionGetUndoCount(2), 0);
    SetNumber* c = Add("c");
    EXPECT_EQ(m_stack.TransactionGetUndoCount(1), 2);
    EXPECT_EQ(m_stack.TransactionGetUndoCount(2), 1);
    EXPECT_EQ(m_stack.TransactionGetUndo(2, 1), c);
    EXPECT_STREQ(m_stack.TransactionGetUndo(1, 2)->GetName(), "b");
    for (const auto& [step, record] : {std::pair(0, 1), {3, 1}, {1, 0}, {1, 3}, {-1, -1}})
        EXPECT_EQ(m_stack.TransactionGetUndo(step, record), nullptr);
    EXPECT_EQ(m_stack.TransactionGetUndoCount(0), 0);
    EXPECT_EQ(m_stack.TransactionGetUndoCount(3), 0);
    m_stack.TransactionEnd(false, false);
}

TEST_F(UndoStack, EmptyRecordsAndStepsAreDroppedAtTheEnd)
{
    Step("first", {"a"});
    m_stack.Undo();
    m_log.clear();
    m_stack.TransactionBegin("nothing", false);
    Add("empty")->empty = true;
    m_stack.TransactionEnd(false, false);
    EXPECT_THAT(m_log, ElementsAre("free empty"));
    EXPECT_EQ(m_stack.GetUndoCount(), 0);
    EXPECT_EQ(m_stack.GetRedoCount(), 1) << "a step that changed nothing leaves what can be redone";
    m_stack.TransactionBegin("half", false);
    Add("none")->empty = true;
    Add("some");
    m_stack.TransactionEnd(false, false);
    EXPECT_EQ(m_stack.TransactionGetUndoCount(1), 1);
    EXPECT_EQ(m_stack.GetRedoCount(), 0);
}

TEST_F(UndoStack, RecordsAreToldOnceThatTheirTransactionHasEnded)
{
    m_stack.TransactionBegin("s", false);
    m_stack.TransactionBegin("inner", false);
    SetNumber* record = Add("a");
    m_stack.TransactionEnd(false, false);
    EXPECT_EQ(record->closed, 0);
    m_stack.TransactionEnd(false, false);
    EXPECT_EQ(record->closed, 1);
}

TEST_F(UndoStack, ANewStepDropsAndFreesWhatCouldBeRedone)
{
    Step("first", {"a"});
    Step("second", {"b"});
    m_stack.Undo();
    m_stack.Undo();
    m_log.clear();
    Step("third", {"c"});
    EXPECT_THAT(m_log, ElementsAre("free a", "free b"));
    EXPECT_THAT(m_stack.GetUndoNames(), ElementsAre("third"));
    EXPECT_THAT(m_stack.GetRedoNames(), IsEmpty());
}

TEST_F(UndoStack, NamesComeNextFirst)
{
    for (const char* name : {"one", "two", "three"})
        Step(name, {"r"});
    m_stack.Undo();
    m_stack.Undo();
    EXPECT_THAT(m_stack.GetUndoNames(), ElementsAre("one"));
    EXPECT_THAT(m_stack.GetRedoNames(), ElementsAre("two", "three"));
}

TEST_F(UndoStack, UndoAndRedoAreRefusedWhileAStepIsOpen)
{
    Step("first", {"a"});
    m_stack.TransactionBegin("open", false);
    EXPECT_FALSE(m_stack.Undo());
    EXPECT_FALSE(m_stack.Redo());
    m_stack.TransactionEnd(false, false);
    EXPECT_TRUE(m_stack.Undo());
}

TEST_F(UndoStack, CancellingUndoesAndDropsTheOutermostStep)
{
    Step("first", {"a"});
    m_stack.TransactionBegin("outer", false);
    Add("b");
    m_stack.TransactionBegin("inner", false);
    Add("c");
    m_stack.TransactionEnd(true, false);
    Add("d");
    m_stack.TransactionEnd(false, false);
    EXPECT_THAT(m_log, ElementsAre("undo d", "undo c", "undo b", "free d", "free c", "free b"));
    EXPECT_THAT(m_stack.GetUndoNames(), ElementsAre("first"));
}

TEST_F(UndoStack, AThrowingRecordLeavesTheStackAndTheOtherRecordsAsTheyWere)
{
    m_stack.TransactionBegin("s", false);
    Add("a");
    SetNumber* bad = Add("bad");
    Add("c");
    m_stack.TransactionEnd(false, false);
    bad->fails = true;
    EXPECT_FALSE(m_stack.Undo());
    EXPECT_THAT(m_log, ElementsAre("undo c", "undo bad", "redo c"));
    EXPECT_EQ(m_stack.GetUndoCount(), 1);
    EXPECT_EQ(m_stack.GetRedoCount(), 0);
    ASSERT_EQ(ZReport_Warnings().size(), 1u);
    EXPECT_THAT(ZReport_Warnings()[0], HasSubstr("the disk is gone"));
    bad->fails = false;
    EXPECT_TRUE(m_stack.Undo());
    bad->fails = true;
    m_log.clear();
    EXPECT_FALSE(m_stack.Redo());
    EXPECT_THAT(m_log, ElementsAre("redo a", "redo bad", "undo a"));
    EXPECT_EQ(m_stack.GetRedoCount(), 1);
}

TEST_F(UndoStack, AddingOutsideAStepIsMisuseAndFreesTheRecord)
{
    EXPECT_THROW(Add("lost"), ZHostMisuse);
    EXPECT_THAT(m_log, ElementsAre("free lost"));
    EXPECT_THROW(m_stack.TransactionEnd(false, false), ZHostMisuse);
}

TEST_F(UndoStack, AddingNullOrTheSameRecordTwiceIsMisuse)
{
    m_stack.TransactionBegin("s", false);
    EXPECT_THROW(m_stack.TransactionAdd(nullptr), ZHostMisuse);
    SetNumber* record = Add("a");
    EXPECT_THROW(m_stack.TransactionAdd(record), ZHostMisuse);
    m_stack.TransactionEnd(false, false);
    EXPECT_EQ(m_stack.TransactionGetUndoCount(1), 1);
    m_stack.TransactionBegin("t", false);
    EXPECT_THROW(m_stack.TransactionAdd(record), ZHostMisuse);
    m_stack.TransactionEnd(false, false);
}

TEST_F(UndoStack, ARecordThatRecordsWhileItIsUndoneIsMisuse)
{
    m_stack.TransactionBegin("s", false);
    Add("a")->then = [this] { m_stack.TransactionBegin("again", false); };
    m_stack.TransactionEnd(false, false);
    EXPECT_THROW(m_stack.Undo(), ZHostMisuse);
    EXPECT_EQ(m_stack.GetUndoCount(), 1);
    ZReport_SetMisuseFatal(false);
    EXPECT_TRUE(m_stack.Undo());
    EXPECT_EQ(ZReport_Warnings().size(), 2u); // the failed undo and the misuse
}

TEST_F(UndoStack, UndoWithinUndoIsRefused)
{
    Step("first", {"a"});
    bool inner = true;
    m_stack.TransactionBegin("second", false);
    Add("b")->then = [&] { inner = m_stack.Undo(); };
    m_stack.TransactionEnd(false, false);
    EXPECT_TRUE(m_stack.Undo());
    EXPECT_FALSE(inner);
    EXPECT_THAT(m_log, ElementsAre("undo b"));
}

TEST_F(UndoStack, DroppingTheHistorySaysWhyAndKeepsTheOpenStep)
{
    Step("first", {"a"});
    Step("second", {"b"});
    m_stack.Undo();
    m_stack.TransactionBegin("open", false);
    Add("c");
    m_log.clear();
    m_stack.DropHistory("a link was removed");
    EXPECT_THAT(m_log, ElementsAre("free b", "free a"));
    EXPECT_THAT(ZReport_Warnings(), ElementsAre("a link was removed"));
    EXPECT_TRUE(m_stack.IsTransactionOpen());
    EXPECT_EQ(m_stack.TransactionGetUndoCount(1), 1);
    m_stack.TransactionEnd(false, false);
    EXPECT_THAT(m_stack.GetUndoNames(), ElementsAre("open"));
}

TEST_F(UndoStack, DroppingNothingSaysNothing)
{
    m_stack.DropHistory("a link was removed");
    EXPECT_TRUE(ZReport_Warnings().empty());
    EXPECT_EQ(m_stack.GetChangeCount(), 0);
}

TEST_F(UndoStack, DroppingDuringAnUndoWaitsForItsEnd)
{
    Step("first", {"a"});
    m_stack.TransactionBegin("second", false);
    Add("b")->then = [this] { m_stack.DropHistory("gone"); };
    Add("c");
    m_stack.TransactionEnd(false, false);
    EXPECT_TRUE(m_stack.Undo());
    EXPECT_EQ(m_stack.GetUndoCount(), 0);
    EXPECT_EQ(m_stack.GetRedoCount(), 0);
    EXPECT_THAT(ZReport_Warnings(), ElementsAre("gone"));
}

TEST_F(UndoStack, ClearForgetsEverythingAndTheOpenStep)
{
    Step("first", {"a"});
    m_stack.TransactionBegin("open", false);
    Add("b");
    bool worked = false;
    m_stack.AfterTransaction([&worked] { worked = true; });
    m_stack.Clear();
    EXPECT_THAT(m_log, ElementsAre("free b", "free a"));
    EXPECT_FALSE(m_stack.IsTransactionOpen());
    EXPECT_FALSE(worked);
    EXPECT_TRUE(ZReport_Warnings().empty());
}

TEST_F(UndoStack, WorkWaitsForTheEndOfTheOutermostTransaction)
{
    std::vector<int> done;
    m_stack.AfterTransaction([&done] { done.push_back(1); });
    EXPECT_THAT(done, ElementsAre(1));
    m_stack.TransactionBegin("s", false);
    m_stack.TransactionBegin("inner", false);
    m_stack.AfterTransaction([&] {
        done.push_back(2);
        m_stack.AfterTransaction([&done] { done.push_back(3); });
    });
    m_stack.AfterTransaction([&done] { done.push_back(4); });
    m_stack.TransactionEnd(false, false);
    EXPECT_THAT(done, ElementsAre(1));
    m_stack.TransactionEnd(false, false);
    EXPECT_THAT(done, ElementsAre(1, 2, 3, 4));
}

TEST_F(UndoStack, WorkMayRecordAStepOfItsOwn)
{
    m_stack.TransactionBegin("s", false);
    Add("a");
    bool later = false;
    m_stack.AfterTransaction([this] { Step("work", {"w"}); });
    m_stack.AfterTransaction([&later] { later = true; });
    m_stack.TransactionEnd(false, false);
    EXPECT_THAT(m_stack.GetUndoNames(), ElementsAre("work", "s"));
    EXPECT_TRUE(later);
}

TEST_F(UndoStack, WorkThatThrowsDoesNotStopTheRest)
{
    m_stack.TransactionBegin("s", false);
    bool later = false;
    m_stack.AfterTransaction([] { throw std::runtime_error("no"); });
    m_stack.AfterTransaction([&later] { later = true; });
    EXPECT_THROW(m_stack.TransactionEnd(false, false), std::runtime_error);
    EXPECT_TRUE(later);
    EXPECT_FALSE(m_stack.IsTransactionOpen());
}

TEST_F(UndoStack, ListenersHearStepsUndoRedoAndDropsOnly)
{
    int heard = 0;
    m_stack.SetListener("desk", [&heard] { ++heard; });
    const long before = m_stack.GetChangeCount();
    Step("empty", {});
    EXPECT_EQ(heard, 0);
    EXPECT_EQ(m_stack.GetChangeCount(), before);
    Step("s", {"a"});
    m_stack.Undo();
    m_stack.Undo();
    m_stack.Redo();
    m_stack.DropHistory("dropped");
    EXPECT_EQ(heard, 4);
    EXPECT_EQ(m_stack.GetChangeCount(), before + 4);
    m_stack.SetListener("desk", {});
    Step("s", {"a"});
    EXPECT_EQ(heard, 4);
}

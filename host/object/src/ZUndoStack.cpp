// SPDX-License-Identifier: MIT
// Steps of records, and the walk between them.
#include "object/ZUndoStack.h"

#include "zbaselib/ZReport.h"

#include <deque>
#include <exception>
#include <map>
#include <unordered_set>
#include <utility>

namespace {
struct DestroyRecord
{
    void operator()(IUndo* record) const { record->Destroy(); }
};
using Record = std::unique_ptr<IUndo, DestroyRecord>;

std::string SentenceOf(const std::exception_ptr& failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& exception) {
        return exception.what();
    } catch (...) {
        return "it failed without a reason";
    }
}

bool IsMisuse(const std::exception_ptr& failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const ZHostMisuse&) {
        return true;
    } catch (...) {
        return false;
    }
}

void Move(IUndo& record, bool undo) { undo ? record.Undo() : record.Redo(); }

/// A record that cannot even say whether it is empty is kept.
bool IsEmpty(IUndo& record)
{
    try {
        return record.IsEmpty();
    } catch (...) {
        return false;
    }
}
} // namespace

struct ZUndoStack::Step
{
    std::string name;
    std::vector<Record> records;

    /// All records in the direction's order. When one throws, those before it are moved back and the failure goes on.
    void MoveAll(bool undo)
    {
        const size_t count = records.size();
        const auto at = [this, undo, count](size_t i) -> IUndo& { return *records[undo ? count - 1 - i : i]; };
        for (size_t i = 0; i < count; ++i) {
            try {
                Move(at(i), undo);
            } catch (...) {
                const std::exception_ptr failure = std::current_exception();
                while (i-- > 0)
                    MoveQuietly(at(i), !undo);
                std::rethrow_exception(failure);
            }
        }
    }
    static void MoveQuietly(IUndo& record, bool undo)
    {
        try {
            Move(record, undo);
        } catch (...) {
            ZReport_Warning(std::string("a change could not be taken back: ") + SentenceOf(std::current_exception()));
        }
    }
};

struct ZUndoStack::State
{
    std::vector<Step> done;
    std::vector<Step> undone; ///< the last is redone first
    Step open;
    bool cancelOpen = false;
    bool replaying = false;
    std::unordered_set<const IUndo*> owned;
    std::deque<std::function<void()>> waiting;
    bool working = false;
    std::map<std::string, std::function<void()>> listeners;

    void Disown(const std::vector<Record>& records)
    {
        for (const Record& record : records)
            owned.erase(record.get());
    }
    /// Frees steps, the newest first.
    void Free(std::vector<Step> steps)
    {
        while (!steps.empty()) {
            Free(std::move(steps.back().records));
            steps.pop_back();
        }
    }
    void Free(std::vector<Record> records)
    {
        Disown(records);
        while (!records.empty())
            records.pop_back();
    }
    void DropEmptyRecords(Step& step)
    {
        std::vector<Record> kept;
        kept.reserve(step.records.size());
        for (Record& record : step.records) {
            if (!IsEmpty(*record))
                kept.push_back(std::move(record));
            else
                owned.erase(record.get());
        }
        step.records = std::move(kept);
    }
};

ZUndoStack* ZUndoStack::TheOne()
{
    static ZUndoStack& stack = *new ZUndoStack;
    return &stack;
}

ZUndoStack::ZUndoStack() : m_state(std::make_unique<State>()) {}

ZUndoStack::~ZUndoStack()
{
    m_state->Free(std::move(m_state->undone));
    m_state->Free(std::move(m_state->open.records));
    m_state->Free(std::move(m_state->done));
}

void ZUndoStack::TransactionBegin(const char* name, bool)
{
    if (m_state->replaying)
        return ZReport_Misuse("ZUndoStack::TransactionBegin",
                              "a step is being undone or redone; nothing may be recorded");
    if (m_depth++ > 0)
        return;
    m_state->open = Step();
    m_state->open.name = name != nullptr ? name : "";
    m_state->cancelOpen = false;
}

void ZUndoStack::TransactionAdd(IUndo* record)
{
    const char* const call = "ZUndoStack::TransactionAdd";
    if (record == nullptr)
        return ZReport_Misuse(call, "the record is null");
    if (m_state->owned.count(record) > 0)
        return ZReport_Misuse(call, "the record is on the stack already");
    Record owned(record);
    if (m_depth == 0)
        return ZReport_Misuse(call, "no transaction is open; the record is freed");
    m_state->owned.insert(record);
    m_state->open.records.push_back(std::move(owned));
}

void ZUndoStack::TransactionEnd(bool cancel, bool)
{
    if (m_depth == 0)
        return ZReport_Misuse("ZUndoStack::TransactionEnd", "no transaction is open");
    m_state->cancelOpen = m_state->cancelOpen || cancel;
    if (--m_depth == 0)
        CloseStep();
}

void ZUndoStack::CloseStep()
{
    Step step = std::exchange(m_state->open, Step());
    if (m_state->cancelOpen) {
        m_state->replaying = true;
        for (size_t i = step.records.size(); i-- > 0;)
            Step::MoveQuietly(*step.records[i], true);
        m_state->replaying = false;
        m_state->Free(std::move(step.records));
        return RunWaitingWork();
    }
    m_state->DropEmptyRecords(step);
    const bool changed = !step.records.empty();
    if (changed) {
        m_state->done.push_back(std::move(step));
        m_state->Free(std::exchange(m_state->undone, {}));
        ++m_changeCount;
        for (const Record& record : m_state->done.back().records)
            record->TransactionClosed();
    }
    RunWaitingWork();
    if (changed)
        TellListeners();
}

void ZUndoStack::RunWaitingWork()
{
    // Work may itself record, and so come back here before it is done: the outer call goes on with the rest.
    if (m_state->working)
        return;
    m_state->working = true;
    std::exception_ptr failure;
    while (!m_state->waiting.empty() && m_depth == 0 && !m_state->replaying) {
        const auto work = std::move(m_state->waiting.front());
        m_state->waiting.pop_front();
        try {
            work();
        } catch (...) {
            failure = failure ? failure : std::current_exception();
        }
    }
    m_state->working = false;
    if (failure)
        std::rethrow_exception(failure);
}

void ZUndoStack::TellListeners()
{
    const auto asTheyAre = m_state->listeners;
    for (const auto& [name, listener] : asTheyAre)
        if (m_state->listeners.count(name) > 0)
            listener();
}

int ZUndoStack::TransactionGetCount() const { return GetUndoCount() + (m_depth > 0 ? 1 : 0); }

int ZUndoStack::TransactionGetUndoCount(int transaction) const
{
    const int closed = GetUndoCount();
    if (transaction < 1 || transaction > TransactionGetCount())
        return 0;
    const Step& step = transaction <= closed ? m_state->done[static_cast<size_t>(transaction - 1)] : m_state->open;
    return static_cast<int>(step.records.size());
}

IUndo* ZUndoStack::TransactionGetUndo(int transaction, int index) const
{
    if (index < 1 || index > TransactionGetUndoCount(transaction))
        return nullptr;
    const bool isOpen = transaction > GetUndoCount();
    const Step& step = isOpen ? m_state->open : m_state->done[static_cast<size_t>(transaction - 1)];
    return step.records[static_cast<size_t>(index - 1)].get();
}

bool ZUndoStack::Undo() { return Replay(true); }
bool ZUndoStack::Redo() { return Replay(false); }

bool ZUndoStack::Replay(bool undo)
{
    std::vector<Step>& from = undo ? m_state->done : m_state->undone;
    std::vector<Step>& to = undo ? m_state->undone : m_state->done;
    if (m_depth > 0 || m_state->replaying || from.empty())
        return false;
    std::exception_ptr failure;
    m_state->replaying = true;
    try {
        from.back().MoveAll(undo);
    } catch (...) {
        failure = std::current_exception();
    }
    m_state->replaying = false;
    if (!failure) {
        to.push_back(std::move(from.back()));
        from.pop_back();
        ++m_changeCount;
    } else {
        ZReport_Warning(std::string(undo ? "undo" : "redo") + " of \"" + from.back().name +
                        "\" failed and was taken back: " + SentenceOf(failure));
    }
    RunWaitingWork();
    if (failure && IsMisuse(failure))
        std::rethrow_exception(failure);
    if (!failure)
        TellListeners();
    return !failure;
}

int ZUndoStack::GetUndoCount() const { return static_cast<int>(m_state->done.size()); }
int ZUndoStack::GetRedoCount() const { return static_cast<int>(m_state->undone.size()); }

std::vector<std::string> ZUndoStack::GetUndoNames() const
{
    std::vector<std::string> names;
    for (auto step = m_state->done.rbegin(); step != m_state->done.rend(); ++step)
        names.push_back(step->name);
    return names;
}

std::vector<std::string> ZUndoStack::GetRedoNames() const
{
    std::vector<std::string> names;
    for (auto step = m_state->undone.rbegin(); step != m_state->undone.rend(); ++step)
        names.push_back(step->name);
    return names;
}

void ZUndoStack::DropHistory(const std::string& reason)
{
    if (m_state->replaying) {
        m_state->waiting.push_back([this, reason] { DropHistory(reason); });
        return;
    }
    if (m_state->done.empty() && m_state->undone.empty())
        return;
    m_state->Free(std::exchange(m_state->undone, {}));
    m_state->Free(std::exchange(m_state->done, {}));
    ++m_changeCount;
    ZReport_Warning(reason);
    TellListeners();
}

void ZUndoStack::Clear()
{
    if (m_state->replaying) {
        m_state->waiting.clear();
        m_state->waiting.push_back([this] { Clear(); });
        return;
    }
    const bool changed = !m_state->done.empty() || !m_state->undone.empty() || m_depth > 0;
    m_depth = 0;
    m_state->waiting.clear();
    m_state->Free(std::exchange(m_state->undone, {}));
    m_state->Free(std::exchange(m_state->open, Step()).records);
    m_state->Free(std::exchange(m_state->done, {}));
    if (!changed)
        return;
    ++m_changeCount;
    TellListeners();
}

void ZUndoStack::AfterTransaction(std::function<void()> work)
{
    if (m_depth == 0 && !m_state->replaying)
        return work();
    m_state->waiting.push_back(std::move(work));
}

void ZUndoStack::SetListener(const std::string& name, std::function<void()> listener)
{
    if (listener)
        m_state->listeners[name] = std::move(listener);
    else
        m_state->listeners.erase(name);
}

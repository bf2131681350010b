// SPDX-License-Identifier: MIT
// The host's single undo stack.
#pragma once

#include "object/IObject.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

inline constexpr int kInterfaceUndo = 9456721;

/// One change that can be taken back and made again. Owned by the undo stack once added.
class IUndo : public IObject
{
public:
    /// Frees the record.
    virtual void Destroy() = 0;
    /// Nothing would be undone: the stack drops the record when its transaction ends.
    virtual bool IsEmpty() = 0;
    /// The transaction that holds the record has ended; the record may let go of what only building needed.
    virtual void TransactionClosed() = 0;
    virtual void Undo() = 0;
    virtual void Redo() = 0;
    /// The record's own name, by which its maker knows it again.
    virtual const char* GetName() = 0;
    ~IUndo() override = default;
};

/// Transactions, as a story: TransactionBegin opens a step; records are added while it is open; a begin inside an open
/// step nests, and the inner records join the outer one; the outermost TransactionEnd closes the step. Empty records
/// and steps without records are dropped at the end. Undo runs a step's records last to first, redo first to last. A
/// new step drops what could be redone; a step that changed nothing leaves both lists as they were. A record that
/// throws leaves the stack as it was: what the step had already undone or redone is made good, and the failure is said
/// in one warning. Records do not record: a begin while a step is undone or redone is misuse. User-interface thread
/// only.
class ZUndoStack
{
public:
    static ZUndoStack* TheOne();

    /// `name` is what menus show; the outermost begin names the step. `merge` is kept for hosts that join steps: false.
    void TransactionBegin(const char* name, bool merge);
    /// Adds a record to the open step and takes ownership. Outside a step it is misuse and the record is freed.
    void TransactionAdd(IUndo* record);
    /// Closes the innermost begin. `cancel` true takes the outermost step back: its records are undone and dropped.
    void TransactionEnd(bool cancel, bool merge);
    bool IsTransactionOpen() const { return m_depth > 0; }
    int TransactionDepth() const { return m_depth; }

    /// Steps that can be undone, the open one included; they are counted from 1, the newest is the last.
    int TransactionGetCount() const;
    /// Records of step `transaction`; 0 when there is no such step.
    int TransactionGetUndoCount(int transaction) const;
    /// Record `index` (counted from 1) of step `transaction`, or null. Whoever fetches one checks its name.
    IUndo* TransactionGetUndo(int transaction, int index) const;

    /// One step back or forward; false when there is none or a step is open.
    bool Undo();
    bool Redo();
    int GetUndoCount() const;
    int GetRedoCount() const;
    /// Names of steps, next first.
    std::vector<std::string> GetUndoNames() const;
    std::vector<std::string> GetRedoNames() const;

    /// Forgets all closed steps, since records would name things that moved, and says `reason` in the report when there
    /// was something to forget. In an open step the step itself stays.
    void DropHistory(const std::string& reason);
    /// Forgets everything, the open step and work that waits for its end included, without a word. While a step is
    /// undone or redone it waits for the end of that.
    void Clear();
    /// Runs `work` now, or after the open step has ended.
    void AfterTransaction(std::function<void()> work);
    /// Counts up at every closed step, undo, redo and drop: who asks "has anything changed" compares it.
    long GetChangeCount() const { return m_changeCount; }
    /// Called after each closed step, undo, redo and drop. One listener a name; an empty function removes it.
    void SetListener(const std::string& name, std::function<void()> listener);

    ZUndoStack();
    ~ZUndoStack();
    ZUndoStack(const ZUndoStack&) = delete;
    ZUndoStack& operator=(const ZUndoStack&) = delete;

private:
    struct Step;
    struct State;
    void CloseStep();
    bool Replay(bool undo);
    void RunWaitingWork();
    void TellListeners();

    std::unique_ptr<State> m_state;
    int m_depth = 0;
    long m_changeCount = 0;
};

// SPDX-License-Identifier: MIT
// Random transactions and walks through the history, against a list of whole states.
#include "object/ZUndoStack.h"

#include <gtest/gtest.h>
#include <memory>
#include <rapidcheck/gtest.h>

namespace {
using Document = std::vector<int>;

class SetElement : public IUndo
{
public:
    SetElement(Document& document, size_t place, int value, int& living)
        : m_document(document), m_place(place), m_old(document[place]), m_new(value), m_living(living)
    {
        ++m_living;
        m_document[place] = value;
    }
    ~SetElement() override { --m_living; }
    void* IQuery(int, int) override { return nullptr; }
    void Destroy() override { delete this; }
    bool IsEmpty() override { return m_old == m_new; }
    void TransactionClosed() override {}
    void Undo() override { Change(m_new, m_old); }
    void Redo() override { Change(m_old, m_new); }
    const char* GetName() override { return "SetElement"; }

private:
    void Change(int from, int to)
    {
        RC_ASSERT(m_document[m_place] == from);
        m_document[m_place] = to;
    }
    Document& m_document;
    size_t m_place;
    int m_old, m_new;
    int& m_living;
};

/// What the stack should be: every state that a step led to, and where in them the document stands.
struct Model
{
    std::vector<Document> states;
    size_t at = 0;
};

/// One random transaction with inner ones; answers whether it was cancelled.
bool Transact(ZUndoStack& stack, Document& document, int& living, int depth)
{
    bool cancelled = false;
    stack.TransactionBegin("step", false);
    const int actions = *rc::gen::inRange(0, 4);
    for (int i = 0; i < actions; ++i) {
        if (depth < 3 && *rc::gen::inRange(0, 3) == 0) {
            cancelled = Transact(stack, document, living, depth + 1) || cancelled;
            continue;
        }
        const auto place = static_cast<size_t>(*rc::gen::inRange(0, static_cast<int>(document.size())));
        stack.TransactionAdd(new SetElement(document, place, *rc::gen::inRange(0, 3), living));
    }
    const bool cancel = *rc::gen::inRange(0, 6) == 0;
    stack.TransactionEnd(cancel, false);
    return cancelled || cancel;
}

void Record(ZUndoStack& stack, Document& document, Model& model, int& living)
{
    const int before = stack.GetUndoCount();
    const bool cancelled = Transact(stack, document, living, 0);
    if (cancelled) {
        RC_ASSERT(document == model.states[model.at]);
        RC_ASSERT(stack.GetUndoCount() == before);
    } else if (stack.GetUndoCount() > before) {
        model.states.resize(++model.at);
        model.states.push_back(document);
    } else {
        RC_ASSERT(document == model.states[model.at]);
    }
}
} // namespace

RC_GTEST_PROP(UndoStackProperty, EveryWalkLeadsBackToTheStatesThatWere, ())
{
    int living = 0;
    {
        ZUndoStack stack;
        Document document(4, 0);
        Model model{{document}, 0};
        const int moves = *rc::gen::inRange(0, 40);
        for (int i = 0; i < moves; ++i) {
            switch (*rc::gen::inRange(0, 4)) {
            case 0:
                RC_ASSERT(stack.Undo() == (model.at > 0));
                model.at -= model.at > 0 ? 1 : 0;
                break;
            case 1:
                RC_ASSERT(stack.Redo() == (model.at + 1 < model.states.size()));
                model.at += model.at + 1 < model.states.size() ? 1 : 0;
                break;
            default:
                Record(stack, document, model, living);
                break;
            }
            RC_ASSERT(document == model.states[model.at]);
            RC_ASSERT(stack.GetUndoCount() == static_cast<int>(model.at));
            RC_ASSERT(stack.GetRedoCount() == static_cast<int>(model.states.size() - model.at - 1));
            RC_ASSERT(!stack.IsTransactionOpen());
        }
    }
    RC_ASSERT(living == 0); // every record was freed once
}

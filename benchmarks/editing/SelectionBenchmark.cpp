// SPDX-License-Identifier: MIT
// Picks of all vertices, whatever the order of the batch: the work grows linearly.
#include "editing/LoadedCharacter.h"
#include "support/PlainCopy.h"

#include <algorithm>
#include <random>

namespace {

enum Order
{
    kAscending,
    kDescending,
    kRandom
};

ZArrayTemplate<int> Batch(int vertices, int order)
{
    std::vector<int> numbers(static_cast<size_t>(vertices));
    std::iota(numbers.begin(), numbers.end(), 0);
    if (order == kDescending)
        std::reverse(numbers.begin(), numbers.end());
    else if (order == kRandom)
        std::shuffle(numbers.begin(), numbers.end(), std::mt19937(7));
    ZArrayTemplate<int> batch;
    batch.Reserve(2 * vertices);
    for (const int vertex : numbers) {
        batch.Add(0);
        batch.Add(vertex);
    }
    return batch;
}

struct Times
{
    double select = 0, collect = 0, toggle = 0, deselect = 0, undo = 0;
};

Times MeasureOnce(int vertices, int order)
{
    LargeSkin skin;
    skin.vertices = vertices;
    skin.influences = 1;
    LoadedCharacter loaded(skin);
    const ZArrayTemplate<int> ascending = Batch(vertices, kAscending);
    const ZArrayTemplate<int> batch = Batch(vertices, order);
    ZUndoStack& stack = *ZUndoStack::TheOne();
    ZWeightSelection& selection = loaded.tool.selection;
    const auto pick = [&](const ZArrayTemplate<int>& pairs, int code) {
        return Bench_Time([&] {
            stack.TransactionBegin("", false);
            selection.PickSelect(pairs, code);
            stack.TransactionEnd(false, false);
        });
    };
    Times times;
    times.select = pick(batch, kPickAdd);
    times.collect = Bench_Time([&] { selection.SyncPanelSelection(); });
    times.deselect = pick(batch, kPickRemove);
    // Lists in one order, the batch in another.
    pick(ascending, kPickAdd);
    times.toggle = pick(batch, kPickToggle);
    times.undo = Bench_Time([&] { stack.Undo(); });
    return times;
}

/// Of each figure the median of some rounds: one alone hangs on whether the system had pages at hand.
Times Measure(int vertices, int order)
{
    std::vector<Times> rounds;
    for (int round = 0; round < 5; ++round)
        rounds.push_back(MeasureOnce(vertices, order));
    const auto median = [&rounds](double Times::*figure) {
        std::nth_element(rounds.begin(), rounds.begin() + 2, rounds.end(),
                         [figure](const Times& a, const Times& b) { return a.*figure < b.*figure; });
        return rounds[2].*figure;
    };
    return {median(&Times::select), median(&Times::collect), median(&Times::toggle), median(&Times::deselect),
            median(&Times::undo)};
}

void PickAllFourMillionToOne(benchmark::State& state)
{
    const int order = static_cast<int>(state.range(0));
    for (auto iteration : state) {
        static_cast<void>(iteration);
        const Times one = Measure(1000000, order);
        const Times four = Measure(4000000, order);
        state.counters["select"] = four.select / one.select;
        state.counters["collect"] = four.collect / one.collect;
        state.counters["toggle"] = four.toggle / one.toggle;
        state.counters["deselect"] = four.deselect / one.deselect;
        state.counters["undo"] = four.undo / one.undo;
        state.counters["ns_select"] = four.select / 4e6 * 1e9;
        state.counters["ns_toggle"] = four.toggle / 4e6 * 1e9;
        state.counters["ns_deselect"] = four.deselect / 4e6 * 1e9;
        state.SetIterationTime(four.select);
    }
}

BENCHMARK(PickAllFourMillionToOne)
    ->ArgName("order")
    ->Arg(kAscending)
    ->Arg(kDescending)
    ->Arg(kRandom)
    ->Iterations(1)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace

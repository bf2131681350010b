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

/// Seconds of each gesture, or how many times as long it took.
struct Times
{
    double select = 0, collect = 0, toggle = 0, deselect = 0, undo = 0;
    double collectApart = 0; ///< rows in rising order, active vertices in that of the batch
};
constexpr double Times::*kFigures[] = {&Times::select,   &Times::collect, &Times::toggle,
                                       &Times::deselect, &Times::undo,    &Times::collectApart};

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
        Bench_HavePagesAtHand(48 * static_cast<size_t>(vertices));
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
    selection.PickActivate(batch, kPickRemove);
    selection.PickActivate(batch, kPickAdd);
    times.collectApart = Bench_Time([&] { selection.SyncPanelSelection(); });
    return times;
}

/// Of each figure the median: one alone hangs on what else the machine does.
Times Median(std::vector<Times> rounds)
{
    Times median;
    const auto middle = rounds.begin() + static_cast<std::ptrdiff_t>(rounds.size() / 2);
    for (double Times::*figure : kFigures) {
        std::nth_element(rounds.begin(), middle, rounds.end(),
                         [figure](const Times& a, const Times& b) { return a.*figure < b.*figure; });
        median.*figure = (*middle).*figure;
    }
    return median;
}

void PickAllFourMillionToOne(benchmark::State& state)
{
    const int order = static_cast<int>(state.range(0));
    for (auto iteration : state) {
        static_cast<void>(iteration);
        std::vector<Times> seconds;
        std::vector<Times> ratios;
        // Both sizes in turn: a processor that changes its pace changes it for both.
        for (int round = 0; round < 7; ++round) {
            const Times one = MeasureOnce(1000000, order);
            const Times four = MeasureOnce(4000000, order);
            seconds.push_back(four);
            Times& ratio = ratios.emplace_back();
            for (double Times::*figure : kFigures)
                ratio.*figure = four.*figure / one.*figure;
        }
        const Times four = Median(seconds);
        const Times ratio = Median(ratios);
        state.counters["select"] = ratio.select;
        state.counters["collect"] = ratio.collect;
        state.counters["collect_apart"] = ratio.collectApart;
        state.counters["toggle"] = ratio.toggle;
        state.counters["deselect"] = ratio.deselect;
        state.counters["undo"] = ratio.undo;
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

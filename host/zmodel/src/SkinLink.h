// SPDX-License-Identifier: MIT
// What a skin keeps for one link, and for itself.
#pragma once

#include "EntryIndex.h"
#include "RisingRuns.h"
#include "TouchedLog.h"
#include "zbaselib/ZMemory.h"
#include "zmodel/ZModel.h"
#include "zmodel/ZSkin.h"

#include <algorithm>
#include <functional>
#include <span>
#include <unordered_map>

struct ZSkin::Link
{
    Link(ZModel* followed, const ZgeMatrix& exact) : bone(followed) { SetBind(exact); }

    void SetBind(const ZgeMatrix& exact)
    {
        inverseBind = exact;
        answered = ZgeDecompose(exact);
    }
    void Append(int vertex, double weight)
    {
        runs.Append(vertices.GetCount(), vertex);
        vertices.Add(vertex);
        weights.Add(weight);
        if (index.IsBuilt())
            index.Appended(vertices, vertices.GetCount() - 1);
    }
    /// The same for many at once; all of them are vertices of the owner.
    void AppendMany(const int* newVertices, const double* newWeights, int count)
    {
        const int begin = vertices.GetCount();
        ReserveMore(count);
        vertices.SetCountUninitialised(begin + count);
        weights.SetCountUninitialised(begin + count);
        std::copy_n(newVertices, count, vertices.GetData() + begin);
        std::copy_n(newWeights, count, weights.GetData() + begin);
        for (int i = 0; i < count; ++i)
            runs.Append(begin + i, newVertices[i]);
        if (index.IsBuilt())
            index.Appended(vertices, begin);
    }
    void ReserveMore(int more)
    {
        ZMemory_ReserveMore(vertices, more);
        ZMemory_ReserveMore(weights, more);
    }
    int Find(int vertex)
    {
        const int near = runs.Find(vertices.GetData(), vertices.GetCount(), vertex);
        if (near != RisingRuns::kUnknown)
            return near;
        if (!index.IsBuilt())
            index.Build(vertices);
        const int entry = index.Find(vertices, vertex);
        if (entry >= 0)
            runs.GoTo(entry);
        return entry;
    }
    /// The same for each of `wanted`; -1 where there is none.
    void FindMany(std::span<const int> wanted, int* entries)
    {
        const bool rises = std::adjacent_find(wanted.begin(), wanted.end(), std::greater_equal<>()) == wanted.end();
        if (rises && runs.FindRising(vertices.GetData(), vertices.GetCount(), wanted, entries))
            return;
        for (size_t i = 0; i < wanted.size(); ++i)
            entries[i] = Find(wanted[i]);
    }
    static constexpr int kBlock = 128;
    /// Sets the weights of at most kBlock vertices, in order, and answers how many differed from what was there: those
    /// vertices stand in `changed`. Vertices without an entry are passed over and counted.
    size_t SetBlock(std::span<const int> wanted, const double* newWeights, int* changed, int& passedOver)
    {
        const int first = runs.FindStretch(vertices.GetData(), vertices.GetCount(), wanted);
        if (first >= 0)
            return SetStretch(first, wanted, newWeights, changed);
        constexpr size_t kLineOfDoubles = 8; // on one cache line
        double* const held = weights.GetData();
        int entries[kBlock];
        FindMany(wanted, entries);
        for (size_t i = 0; i < wanted.size(); i += kLineOfDoubles)
            __builtin_prefetch(held + std::max(entries[i], 0), 1);
        size_t changedCount = 0;
        for (size_t i = 0; i < wanted.size(); ++i) {
            if (entries[i] < 0) {
                ++passedOver;
            } else if (held[entries[i]] != newWeights[i]) {
                held[entries[i]] = newWeights[i];
                changed[changedCount++] = wanted[i];
            }
        }
        return changedCount;
    }
    /// Of entries side by side, without branches.
    size_t SetStretch(int first, std::span<const int> wanted, const double* newWeights, int* changed)
    {
        double* const held = weights.GetData() + first;
        size_t changedCount = 0;
        for (size_t i = 0; i < wanted.size(); ++i) {
            changed[changedCount] = wanted[i];
            changedCount += held[i] != newWeights[i] ? 1 : 0;
            held[i] = newWeights[i];
        }
        return changedCount;
    }
    /// The memory of the arrays is kept: who clears a link mostly fills it again.
    void Clear()
    {
        vertices.RemoveAll();
        weights.RemoveAll();
        index.Drop();
        runs.Restart();
        ++clearings;
    }

    ZArrayTemplate<int> vertices;
    ZArrayTemplate<double> weights;
    unsigned clearings = 0;
    RisingRuns runs;
    EntryIndex index; ///< built when the runs do not know
    ZModel* bone;
    int option = 0;
    ZgeMatrix inverseBind; ///< exact, as the file has it
    ZgeTRS answered;       ///< what LinkBindTransform answers of it
};

struct ZSkin::State
{
    ZModel* owner = nullptr;
    int mode = kDeformNormalise;
    double displayValue = -1;
    std::vector<std::unique_ptr<Link>> links;
    std::unordered_map<const ZTransformNode*, int> linkOfBone; ///< first link of each bone
    std::uint64_t linkVersion = 1;
    TouchedLog touched; ///< vertices whose weights changed
    int normalisedCount = 0;
    std::vector<double> sumsBefore; ///< of every vertex when a rewrite began

    void IndexBones();
    std::string OwnerName() const { return owner != nullptr ? owner->GetObjectName() : std::string(); }
    std::vector<double> SumWeights(int vertexCount) const;
};

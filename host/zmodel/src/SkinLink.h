// SPDX-License-Identifier: MIT
// What a skin keeps for one link, and for itself.
#pragma once

#include "EntryIndex.h"
#include "TouchedLog.h"
#include "zmodel/ZModel.h"
#include "zmodel/ZSkin.h"

#include <algorithm>
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
        ascending = ascending && vertex > highest;
        highest = vertex > highest ? vertex : highest;
        vertices.Add(vertex);
        weights.Add(weight);
        if (index.IsBuilt())
            index.Appended(vertices, vertices.GetCount() - 1);
    }
    /// The same for many at once; all of them are vertices of the owner.
    void AppendMany(const int* newVertices, const double* newWeights, int count)
    {
        const int begin = vertices.GetCount();
        vertices.ReserveMore(count);
        weights.ReserveMore(count);
        vertices.SetCountUninitialised(begin + count);
        weights.SetCountUninitialised(begin + count);
        std::copy_n(newVertices, count, vertices.GetData() + begin);
        std::copy_n(newWeights, count, weights.GetData() + begin);
        for (int i = 0; i < count; ++i) {
            ascending = ascending && newVertices[i] > highest;
            highest = std::max(highest, newVertices[i]);
        }
        if (index.IsBuilt())
            index.Appended(vertices, begin);
    }
    /// Whoever asks for vertices in rising order mostly asks for one of the next few entries: those are in the same
    /// cache line, and as long as that goes well no index is needed at all.
    int Find(int vertex)
    {
        if (ascending) {
            const int count = vertices.GetCount();
            const int end = count - cursor > kLookAhead ? cursor + kLookAhead : count;
            const int* const all = vertices.GetData();
            int entry = cursor;
            while (entry < end && all[entry] < vertex)
                ++entry;
            if (entry < end && all[entry] == vertex)
                return cursor = entry;
            if (entry > cursor && entry < end) {
                cursor = entry - 1; // it lies between two neighbours
                return -1;
            }
            if (vertex > highest)
                return -1;
        }
        if (!index.IsBuilt())
            index.Build(vertices);
        const int entry = index.Find(vertices, vertex);
        cursor = entry >= 0 ? entry : cursor;
        return entry;
    }
    /// The memory of the arrays is kept: who clears a link mostly fills it again.
    void Clear()
    {
        vertices.RemoveAll();
        weights.RemoveAll();
        index.Drop();
        RestartOrder();
        ++clearings;
    }
    void RestartOrder()
    {
        ascending = true;
        highest = -1;
        cursor = 0;
    }

    static constexpr int kLookAhead = 16;

    ZArrayTemplate<int> vertices;
    ZArrayTemplate<double> weights;
    bool ascending = true;
    int highest = -1; ///< vertex, while ascending
    int cursor = 0;   ///< where Find begins to look
    unsigned clearings = 0;
    EntryIndex index;
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

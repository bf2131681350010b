// SPDX-License-Identifier: MIT
// The memory of a model's influence records: side by side, in the order of the vertices.
#pragma once

#include "weights/VertexInfluences.h"

#include <array>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <vector>

/// One stretch of memory for the records of all vertices, each on a cache line of its own. Records come to life in
/// order, a stretch at a time, so that a pass that fills them writes fresh memory once. What a record holds beyond four
/// influences stands in further stretches, links and weights side by side: on one cache line up to eight.
class VertexInfluencesSlab
{
public:
    VertexInfluencesSlab() = default;
    ~VertexInfluencesSlab() { Free(); }
    VertexInfluencesSlab(const VertexInfluencesSlab&) = delete;
    VertexInfluencesSlab& operator=(const VertexInfluencesSlab&) = delete;

    /// Memory for `count` records, none of them alive; what was there is freed. Throws std::bad_alloc.
    void Allocate(int count);
    /// Brings the records below `end` to life, empty.
    void ConstructUpTo(int end);
    void Free();
    /// Room for `count` influences in a living record, at least. Throws std::bad_alloc; then the record is as it was.
    void MakeRoom(VertexInfluences& record, int count)
    {
        if (count > record.links.GetCapacity() || count > record.weights.GetCapacity())
            MoveToPiece(record, count);
    }
    /// Appends an influence to a living record.
    void Add(VertexInfluences& record, int link, float weight)
    {
        MakeRoom(record, record.GetCount() + 1);
        record.Add(link, weight);
    }

    int GetCount() const { return m_count; }
    /// Only records that are alive may be touched.
    VertexInfluences* GetData() { return m_records; }
    /// The records and what they keep on the heap.
    size_t GetByteCount() const;

private:
    struct HeapFree
    {
        void operator()(unsigned char* memory) const { std::free(memory); }
    };
    using Stretch = std::unique_ptr<unsigned char, HeapFree>;

    void MoveToPiece(VertexInfluences& record, int count);
    unsigned char* TakePiece(int sizeClass);
    void GiveBack(unsigned char* piece, int sizeClass);
    void AddStretch(size_t least);

    VertexInfluences* m_records = nullptr;
    int m_count = 0;
    int m_alive = 0;

    // Pieces for 2 to the power of a size class influences each.
    std::vector<Stretch> m_stretches;
    unsigned char* m_fresh = nullptr; ///< what the last stretch has left
    size_t m_freshBytes = 0;
    size_t m_stretchBytes = 0;               ///< of the last stretch
    std::array<unsigned char*, 32> m_free{}; ///< by size class: each free piece begins with the address of the next
};

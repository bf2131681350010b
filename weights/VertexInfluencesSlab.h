// SPDX-License-Identifier: MIT
// The memory of a model's influence records: side by side, in the order of the vertices.
#pragma once

#include "weights/VertexInfluences.h"

#include <cstddef>

/// One stretch of memory for the records of all vertices, each on a cache line of its own. Records come to life in
/// order, a stretch at a time, so that a pass that fills them writes fresh memory once.
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

    int GetCount() const { return m_count; }
    /// Only records that are alive may be touched.
    VertexInfluences* GetData() { return m_records; }
    /// The records and what they keep on the heap.
    size_t GetByteCount() const;

private:
    VertexInfluences* m_records = nullptr;
    int m_count = 0;
    int m_alive = 0;
};

// SPDX-License-Identifier: MIT
#include "weights/VertexInfluencesSlab.h"

#include <memory>
#include <new>

namespace {
constexpr std::align_val_t kCacheLine{64};
}

void VertexInfluencesSlab::Allocate(int count)
{
    Free();
    if (count <= 0)
        return;
    m_records = static_cast<VertexInfluences*>(
        ::operator new(sizeof(VertexInfluences) * static_cast<size_t>(count), kCacheLine));
    m_count = count;
}

void VertexInfluencesSlab::ConstructUpTo(int end)
{
    for (; m_alive < end; ++m_alive)
        new (m_records + m_alive) VertexInfluences;
}

void VertexInfluencesSlab::Free()
{
    std::destroy_n(m_records, m_alive);
    ::operator delete(static_cast<void*>(m_records), kCacheLine);
    m_records = nullptr;
    m_count = 0;
    m_alive = 0;
}

size_t VertexInfluencesSlab::GetByteCount() const
{
    size_t bytes = sizeof(VertexInfluences) * static_cast<size_t>(m_count);
    for (int i = 0; i < m_alive; ++i)
        bytes += m_records[i].links.GetHeapBytes() + m_records[i].weights.GetHeapBytes();
    return bytes;
}

// SPDX-License-Identifier: MIT
#include "weights/VertexInfluencesSlab.h"

#include "zbaselib/ZMemory.h"

#include <algorithm>
#include <bit>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

namespace {

constexpr size_t kCacheLine = 64;
constexpr size_t kFirstStretch = 4096;
constexpr size_t kLongestStretch = size_t{32} << 20;
/// Stretches that begin with a large page consist of large pages.
constexpr size_t kLargePage = size_t{2} << 20;

constexpr int kSmallestClass = 3; // a record itself has room for four influences

constexpr size_t PieceBytes(int sizeClass) { return (sizeof(int) + sizeof(float)) << static_cast<unsigned>(sizeClass); }
/// The smallest with room for `count` influences.
int ClassOf(int count) { return static_cast<int>(std::bit_width(static_cast<unsigned>(count) - 1)); }
unsigned char* BytesOf(int* links) { return reinterpret_cast<unsigned char*>(links); }

} // namespace

void VertexInfluencesSlab::Allocate(int count)
{
    Free();
    if (count <= 0)
        return;
    const size_t bytes = sizeof(VertexInfluences) * static_cast<size_t>(count);
    m_records = static_cast<VertexInfluences*>(::operator new (bytes, std::align_val_t{kCacheLine}));
    ZMemory_ExpectAnyOrder(m_records, bytes);
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
    ::operator delete (static_cast<void*>(m_records), std::align_val_t{kCacheLine});
    m_records = nullptr;
    m_count = 0;
    m_alive = 0;
    m_stretches.clear();
    m_fresh = nullptr;
    m_freshBytes = 0;
    m_stretchBytes = 0;
    m_free = {};
}

void VertexInfluencesSlab::MoveToPiece(VertexInfluences& record, int count)
{
    const int sizeClass = std::max(kSmallestClass, ClassOf(count));
    const int capacity = 1 << sizeClass;
    unsigned char* const piece = TakePiece(sizeClass);
    unsigned char* const old = record.links.IsBorrowed() ? BytesOf(record.links.GetData()) : nullptr;
    const int oldClass = ClassOf(record.links.GetCapacity());
    record.links.Borrow(reinterpret_cast<int*>(piece), capacity);
    record.weights.Borrow(reinterpret_cast<float*>(piece + sizeof(int) * static_cast<size_t>(capacity)), capacity);
    if (old != nullptr)
        GiveBack(old, oldClass);
}

unsigned char* VertexInfluencesSlab::TakePiece(int sizeClass)
{
    unsigned char*& free = m_free[static_cast<size_t>(sizeClass)];
    if (free != nullptr) {
        unsigned char* const piece = free;
        std::memcpy(&free, piece, sizeof(free));
        return piece;
    }
    const size_t bytes = PieceBytes(sizeClass);
    if (m_freshBytes < bytes)
        AddStretch(bytes);
    unsigned char* const piece = m_fresh;
    m_fresh += bytes;
    m_freshBytes -= bytes;
    return piece;
}

void VertexInfluencesSlab::GiveBack(unsigned char* piece, int sizeClass)
{
    std::memcpy(piece, &m_free[static_cast<size_t>(sizeClass)], sizeof(piece));
    m_free[static_cast<size_t>(sizeClass)] = piece;
}

/// Each is twice as long as the one before, so that a few vertices take little memory and millions take few stretches.
void VertexInfluencesSlab::AddStretch(size_t least)
{
    const size_t length = std::clamp(2 * m_stretchBytes, kFirstStretch, kLongestStretch);
    const size_t alignment = std::max(length, least) >= kLargePage ? kLargePage : kCacheLine;
    const size_t bytes = (std::max(length, least) + alignment - 1) / alignment * alignment;
    Stretch stretch(static_cast<unsigned char*>(std::aligned_alloc(alignment, bytes)));
    if (stretch == nullptr)
        throw std::bad_alloc();
    ZMemory_ExpectAnyOrder(stretch.get(), bytes);
    m_stretches.push_back(std::move(stretch));
    m_fresh = m_stretches.back().get();
    m_freshBytes = bytes;
    m_stretchBytes = length;
}

size_t VertexInfluencesSlab::GetByteCount() const
{
    size_t bytes = sizeof(VertexInfluences) * static_cast<size_t>(m_count);
    for (int i = 0; i < m_alive; ++i)
        bytes += m_records[i].links.GetHeapBytes() + m_records[i].weights.GetHeapBytes();
    return bytes;
}

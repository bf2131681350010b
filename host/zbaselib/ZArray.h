// SPDX-License-Identifier: MIT
// The host's growable array of plain values.
#pragma once

#include <algorithm>
#include <cassert>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <new>
#include <span>
#include <type_traits>

/// A growable array of trivially copyable values. The second argument is the number of bytes that are kept inside the
/// array itself, so `ZArrayTemplate<int, 16>` holds four ints without an allocation; longer contents move to the heap.
/// Counts and indices are signed 32-bit; a missing index is -1. Indices are asserted, not checked: whoever takes an
/// index from outside checks it first. Running out of memory throws std::bad_alloc and leaves the array as it was.
template <class T, int InlineBytes = 0> class ZArrayTemplate
{
    static_assert(std::is_trivially_copyable_v<T>, "ZArrayTemplate moves its elements as bytes");

public:
    // What the standard library's algorithms and test matchers ask of a container.
    using value_type = T;
    using iterator = T*;
    using const_iterator = const T*;
    size_t size() const { return static_cast<size_t>(m_count); }
    bool empty() const { return m_count == 0; }

    static constexpr int kInlineCount = InlineBytes / static_cast<int>(sizeof(T));

    ZArrayTemplate() = default;
    ZArrayTemplate(std::initializer_list<T> values) { Assign(values.begin(), static_cast<int>(values.size())); }
    ZArrayTemplate(const ZArrayTemplate& other) { Assign(other.m_data, other.m_count); }
    ZArrayTemplate(ZArrayTemplate&& other) noexcept { Take(other); }
    ~ZArrayTemplate() { FreeHeap(); }

    ZArrayTemplate& operator=(const ZArrayTemplate& other)
    {
        if (this != &other)
            Assign(other.m_data, other.m_count);
        return *this;
    }
    ZArrayTemplate& operator=(ZArrayTemplate&& other) noexcept
    {
        if (this != &other) {
            FreeHeap();
            Take(other);
        }
        return *this;
    }

    int GetCount() const { return m_count; }
    bool IsEmpty() const { return m_count == 0; }
    int GetCapacity() const { return m_capacity; }

    T* GetData() { return m_data; }
    const T* GetData() const { return m_data; }
    T* begin() { return m_data; }
    T* end() { return m_data + m_count; }
    const T* begin() const { return m_data; }
    const T* end() const { return m_data + m_count; }
    std::span<T> Span() { return {m_data, static_cast<size_t>(m_count)}; }
    std::span<const T> Span() const { return {m_data, static_cast<size_t>(m_count)}; }

    T& operator[](int index)
    {
        assert(index >= 0 && index < m_count);
        return m_data[index];
    }
    const T& operator[](int index) const
    {
        assert(index >= 0 && index < m_count);
        return m_data[index];
    }

    /// Appends and answers the new element's index.
    int Add(const T& value)
    {
        const T copy = value; // the value may live in this very array
        if (m_count == m_capacity)
            Grow(m_count + 1);
        m_data[m_count] = copy;
        return m_count++;
    }
    /// Inserts before `index`; `index` == GetCount() appends.
    void InsertAt(int index, const T& value)
    {
        assert(index >= 0 && index <= m_count);
        const T copy = value;
        if (m_count == m_capacity)
            Grow(m_count + 1);
        std::memmove(static_cast<void*>(m_data + index + 1), m_data + index,
                     sizeof(T) * static_cast<size_t>(m_count - index));
        m_data[index] = copy;
        ++m_count;
    }
    void RemoveAt(int index)
    {
        assert(index >= 0 && index < m_count);
        --m_count;
        std::memmove(static_cast<void*>(m_data + index), m_data + index + 1,
                     sizeof(T) * static_cast<size_t>(m_count - index));
    }
    /// Forgets all elements and keeps the memory.
    void RemoveAll() { m_count = 0; }
    /// Forgets all elements and gives heap memory back.
    void Release()
    {
        FreeHeap();
        Reset();
    }
    /// The first index after `after` whose element equals `value`, or -1.
    int Find(const T& value, int after = -1) const
    {
        for (int i = after + 1; i < m_count; ++i)
            if (m_data[i] == value)
                return i;
        return -1;
    }
    /// Makes room for `capacity` elements at once.
    void Reserve(int capacity)
    {
        if (capacity > m_capacity)
            Reallocate(capacity);
    }
    /// Makes room for `more` further elements; grows by half at least, so that asking again and again stays linear.
    void ReserveMore(int more)
    {
        const int limit = std::numeric_limits<int>::max();
        const int needed = more > limit - m_count ? limit : m_count + more;
        if (needed > m_capacity)
            Reallocate(std::max(needed, m_capacity > limit / 3 * 2 ? limit : m_capacity + m_capacity / 2));
    }
    /// Gives back room that the contents do not need, mostly in place; without memory for a smaller place it stays.
    void ShrinkToFit()
    {
        if (IsInline() || IsBorrowed() || m_count == m_capacity)
            return;
        if (m_count <= kInlineCount) {
            const ZArrayTemplate inlined(*this);
            Release();
            Assign(inlined.m_data, inlined.m_count);
            return;
        }
        void* const fitting = std::realloc(static_cast<void*>(m_data), sizeof(T) * static_cast<size_t>(m_count));
        if (fitting == nullptr)
            return;
        m_data = static_cast<T*>(fitting);
        m_capacity = m_count;
    }
    /// Sets the count; new elements are value-initialised (zero for numbers).
    void SetCount(int count)
    {
        assert(count >= 0);
        Reserve(count);
        for (int i = m_count; i < count; ++i)
            m_data[i] = T();
        m_count = count;
    }
    /// Sets the count and leaves new elements unwritten, for a caller that writes every one of them next.
    void SetCountUninitialised(int count)
    {
        assert(count >= 0);
        Reserve(count);
        m_count = count;
    }
    void Fill(const T& value) { std::fill(begin(), end(), value); }
    /// Replaces the contents by `count` values from `values`, which may not overlap this array.
    void Assign(const T* values, int count)
    {
        if (count > m_capacity) {
            m_count = 0;
            Reallocate(count);
        }
        if (count > 0)
            std::memcpy(static_cast<void*>(m_data), values, sizeof(T) * static_cast<size_t>(count));
        m_count = count;
    }
    /// Removes every element for which `gone(element)` holds; the others keep their order. One pass.
    template <class Predicate> int RemoveIf(Predicate gone)
    {
        T* const last = std::remove_if(begin(), end(), gone);
        const int removed = static_cast<int>(end() - last);
        m_count -= removed;
        return removed;
    }
    /// Moves the contents to `memory`, which has room for `capacity` elements, more than the contents are and more than
    /// the array keeps inside itself. It belongs to somebody else, who keeps it for as long as this array, or one that
    /// its contents are moved to, uses it: until it outgrows it, is released or ends.
    void Borrow(T* memory, int capacity)
    {
        static_assert(kInlineCount > 0, "an array that can borrow says so in the memory that it keeps inside itself");
        assert(capacity >= m_count && capacity > kInlineCount);
        if (m_count > 0)
            std::memcpy(static_cast<void*>(memory), m_data, sizeof(T) * static_cast<size_t>(m_count));
        FreeHeap();
        m_data = memory;
        m_capacity = capacity;
        m_inline[0] = kBorrowed;
    }
    bool IsBorrowed() const { return kInlineCount > 0 && !IsInline() && m_inline[0] == kBorrowed; }
    /// Bytes on the heap beside the array object itself, borrowed ones included.
    size_t GetHeapBytes() const { return IsInline() ? 0 : sizeof(T) * static_cast<size_t>(m_capacity); }

    friend bool operator==(const ZArrayTemplate& a, const ZArrayTemplate& b)
    {
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

private:
    /// Whose memory it is, in the first inline byte while the contents stand elsewhere.
    static constexpr unsigned char kOwned = 0;
    static constexpr unsigned char kBorrowed = 1;
    static constexpr size_t kInlineStorage = kInlineCount > 0 ? sizeof(T) * static_cast<size_t>(kInlineCount) : 1;

    T* InlineData() { return kInlineCount > 0 ? reinterpret_cast<T*>(m_inline) : nullptr; }
    bool IsInline() const { return m_capacity <= kInlineCount; }
    void Reset()
    {
        m_data = InlineData();
        m_count = 0;
        m_capacity = kInlineCount;
    }
    void FreeHeap()
    {
        if (!IsInline() && !IsBorrowed())
            std::free(static_cast<void*>(m_data));
    }
    void Take(ZArrayTemplate& other)
    {
        if (other.IsInline()) {
            Reset();
            m_count = other.m_count;
            if constexpr (kInlineCount > 0)
                std::memcpy(static_cast<void*>(m_data), other.m_data, sizeof(T) * static_cast<size_t>(m_count));
            other.m_count = 0;
            return;
        }
        m_data = other.m_data;
        m_count = other.m_count;
        m_capacity = other.m_capacity;
        m_inline[0] = other.m_inline[0];
        other.Reset();
    }
    void Grow(int needed)
    {
        const int limit = std::numeric_limits<int>::max();
        const int doubled = m_capacity > limit / 2 ? limit : m_capacity * 2;
        Reallocate(std::max({needed, doubled, 4}));
    }
    void Reallocate(int capacity)
    {
        const size_t bytes = sizeof(T) * static_cast<size_t>(capacity);
        const bool isOurs = !IsInline() && !IsBorrowed();
        void* const grown = isOurs ? std::realloc(static_cast<void*>(m_data), bytes) : std::malloc(bytes);
        if (grown == nullptr)
            throw std::bad_alloc();
        if (!isOurs && m_count > 0)
            std::memcpy(grown, m_data, sizeof(T) * static_cast<size_t>(m_count));
        m_data = static_cast<T*>(grown);
        m_capacity = capacity;
        m_inline[0] = kOwned;
    }

    T* m_data = InlineData();
    int m_count = 0;
    int m_capacity = kInlineCount;
    alignas(T) unsigned char m_inline[kInlineStorage];
};

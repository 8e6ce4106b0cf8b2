// SPDX-License-Identifier: MIT
// The growable array of the library: contiguous elements in one reference-counted block.
#ifndef VOK_BASE_ARR_H
#define VOK_BASE_ARR_H

#include <cstring>
#include <limits>
#include <new>
#include <type_traits>
#include <utility>

#include "vok/base/mem.h"

namespace vok {

// Elements are plain values that may be moved as bytes. Two arrays can share one block
// (Share); the first operation that modifies one of them makes it a copy of its own.
// An element past the end must not be named: operator() does not check. Growth raises
// the allocation errors of Mem and then leaves the array as it was.
//
// Different arrays may be used by different threads, even when they share a block.
template <class T>
class Arr {
    static_assert(std::is_trivially_copyable_v<T>, "elements are moved as bytes");

  public:
    Arr() noexcept = default;
    Arr(Arr&& oArr) noexcept
        : m_pData(std::exchange(oArr.m_pData, nullptr)),
          m_uSize(std::exchange(oArr.m_uSize, 0)),
          m_uCapacity(std::exchange(oArr.m_uCapacity, 0)) {}
    Arr& operator=(Arr&& oArr) noexcept {
        Swap(oArr);
        return *this;
    }
    Arr(const Arr&) = delete;
    Arr& operator=(const Arr&) = delete;
    ~Arr() { Release(); }

    // Refers to the elements of oArr without copying them.
    void Share(const Arr& oArr) noexcept {
        if (this == &oArr) return;
        if (oArr.m_pData != nullptr) Mem::AddRef(oArr.m_pData);
        Release();
        m_pData = oArr.m_pData;
        m_uSize = oArr.m_uSize;
        m_uCapacity = oArr.m_uCapacity;
    }
    void Swap(Arr& oArr) noexcept {
        std::swap(m_pData, oArr.m_pData);
        std::swap(m_uSize, oArr.m_uSize);
        std::swap(m_uCapacity, oArr.m_uCapacity);
    }

    // Takes a room for its first block; it has none yet.
    template <std::size_t BYTES>
    void Start(Mem::Room<BYTES>& oRoom) noexcept {
        m_pData = static_cast<T*>(oRoom.Block());
        m_uCapacity = BYTES / sizeof(T);
    }

    // Takes elements that stand in memory of somebody else, which must outlive this; they are left
    // there when it grows. There must be some; in front of them there is room for a header, see
    // Mem::MakeInPlace.
    void Attach(T* pElements, std::size_t uSize) noexcept {
        Release();
        Mem::MakeInPlace(pElements, uSize * sizeof(T));
        m_pData = pElements;
        m_uSize = uSize;
        m_uCapacity = uSize;
    }

    [[nodiscard]] std::size_t Size() const noexcept { return m_uSize; }
    [[nodiscard]] std::size_t Capacity() const noexcept { return m_uCapacity; }
    // What its block takes of the heap.
    [[nodiscard]] std::size_t HeapBytes() const noexcept { return Mem::HeapBytes(m_pData); }
    // Other holders of the block.
    [[nodiscard]] u3_t GetRefCnt() const noexcept {
        return m_pData != nullptr ? Mem::GetRefCnt(m_pData) : 0;
    }

    [[nodiscard]] const T* Beg() const noexcept { return m_pData; }
    [[nodiscard]] const T* End() const noexcept { return m_pData + m_uSize; }
    [[nodiscard]] const T& operator()(std::size_t uNth) const noexcept { return m_pData[uNth]; }

    // Writable access to elements of an array that is not shared.
    [[nodiscard]] T* Beg() noexcept { return m_pData; }
    [[nodiscard]] T* End() noexcept { return m_pData + m_uSize; }
    [[nodiscard]] T& operator()(std::size_t uNth) noexcept { return m_pData[uNth]; }

    // Makes the array the only owner of its elements.
    void MakePrivate() {
        if (GetRefCnt() != 0) Reallocate(m_uCapacity);
    }

    // Appends one element; amortised constant time.
    void Add(const T& oElement) {
        const T oCopy = oElement;  // it may live in this array
        if (m_uSize == m_uCapacity || GetRefCnt() != 0) [[unlikely]]
            Grow(1);
        m_pData[m_uSize++] = oCopy;
    }
    // The same for an element of these fields, each of which is put where it belongs: one that is
    // put together elsewhere and copied in larger pieces is waited for.
    template <class... Field>
    void Emplace(Field... oField) {
        if (m_uSize == m_uCapacity || GetRefCnt() != 0) [[unlikely]]
            Grow(1);
        ::new (static_cast<void*>(m_pData + m_uSize++)) T{oField...};
    }
    // For range-based loops that read.
    [[nodiscard]] const T* begin() const noexcept { return m_pData; }
    [[nodiscard]] const T* end() const noexcept { return m_pData + m_uSize; }
    // Bytes that room for uCount more elements takes in addition.
    [[nodiscard]] std::size_t GrowthFor(std::size_t uCount) const noexcept {
        if (m_uCapacity - m_uSize >= uCount) return 0;
        const std::size_t uNext = NextCapacity();
        return ((m_uSize + uCount > uNext ? m_uSize + uCount : uNext) - m_uCapacity) * sizeof(T);
    }
    // Makes room for uCount more elements, by the steps of growth.
    void ReserveMore(std::size_t uCount) {
        if (m_uCapacity - m_uSize < uCount || GetRefCnt() != 0) Grow(uCount);
    }
    // Appends an element whose value the caller writes, to an array that is not shared and
    // has room.
    [[nodiscard]] T* AddSpacePrivate() noexcept { return m_pData + m_uSize++; }
    // Appends uCount elements; the source must not lie in this array.
    void Add(const T* pElements, std::size_t uCount) {
        if (uCount == 0) return;
        std::memcpy(AddSpace(uCount), pElements, uCount * sizeof(T));
    }
    // Appends room for uCount elements whose values the caller writes.
    [[nodiscard]] T* AddSpace(std::size_t uCount) {
        if (m_uCapacity - m_uSize < uCount || GetRefCnt() != 0) Grow(uCount);
        T* pSpace = m_pData + m_uSize;
        m_uSize += uCount;
        return pSpace;
    }
    // Inserts before position uNth, which is at most Size(); linear in what follows it.
    void Insert(std::size_t uNth, const T& oElement) {
        Add(oElement);
        const T oCopy = m_pData[m_uSize - 1];
        std::memmove(static_cast<void*>(m_pData + uNth + 1), m_pData + uNth,
                     (m_uSize - 1 - uNth) * sizeof(T));
        m_pData[uNth] = oCopy;
    }

    // Changes the size; new elements are zero bytes.
    void Resize(std::size_t uSize) {
        const std::size_t uOld = m_uSize;
        if (uSize > uOld) {
            std::memset(static_cast<void*>(AddSpace(uSize - uOld)), 0, (uSize - uOld) * sizeof(T));
        } else {
            MakePrivate();
            m_uSize = uSize;
        }
    }
    // Declares elements up to uSize, at most Capacity(), written: to an array that is not
    // shared, by one who has put them there.
    void SetSize(std::size_t uSize) noexcept { m_uSize = uSize; }
    // The last element of an array that has one, and dropping it.
    [[nodiscard]] T& Last() noexcept { return m_pData[m_uSize - 1]; }
    [[nodiscard]] const T& Last() const noexcept { return m_pData[m_uSize - 1]; }
    void Pop() noexcept { --m_uSize; }
    // Drops elements at the end; never fails.
    void Truncate(std::size_t uSize) noexcept {
        if (uSize < m_uSize) m_uSize = uSize;
    }
    void Reserve(std::size_t uCapacity) {
        if (uCapacity > m_uCapacity || GetRefCnt() != 0) {
            Reallocate(uCapacity > m_uCapacity ? uCapacity : m_uCapacity);
        }
    }
    // Gives back what lies behind the last element.
    void Trim() {
        if (m_uSize != m_uCapacity) Reallocate(m_uSize);
    }
    // Gives back most of a large block of which little is used, uMore elements behind the last one
    // excepted.
    void TrimMost(std::size_t uMore = 0) {
        const std::size_t uKept = m_uSize + uMore;
        if (m_uCapacity * sizeof(T) > 65536 && m_uCapacity / 4 > uKept) Reallocate(uKept);
    }
    // Empties the array and gives its block back.
    void Clear() noexcept { Release(); }

  private:
    // Small arrays double. Large ones, which are moved by their page tables, take an eighth more.
    [[nodiscard]] std::size_t NextCapacity() const noexcept {
        const bool bSmall = m_uCapacity <= 65536 || m_uCapacity * sizeof(T) <= COPIED;
        if (bSmall) return m_uCapacity < 8 ? 8 : 2 * m_uCapacity;
        return m_uCapacity + m_uCapacity / 8;
    }
    // Up to so many bytes growing copies an array.
    static constexpr std::size_t COPIED = std::size_t{1} << 20;
    // More than can be counted in bytes; asking for it ends in the allocation error.
    static constexpr std::size_t TOO_MANY = std::numeric_limits<std::size_t>::max() / sizeof(T);

    // Not in line: who appends keeps what he knows in registers.
    [[gnu::noinline]] void Grow(std::size_t uCount) {
        if (uCount > TOO_MANY - m_uSize) uCount = TOO_MANY - m_uSize;
        const std::size_t uNeeded = m_uSize + uCount;
        if (uNeeded <= m_uCapacity) {
            Reallocate(m_uCapacity);  // shared: a copy of its own
            return;
        }
        const std::size_t uNext = NextCapacity();
        Reallocate(uNeeded > uNext ? uNeeded : uNext);
    }
    void Reallocate(std::size_t uCapacity) {
        if (uCapacity > TOO_MANY) uCapacity = TOO_MANY;
        if (GetRefCnt() == 0) {
            m_pData = static_cast<T*>(Mem::Resize(m_pData, uCapacity * sizeof(T)));
        } else {
            T* pCopy = static_cast<T*>(Mem::Create(uCapacity * sizeof(T)));
            std::memcpy(static_cast<void*>(pCopy), m_pData, m_uSize * sizeof(T));
            if (Mem::DropRef(m_pData)) Mem::Free(m_pData);
            m_pData = pCopy;
        }
        m_uCapacity = uCapacity;
    }
    void Release() noexcept {
        if (m_pData != nullptr && Mem::DropRef(m_pData)) Mem::Free(m_pData);
        m_pData = nullptr;
        m_uSize = 0;
        m_uCapacity = 0;
    }

    T* m_pData = nullptr;
    std::size_t m_uSize = 0;
    std::size_t m_uCapacity = 0;
};

// An array that needs no memory for its first elements, of which there may be COUNT: they lie in
// it. It stays where it is, and one that shares its elements or swaps with it ends before it does.
template <class T, std::size_t COUNT>
class Arr_Near : private Mem::Room<(COUNT * sizeof(T) + 15) / 16 * 16>, public Arr<T> {
  public:
    Arr_Near() noexcept { this->Start(static_cast<Room&>(*this)); }

  private:
    using Room = Mem::Room<(COUNT * sizeof(T) + 15) / 16 * 16>;
};

}  // namespace vok

#endif  // VOK_BASE_ARR_H

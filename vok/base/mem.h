// SPDX-License-Identifier: MIT
// Reference-counted heap blocks, the memory below every array, string and tree.
//
// Block layout, all in front of the data pointer that callers hold:
//     -16  reference count, 8 bytes: the number of owners minus one
//      -8  size of the data, 8 bytes
//       0  data, aligned to 16 bytes
//
// Counts are atomic: several threads may share a block, add and drop references. The
// bytes of a block belong to whoever owns it alone.
//
// A block may also lie in an object that uses it (Room): the top bit of its size tells. It is no
// block of the heap, so nobody frees it and it counts for nothing.
#ifndef VOK_BASE_MEM_H
#define VOK_BASE_MEM_H

#include <atomic>
#include <new>
#include <utility>

#include "vok/base/types.h"
#include "vok/sys/counter.h"

namespace vok {
class Str;
}

namespace vok::Mem {

inline constexpr std::size_t HEADER_SIZE = 16;
inline constexpr u3_t IN_PLACE = u3_t{1} << 63;

// Where blocks come from. Sizes are those of whole blocks, header included; a null
// result raises "allocation of %0 bytes failed, ...". Replaceable for tests and for
// hosts with pools of their own, while no block is in use.
struct Allocator {
    void* (*pAlloc)(std::size_t uSize);
    void* (*pResize)(void* pBlock, std::size_t uOldSize, std::size_t uNewSize);
    void (*pFree)(void* pBlock, std::size_t uSize);
};
// Returns the allocator used so far. The default takes small blocks from malloc and
// blocks of 2 MiB and more straight from the system, so that growing them moves pages
// instead of copying bytes.
Allocator SetAllocator(const Allocator& oAllocator) noexcept;

// A block of uSize bytes with one owner; its bytes are not initialised.
// Raises "allocation of %0 bytes failed, %1 bytes and %2 blocks in use".
[[nodiscard]] void* Create(std::size_t uSize);
// Changes the size of a block with one owner and returns where it is now; null creates
// one. The block is unchanged when "reallocation of block %0 to %1 bytes failed, ..." is raised.
// One that lies in a room leaves it when it becomes larger, with the errors of Create.
[[nodiscard]] void* Resize(void* pData, std::size_t uNewSize);
// Frees a block, whatever its count; null is ignored, and so is one that lies in a room.
void Free(void* pData) noexcept;

// Bytes and blocks in use by the whole process, headers not counted.
[[nodiscard]] u3_t BytesInUse() noexcept;
[[nodiscard]] u3_t BlocksInUse() noexcept;

// While on, every decrement of a reference count is traced through the debugger output.
void SetDebug(bool bOn) noexcept;

// ---- reference counts -----------------------------------------------------

namespace detail {
extern std::atomic<bool> g_bDebug;
void TraceDecrement(const void* pData, u3_t uOld) noexcept;
}  // namespace detail

[[nodiscard]] inline std::atomic<u3_t>& RefCnt(void* pData) noexcept {
    return *reinterpret_cast<std::atomic<u3_t>*>(static_cast<char*>(pData) - HEADER_SIZE);
}
// Owners beyond the first: 0 for a block with one owner.
[[nodiscard]] inline u3_t GetRefCnt(const void* pData) noexcept {
    return RefCnt(const_cast<void*>(pData)).load(std::memory_order_acquire);
}
[[nodiscard]] inline u3_t SizeWordOf(const void* pData) noexcept {
    return *reinterpret_cast<const u3_t*>(static_cast<const char*>(pData) - 8);
}
[[nodiscard]] inline std::size_t SizeOf(const void* pData) noexcept {
    return static_cast<std::size_t>(SizeWordOf(pData) & ~IN_PLACE);
}
[[nodiscard]] inline bool IsInPlace(const void* pData) noexcept {
    return (SizeWordOf(pData) & IN_PLACE) != 0;
}

inline void AddRef(void* pData) noexcept {
    sys::FetchAdd<u3_t>(RefCnt(pData), 1);
}
// Gives up one owner; true when that was the last one and the block is to be freed by
// the caller, who alone knows what is in it.
[[nodiscard]] inline bool DropRef(void* pData) noexcept {
    const u3_t uOld = sys::FetchAdd<u3_t>(RefCnt(pData), ~u3_t{0});
    if (detail::g_bDebug.load(std::memory_order_relaxed)) [[unlikely]] {
        if (uOld != 0) detail::TraceDecrement(pData, uOld);
    }
    return uOld == 0;
}
// Lowers the count of a block that has other owners.
// Raises "try to decrement zero reference count".
void DecRef(void* pData);

// Ends the life of an object in a block once its last reference is gone. An overload beside
// a class that is only declared lets references to it be held where it is incomplete.
template <class T>
void Dispose(T* pObject) noexcept {
    pObject->~T();
    Free(pObject);
}

// Counted reference to an object that lives in a block; null when it refers to nothing.
// Copies share the object, the last one destroys it.
template <class T>
class Ref {
  public:
    Ref() noexcept = default;
    Ref(const Ref& oRef) noexcept : m_pObject(oRef.m_pObject) {
        if (m_pObject != nullptr) AddRef(m_pObject);
    }
    Ref(Ref&& oRef) noexcept : m_pObject(std::exchange(oRef.m_pObject, nullptr)) {}
    ~Ref() { Reset(); }

    Ref& operator=(const Ref& oRef) noexcept {
        if (m_pObject == oRef.m_pObject) return *this;
        Ref oCopy(oRef);
        std::swap(m_pObject, oCopy.m_pObject);
        return *this;
    }
    Ref& operator=(Ref&& oRef) noexcept {
        std::swap(m_pObject, oRef.m_pObject);
        return *this;
    }

    // Constructs an object in a block of its own.
    template <class... Args>
    [[nodiscard]] static Ref Create(Args&&... oArgs) {
        void* pData = Mem::Create(sizeof(T));
        Ref oRef;
        try {
            oRef.m_pObject = new (pData) T(std::forward<Args>(oArgs)...);
        } catch (...) {
            Free(pData);
            throw;
        }
        return oRef;
    }

    // One more to an object that somebody else has one to.
    [[nodiscard]] static Ref Share(T* pObject) noexcept {
        AddRef(pObject);
        Ref oRef;
        oRef.m_pObject = pObject;
        return oRef;
    }

    void Reset() noexcept {
        T* pObject = std::exchange(m_pObject, nullptr);
        if (pObject != nullptr && DropRef(pObject)) Dispose(pObject);
    }

    [[nodiscard]] T* Get() const noexcept { return m_pObject; }
    T& operator*() const noexcept { return *m_pObject; }
    T* operator->() const noexcept { return m_pObject; }
    explicit operator bool() const noexcept { return m_pObject != nullptr; }
    friend bool operator==(const Ref& a, const Ref& b) noexcept = default;

  private:
    T* m_pObject = nullptr;
};

// Gives containers of other libraries memory in blocks. Raises as Create does.
template <class T>
struct Std_Allocator {
    using value_type = T;
    Std_Allocator() noexcept = default;
    template <class U>
    Std_Allocator(const Std_Allocator<U>&) noexcept {}

    [[nodiscard]] T* allocate(std::size_t uCount) {
        // More than can be counted in bytes ends in the allocation error, too.
        const bool bCountable = uCount <= ~std::size_t{0} / sizeof(T);
        return static_cast<T*>(Create(bCountable ? uCount * sizeof(T) : ~std::size_t{0}));
    }
    void deallocate(T* pData, std::size_t) noexcept { Free(pData); }
    friend bool operator==(const Std_Allocator&, const Std_Allocator&) noexcept = default;
};

// Has memory of somebody else begin like a block in a room: its header takes the HEADER_SIZE bytes
// in front of pData, which is aligned to 16 bytes.
inline void MakeInPlace(void* pData, std::size_t uSize) noexcept {
    char* const pHeader = static_cast<char*>(pData) - HEADER_SIZE;
    new (pHeader) std::atomic<u3_t>(0);
    new (pHeader + 8) u3_t(IN_PLACE | uSize);
}

// What a block takes of the heap, its header included; 0 for null, and for one in a room.
[[nodiscard]] inline std::size_t HeapBytes(const void* pData) noexcept {
    return pData != nullptr && !IsInPlace(pData) ? SizeOf(pData) + HEADER_SIZE : 0;
}

// The first block of an array, in the object that holds the array: as long as that is enough, no
// memory is asked for. It may be used once, and must be given up before the room ends: the room
// stands in front of the array, as a member or a base.
template <std::size_t BYTES>
class alignas(16) Room {
    static_assert(BYTES % 16 == 0, "blocks are aligned");

  public:
    Room() noexcept = default;
    Room(const Room&) = delete;
    Room& operator=(const Room&) = delete;

    static constexpr std::size_t SIZE = BYTES;
    [[nodiscard]] void* Block() noexcept { return m_auData; }

  private:
    std::atomic<u3_t> m_uRefCnt{0};
    u3_t m_uSize = IN_PLACE | BYTES;
    u0_t m_auData[BYTES];
};

// The string type under its second name.
using Str = vok::Str;

}  // namespace vok::Mem

#endif  // VOK_BASE_MEM_H

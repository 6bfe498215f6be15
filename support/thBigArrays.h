// Allocation of the large arrays that initMesh and initCells make and fill at once.
//
// A model of a million elements has arrays of tens of millions of entries, and most of the cost
// of setting it up is the first touch of their memory, one page fault per 4 KiB page. On Linux
// such arrays are therefore asked for in huge pages (a hint to the kernel, which may ignore it).
// The memory stays that of array new: it is released with array delete as any other array.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <utility>
#include <vector>

#if defined(__linux__)
#include <sys/mman.h>
#endif

namespace thalmod::bigarr {

// Below this size the hint is not worth a system call.
constexpr size_t hintBytes = size_t(4) << 20;

// Asks for huge pages over the whole 2 MiB pages inside [p, p+bytes).
inline void hugePageHint(void* p, size_t bytes) {
#if defined(__linux__) && defined(MADV_HUGEPAGE)
  if (p == nullptr || bytes < hintBytes) return;
  const uintptr_t huge = uintptr_t(2) << 20;
  const uintptr_t a = (reinterpret_cast<uintptr_t>(p) + huge - 1) & ~(huge - 1);
  const uintptr_t b = (reinterpret_cast<uintptr_t>(p) + bytes) & ~(huge - 1);
  if (b > a) madvise(reinterpret_cast<void*>(a), b - a, MADV_HUGEPAGE);  // a refusal changes nothing
#else
  (void)p;
  (void)bytes;
#endif
}

// new T[n], entries not initialised.
template <typename T>
T* newArr(int64_t n) {
  T* p = new T[n > 0 ? n : 0];
  if (n > 0) hugePageHint(p, static_cast<size_t>(n) * sizeof(T));
  return p;
}

// new T[n](), entries 0.
template <typename T>
T* newZeroArr(int64_t n) {
  T* p = newArr<T>(n);
  for (int64_t i = 0; i < n; i++) p[i] = T();
  return p;
}

// The same for the working vectors of a set-up.
template <typename T>
struct allocator {
  using value_type = T;
  allocator() = default;
  template <typename U>
  allocator(const allocator<U>&) {}
  T* allocate(size_t n) {
    T* p = static_cast<T*>(::operator new(n * sizeof(T)));
    hugePageHint(p, n * sizeof(T));
    return p;
  }
  void deallocate(T* p, size_t) { ::operator delete(p); }
  // Entries made without a value are left uninitialised (resize, the count constructor): a
  // working array is written before it is read.
  template <typename U>
  void construct(U* p) {
    ::new (static_cast<void*>(p)) U;
  }
  template <typename U, typename... Args>
  void construct(U* p, Args&&... args) {
    ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
  }
  template <typename U>
  bool operator==(const allocator<U>&) const {
    return true;
  }
  template <typename U>
  bool operator!=(const allocator<U>&) const {
    return false;
  }
};

template <typename T>
using vector = std::vector<T, allocator<T>>;

}  // namespace thalmod::bigarr

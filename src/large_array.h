#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#ifdef __linux__
#include <sys/mman.h>
#endif

namespace trellion {

/// Memory for arrays of millions of elements. Where the system offers huge pages it is asked for
/// them: what is read in no order then takes fewer looks into the page tables, and new memory fewer
/// visits of the kernel. Elements that come into being without a value are not initialised.
template <class T>
struct large_allocator {
  using value_type = T;

  large_allocator() = default;
  template <class U>
  explicit large_allocator(const large_allocator<U>& /*other*/) {}

  T* allocate(std::size_t n) {
    if (n * sizeof(T) < least_size) return std::allocator<T>().allocate(n);
    void* const memory = ::operator new (n * sizeof(T), std::align_val_t{huge_page});
#ifdef MADV_HUGEPAGE
    // Only an advice: memory is memory where it is not taken. The rest at the end would take a
    // whole page.
    static_cast<void>(madvise(memory, n * sizeof(T) / huge_page * huge_page, MADV_HUGEPAGE));
#endif
    return static_cast<T*>(memory);
  }
  void deallocate(T* memory, std::size_t n) {
    if (n * sizeof(T) < least_size) {
      std::allocator<T>().deallocate(memory, n);
    } else {
      ::operator delete (memory, std::align_val_t{huge_page});
    }
  }
  template <class U>
  void construct(U* element) {
    ::new (static_cast<void*>(element)) U;
  }
  template <class U, class... Arguments>
  void construct(U* element, Arguments&&... arguments) {
    ::new (static_cast<void*>(element)) U(std::forward<Arguments>(arguments)...);
  }

  bool operator==(const large_allocator& /*other*/) const { return true; }

 private:
  static constexpr std::size_t huge_page = std::size_t{2} << 20;
  static constexpr std::size_t least_size = 2 * huge_page;  // less is in the caches mostly
};

template <class T>
using large_array = std::vector<T, large_allocator<T>>;

}  // namespace trellion

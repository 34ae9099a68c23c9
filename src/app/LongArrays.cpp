// Memory of the executable: long arrays are aligned to 2 MiB and request huge pages.
//
// First touching a page of 4 KiB costs from 0.1 us on a quiet machine to 100 us on a crowded
// virtual one, and a run touches some hundred bytes per element and point. With pages of 2 MiB that
// cost vanishes. If the system has no huge pages, nothing changes. The operators below replace
// those of the standard library, so the standard containers need no special types.

#include <malloc.h>
#include <sys/mman.h>

#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

constexpr std::size_t kHugePage = std::size_t{2} << 20;
/// Blocks from this size on are mapped separately, and returned to the system when they are freed.
constexpr std::size_t kLongArray = std::size_t{2} << 20;

void* allocateLong(std::size_t size) noexcept {
  // Setting the threshold keeps it fixed; otherwise the library would raise it with each freed
  // block.
  static const bool ready = mallopt(M_MMAP_THRESHOLD, static_cast<int>(kLongArray)) != 0 &&
                            mallopt(M_TRIM_THRESHOLD, static_cast<int>(16 * kLongArray)) != 0;
  void* const place = std::aligned_alloc(kHugePage, (size + kHugePage - 1) / kHugePage * kHugePage);
  // Advice: a system without huge pages ignores it.
  if (ready && place != nullptr) (void)madvise(place, size, MADV_HUGEPAGE);
  return place;
}

}  // namespace

void* operator new(std::size_t size) {
  for (;;) {
    void* const place = size < kLongArray ? std::malloc(size == 0 ? 1 : size) : allocateLong(size);
    if (place != nullptr) return place;
    const std::new_handler handler = std::get_new_handler();
    if (handler == nullptr) throw std::bad_alloc();
    handler();
  }
}

void operator delete(void* place) noexcept { std::free(place); }
void operator delete(void* place, std::size_t /*size*/) noexcept { std::free(place); }

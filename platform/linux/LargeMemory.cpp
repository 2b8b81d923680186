#include "platform/LargeMemory.h"

#include <sys/mman.h>

#include <cstdint>

namespace platform {

void expectToFill(char* memory, std::size_t size) {
  // What is smaller may be given back to the allocator's pool and stay in the process, with a hint that has become
  // wrong.
  constexpr std::size_t smallest = std::size_t{32} << 20;
  constexpr std::uintptr_t page = 4096;
  if (size < smallest) return;

  const std::uintptr_t place = reinterpret_cast<std::uintptr_t>(memory);
  const std::uintptr_t before = (page - place % page) % page;
  (void)::madvise(memory + before, (size - before) / page * page, MADV_HUGEPAGE);  // a hint, no more
}

}  // namespace platform

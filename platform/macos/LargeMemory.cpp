#include "platform/LargeMemory.h"

namespace platform {

// The system chooses the size of pages itself, and takes no hint for memory that an allocator has mapped already.
void expectToFill(char* /*memory*/, std::size_t /*size*/) {}

}  // namespace platform

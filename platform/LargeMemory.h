// Memory by the tens of megabytes, which costs more to get from the system, page by page, than to fill.

#pragma once

#include <cstddef>

namespace platform {

// Tells the system that all of this memory, which nobody has touched yet, is about to be filled. A hint: whether it is
// followed shows in nothing but time. Small memory is left as it is.
void expectToFill(char* memory, std::size_t size);

}  // namespace platform

// The Base64 codec for text in memory: the results of the templates in nativeutils/Base64.h.

#pragma once

#include <string>
#include <string_view>

namespace nativeutils {

// `bytes` must not lie in `out`.
void appendBase64(std::string_view bytes, std::string& out);

// False when the text is not Base64; what stands before the fault has been appended. `text` must not lie in `out`.
bool appendDecoded(std::string_view text, std::string& out);

}  // namespace nativeutils

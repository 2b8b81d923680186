#include "nativeutils/Base64Text.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

#include "nativeutils/Base64.h"
#include "nativeutils/Base64Runs.h"
#include "platform/LargeMemory.h"

namespace nativeutils {
namespace {

// In groups. Both sides of a block fit into the processor's first cache, so that passing through one is cheaper than
// filling the output with zeros first.
constexpr std::size_t blockSize = 1024;

const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

void makeRoom(std::string& out, std::size_t more) {
  const std::size_t needed = out.size() + more;
  if (needed <= out.capacity()) return;
  out.reserve(std::max(needed, 2 * out.size()));
  platform::expectToFill(out.data() + out.size(), out.capacity() - out.size());
}

}  // namespace

void appendBase64(std::string_view bytes, std::string& out) {
  makeRoom(out, (bytes.size() + 2) / 3 * 4);
  char block[blockSize * 4];
  while (bytes.size() >= 3) {
    const std::size_t groups = std::min(bytes.size() / 3, blockSize);
    encodeRun(bytesOf(bytes), groups, block);
    out.append(block, groups * 4);
    bytes.remove_prefix(groups * 3);
  }
  Base64Encode(bytes.data(), bytes.data() + bytes.size(), std::back_inserter(out));
}

bool appendDecoded(std::string_view text, std::string& out) {
  makeRoom(out, text.size() / 4 * 3);
  unsigned char block[blockSize * 3 + decodingSlack];
  const unsigned char* next = bytesOf(text);
  const unsigned char* const end = next + text.size();
  for (;;) {
    const DecodedRun run = decodeRun(next, end, blockSize, block);
    out.append(reinterpret_cast<const char*>(block), run.groups * 3);
    next = run.next;
    if (run.groups == blockSize) continue;

    const nativeutils_base64::Group group = nativeutils_base64::nextGroup(next, end);
    if (group.count == 0) return true;
    if (nativeutils_base64::bytesIn(group) == 0) return false;
    nativeutils_base64::decodeGroup(group, std::back_inserter(out));
  }
}

}  // namespace nativeutils

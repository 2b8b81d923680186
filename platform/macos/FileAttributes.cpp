#include "platform/FileAttributes.h"

#include <copyfile.h>

namespace platform {

// Not with COPYFILE_STAT, which would leave the set-user-id bit to whoever copies. What cannot be kept is left out.
void copyExtendedAttributes(int from, int to) {
  (void)::fcopyfile(from, to, nullptr, COPYFILE_XATTR);
}

void copyAccessList(int from, int to) {
  (void)::fcopyfile(from, to, nullptr, COPYFILE_ACL);
}

std::array<timespec, 2> timesOf(const struct stat& object) {
  return {object.st_atimespec, object.st_mtimespec};
}

}  // namespace platform

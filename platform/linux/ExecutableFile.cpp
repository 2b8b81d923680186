#include "platform/linux/ExecutableFile.h"

#include <elf.h>
#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "platform/UniqueFd.h"

namespace platform {
namespace {

Architecture architectureOf(unsigned machine, unsigned char wordClass) {
  switch (machine) {
    case EM_386:
      return Architecture::x86;
    case EM_X86_64:
      return wordClass == ELFCLASS64 ? Architecture::x86_64 : Architecture::other;
    case EM_PPC:
      return Architecture::ppc;
    case EM_PPC64:
      return Architecture::ppc64;
    default:
      return Architecture::other;
  }
}

}  // namespace

std::vector<Architecture> architecturesOf(const std::string& file) {
  const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  // Both word sizes begin alike, as far as the machine.
  std::array<unsigned char, offsetof(Elf64_Ehdr, e_machine) + 2> header{};
  ssize_t got = -1;
  do {
    got = ::pread(fd.get(), header.data(), header.size(), 0);
  } while (got < 0 && errno == EINTR);
  if (got != static_cast<ssize_t>(header.size()) || std::memcmp(header.data(), ELFMAG, SELFMAG) != 0) return {};
  const unsigned first = header[header.size() - 2], second = header[header.size() - 1];
  const unsigned machine = header[EI_DATA] == ELFDATA2MSB ? first << 8 | second : second << 8 | first;
  return {architectureOf(machine, header[EI_CLASS])};
}

}  // namespace platform

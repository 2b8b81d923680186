// A library that is preloaded into a program: libfido2 then finds the keys of the script software-keys, which listens
// on the socket that SVO_SOFTWARE_KEYS names, and no other. Without the variable it finds none.

#include <dlfcn.h>
#include <fido.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sstream>
#include <string>
#include <string_view>

namespace {

constexpr std::size_t kFrame = 64;

// Returns a connection that has sent `request`, or -1.
int connectWith(std::string_view request) {
  const char* const path = std::getenv("SVO_SOFTWARE_KEYS");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path == nullptr || std::strlen(path) >= sizeof(address.sun_path)) return -1;
  std::memcpy(address.sun_path, path, std::strlen(path));
  const int link = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  const bool isConnected = ::connect(link, reinterpret_cast<sockaddr*>(&address), sizeof(address)) == 0 &&
                           ::send(link, request.data(), request.size(), MSG_NOSIGNAL) > 0;
  if (isConnected) return link;
  ::close(link);
  return -1;
}

int linkOf(void* handle) {
  return *static_cast<int*>(handle);
}

void* openKey(const char* name) {
  const int link = connectWith(name);
  std::array<char, 8> reply{};
  if (link >= 0 && ::recv(link, reply.data(), reply.size(), 0) > 0) return std::make_unique<int>(link).release();
  if (link >= 0) ::close(link);
  return nullptr;
}

void closeKey(void* handle) {
  const std::unique_ptr<int> link(static_cast<int*>(handle));
  ::close(*link);
}

int readFrame(void* handle, unsigned char* data, std::size_t size, int milliseconds) {
  pollfd waiting{linkOf(handle), POLLIN, 0};
  if (::poll(&waiting, 1, milliseconds) != 1) return -1;
  const ssize_t count = ::recv(waiting.fd, data, size, 0);
  return count == static_cast<ssize_t>(kFrame) ? static_cast<int>(count) : -1;
}

int writeFrame(void* handle, const unsigned char* data, std::size_t size) {
  return static_cast<int>(::send(linkOf(handle), data, size, MSG_NOSIGNAL));
}

constexpr fido_dev_io_t kFunctions{openKey, closeKey, readFrame, writeFrame};

// The library's own definition.
template <typename Function>
Function original(Function, const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" int fido_dev_info_manifest(fido_dev_info_t* infos, std::size_t max, std::size_t* count) {
  *count = 0;
  const int link = connectWith("list");
  if (link < 0) return FIDO_OK;
  std::array<char, 4096> names{};
  const ssize_t size = ::recv(link, names.data(), names.size(), 0);
  ::close(link);

  const auto set = original(&fido_dev_info_set, "fido_dev_info_set");
  std::istringstream list(std::string(names.data(), size < 0 ? 0 : static_cast<std::size_t>(size)));
  for (std::string name; std::getline(list, name) && *count < max;) {
    if (!name.empty() && set(infos, *count, name.c_str(), "SVO", "Software key", &kFunctions, nullptr) == FIDO_OK)
      ++*count;
  }
  return FIDO_OK;
}

// Version 1.12 does not remember that the functions are not its own.
extern "C" fido_dev_t* fido_dev_new_with_info(const fido_dev_info_t* info) {
  fido_dev_t* const device = original(&fido_dev_new_with_info, "fido_dev_new_with_info")(info);
  if (device != nullptr) (void)original(&fido_dev_set_io_functions, "fido_dev_set_io_functions")(device, &kFunctions);
  return device;
}

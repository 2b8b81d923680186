// A security key that is plugged in, and the objects of libfido2 that have an owner.
//
// - One thread; `cancelOpenDevicesAndExit` may be called by any.

#pragma once

#include <fido.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

template <typename T, auto release>
struct FidoReleaser {
  void operator()(T* handle) const { release(&handle); }
};
template <typename T, auto release>
using FidoOwned = std::unique_ptr<T, FidoReleaser<T, release>>;
using Credential = FidoOwned<fido_cred_t, fido_cred_free>;
using FidoAssertion = FidoOwned<fido_assert_t, fido_assert_free>;

// What a key says about itself. A U2F key says nothing: it has ES256 only, and stores no credential.
struct KeyInfo {
  bool isCtap2 = false;
  bool storesCredentials = false;
  bool hasPin = false;
  bool hasBuiltInVerification = false;  // such as a fingerprint
  std::vector<int> algorithms;          // COSE
  std::vector<std::string> transports;
  std::size_t maxCredentials = 0;   // in a list; 0: not limited
  std::size_t maxCredentialId = 0;  // bytes; 0: not limited
};

class Device {
 public:
  // The paths of the keys that can be opened.
  static std::vector<std::string> list();

  // `handle` is null if the key cannot be opened.
  explicit Device(const std::string& path);
  ~Device();

  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;

  fido_dev_t* handle() const { return handle_; }
  const std::string& path() const { return path_; }
  const KeyInfo& info() const { return info_; }

 private:
  bool readInfo();

  std::string path_;
  fido_dev_t* handle_ = nullptr;
  KeyInfo info_;
};

// Makes the keys that wait for a touch stop waiting, and ends the process.
[[noreturn]] void cancelOpenDevicesAndExit();

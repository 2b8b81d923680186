#include "app/gtk/keys/Device.h"

#include <unistd.h>

#include <algorithm>
#include <mutex>
#include <set>
#include <string_view>

namespace {

constexpr std::size_t kMaxDevices = 16;
constexpr std::string_view kReaders = "nfc:";  // listed even where no card is near
constexpr std::size_t kMaxU2fId = 255;
constexpr int kOpenTimeout = 3000;  // milliseconds; nothing then waits for the user

std::mutex openDevicesLock;
std::set<fido_dev_t*> openDevices;

bool contains(char** names, std::size_t count, std::string_view name) {
  return std::any_of(names, names + count, [name](const char* each) { return name == each; });
}

using Infos = std::unique_ptr<fido_dev_info_t, void (*)(fido_dev_info_t*)>;

Infos newInfos() {
  return {fido_dev_info_new(kMaxDevices), [](fido_dev_info_t* infos) { fido_dev_info_free(&infos, kMaxDevices); }};
}

}  // namespace

std::vector<std::string> Device::list() {
  const Infos infos = newInfos();
  std::size_t count = 0;
  if (!infos || fido_dev_info_manifest(infos.get(), kMaxDevices, &count) != FIDO_OK) return {};
  std::vector<std::string> paths;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string_view path = fido_dev_info_path(fido_dev_info_ptr(infos.get(), i));
    const bool isReader = path.substr(0, kReaders.size()) == kReaders;
    if (!isReader) paths.emplace_back(path);
  }
  return paths;
}

Device::Device(const std::string& path) : path_(path) {
  const Infos infos = newInfos();
  std::size_t count = 0;
  if (!infos || fido_dev_info_manifest(infos.get(), kMaxDevices, &count) != FIDO_OK) return;
  for (std::size_t i = 0; i < count && handle_ == nullptr; ++i) {
    const fido_dev_info_t* const each = fido_dev_info_ptr(infos.get(), i);
    if (path == fido_dev_info_path(each)) handle_ = fido_dev_new_with_info(each);
  }
  if (handle_ == nullptr) return;
  (void)fido_dev_set_timeout(handle_, kOpenTimeout);
  if (fido_dev_open_with_info(handle_) != FIDO_OK || !readInfo()) {
    (void)fido_dev_close(handle_);
    fido_dev_free(&handle_);
    return;
  }
  (void)fido_dev_set_timeout(handle_, -1);
  const std::lock_guard<std::mutex> guard(openDevicesLock);
  openDevices.insert(handle_);
}

Device::~Device() {
  if (handle_ == nullptr) return;
  const std::lock_guard<std::mutex> guard(openDevicesLock);
  openDevices.erase(handle_);
  (void)fido_dev_cancel(handle_);  // a key that still waits would be busy when it is opened again
  (void)fido_dev_close(handle_);
  fido_dev_free(&handle_);
}

bool Device::readInfo() {
  if (!fido_dev_is_fido2(handle_)) {
    info_.algorithms = {COSE_ES256};
    info_.maxCredentialId = kMaxU2fId;
    info_.transports = {"usb"};
    return true;
  }
  const FidoOwned<fido_cbor_info_t, fido_cbor_info_free> info(fido_cbor_info_new());
  if (fido_dev_get_cbor_info(handle_, info.get()) != FIDO_OK) return false;
  info_.isCtap2 = true;
  info_.hasPin = fido_dev_has_pin(handle_);
  info_.hasBuiltInVerification = fido_dev_has_uv(handle_);
  for (std::size_t i = 0; i < fido_cbor_info_options_len(info.get()); ++i) {
    const std::string_view name = fido_cbor_info_options_name_ptr(info.get())[i];
    if (name == "rk") info_.storesCredentials = fido_cbor_info_options_value_ptr(info.get())[i];
  }
  for (std::size_t i = 0; i < fido_cbor_info_algorithm_count(info.get()); ++i)
    info_.algorithms.push_back(fido_cbor_info_algorithm_cose(info.get(), i));
  if (info_.algorithms.empty()) info_.algorithms = {COSE_ES256};  // as CTAP 2.0 keys, which do not list them
  const std::size_t transports = fido_cbor_info_transports_len(info.get());
  for (const char* const each : {"ble", "hybrid", "internal", "nfc", "smart-card"}) {
    if (contains(fido_cbor_info_transports_ptr(info.get()), transports, each)) info_.transports.emplace_back(each);
  }
  info_.transports.emplace_back("usb");
  info_.maxCredentials = fido_cbor_info_maxcredcntlst(info.get());
  info_.maxCredentialId = fido_cbor_info_maxcredidlen(info.get());
  return true;
}

void cancelOpenDevicesAndExit() {
  const std::lock_guard<std::mutex> guard(openDevicesLock);
  for (fido_dev_t* const each : openDevices)
    (void)fido_dev_cancel(each);
  _exit(0);
}

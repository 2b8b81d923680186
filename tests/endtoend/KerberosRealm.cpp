#include "tests/endtoend/KerberosRealm.h"

#include <arpa/inet.h>
#include <glib.h>
#include <gssapi/gssapi.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <cstdint>
#include <stdexcept>

#include "platform/UniqueFd.h"
#include "platform/linux/Glib.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {
namespace {

constexpr int kMaxTries = 10;

sockaddr_in loopback(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

// A port that was free a moment ago.
int freePort() {
  const platform::UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  auto* const generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(socket.get(), generic, size) != 0 || ::getsockname(socket.get(), generic, &size) != 0)
    throw std::runtime_error("no free port");
  return ntohs(address.sin_port);
}

bool isListening(int port) {
  const platform::UniqueFd socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_in address = loopback(port);
  return ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
}

}  // namespace

KerberosRealm::KerberosRealm(const std::filesystem::path& folder, const std::vector<std::string>& hosts,
                             const std::string& domains)
    : folder_(folder),
      config_("KRB5_CONFIG", folder / "krb5.conf"),
      profile_("KRB5_KDC_PROFILE", folder / "kdc.conf"),
      cache_("KRB5CCNAME", "FILE:" + (folder / "tickets").string()),
      keys_("KRB5_KTNAME", folder / "keys"),
      replays_("KRB5RCACHENAME", "none:") {
  std::filesystem::create_directory(folder_);
  writeFiles(freePort(), domains);
  std::string commands = "addprinc -randkey ada\nktadd -k ada.keys ada\n";
  for (const std::string& host : hosts)
    commands += "addprinc -randkey HTTP/" + host + "\nktadd -k keys HTTP/" + host + "\n";
  support::writeFile(folder_ / "commands", commands);
  run("/usr/sbin/kdb5_util create -s -P master && /usr/sbin/kadmin.local <commands");
  for (int i = 0; !startCenter(); ++i) {
    if (i == kMaxTries) throw std::runtime_error("the center does not start");
    writeFiles(freePort(), domains);
  }
}

void KerberosRealm::writeFiles(int port, const std::string& domains) const {
  const std::string address = "127.0.0.1:" + std::to_string(port);
  support::writeFile(folder_ / "krb5.conf",
                     "[libdefaults]\n default_realm = EXAMPLE.TEST\n dns_canonicalize_hostname = false\n"
                     " dns_lookup_kdc = false\n forwardable = true\n[realms]\n EXAMPLE.TEST = {\n  kdc = " +
                         address + "\n }\n[domain_realm]\n" + domains);
  const std::string base = folder_.string() + "/";
  support::writeFile(folder_ / "kdc.conf",
                     "[kdcdefaults]\n kdc_listen = " + address + "\n kdc_tcp_listen = " + address +
                         "\n[realms]\n EXAMPLE.TEST = {\n  database_name = " + base +
                         "principal\n  key_stash_file = " + base + "stash\n  acl_file = " + base +
                         "acl\n }\n[logging]\n kdc = FILE:" + base + "log\n admin_server = FILE:" + base + "log\n");
}

void KerberosRealm::run(const std::string& script) const {
  tools::ChildProcess::Setup setup;
  setup.command = {"sh", "-c", "cd \"$0\" && " + script, folder_};
  setup.outputFile = folder_ / "output";
  setup.errorFile = folder_ / "errors";
  const tools::ChildProcess process(setup);
  (void)tools::waitUntil([&] { return process.ended(); }, std::chrono::seconds(60));
  if (process.exitStatus() != 0) throw std::runtime_error(script + ": " + support::contentsOf(folder_ / "errors"));
}

bool KerberosRealm::startCenter() {
  const std::string config = support::contentsOf(folder_ / "kdc.conf");
  port_ = std::stoi(config.substr(config.find(':') + 1));
  tools::ChildProcess::Setup setup;
  setup.command = {"/usr/sbin/krb5kdc", "-n"};
  setup.errorFile = folder_ / "errors";
  setup.outputFile = folder_ / "output";
  center_ = std::make_unique<tools::ChildProcess>(setup);
  return support::becomesTrue([this] {
           g_main_context_iteration(nullptr, FALSE);
           return isListening(port_) || center_->ended();
         }) &&
         !center_->ended();
}

void KerberosRealm::signIn() {
  run("kinit -k -t ada.keys ada");
}

void KerberosRealm::signOut() {
  run("kdestroy");
}

std::string KerberosRealm::userOf(const std::string& authorization) {
  constexpr char kScheme[] = "Negotiate ";
  if (authorization.rfind(kScheme, 0) != 0) return {};
  gss_buffer_desc token{};
  token.value = g_base64_decode(authorization.c_str() + sizeof kScheme - 1, &token.length);
  OM_uint32 minor = 0;
  OM_uint32 flags = 0;
  gss_ctx_id_t context = GSS_C_NO_CONTEXT;
  gss_name_t user = GSS_C_NO_NAME;
  gss_buffer_desc reply{};
  gss_buffer_desc name{};
  const OM_uint32 major =
      gss_accept_sec_context(&minor, &context, GSS_C_NO_CREDENTIAL, &token, GSS_C_NO_CHANNEL_BINDINGS, &user, nullptr,
                             &reply, &flags, nullptr, nullptr);
  std::string result;
  if (major == GSS_S_COMPLETE && gss_display_name(&minor, user, &name, nullptr) == GSS_S_COMPLETE) {
    result = std::string(static_cast<const char*>(name.value), name.length);
    if ((flags & GSS_C_DELEG_FLAG) != 0) result += " delegated";
  }
  g_free(token.value);
  (void)gss_release_buffer(&minor, &reply);
  (void)gss_release_buffer(&minor, &name);
  (void)gss_release_name(&minor, &user);
  (void)gss_delete_sec_context(&minor, &context, GSS_C_NO_BUFFER);
  return result;
}

}  // namespace endtoend

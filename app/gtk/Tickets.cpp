#include "app/gtk/Tickets.h"

#include <gio/gio.h>
#include <krb5/krb5.h>
#include <profile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <iterator>
#include <map>
#include <set>
#include <utility>

#include "app/gtk/Glib.h"

namespace {

using Realms = std::set<std::string>;
using RealmOfDomain = std::map<std::string, std::string>;

constexpr guint kProxyTimeoutMilliseconds = 10000;
constexpr char kHostCharacters[] = "abcdefghijklmnopqrstuvwxyz0123456789-.";
constexpr int kHttpsPort = 443;

class Context {
 public:
  Context() {
    if (krb5_init_context(&context_) != 0) context_ = nullptr;
  }
  ~Context() {
    if (context_ != nullptr) krb5_free_context(context_);
  }
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  krb5_context get() const { return context_; }

 private:
  krb5_context context_ = nullptr;
};

std::string textOf(const krb5_data& data) {
  return {data.data, data.length};
}

// Whether a file, and the link to it, belong to the user. Another user may create a file, or a pipe that blocks its
// reader, at the default path of the cache in /tmp.
bool isOwn(const std::string& path, mode_t type) {
  struct stat link {
  }, file{};
  return ::lstat(path.c_str(), &link) == 0 && link.st_uid == ::geteuid() && ::stat(path.c_str(), &file) == 0 &&
         file.st_uid == ::geteuid() && (file.st_mode & S_IFMT) == type;
}

// The system or a daemon guards the caches of the other types.
bool mayRead(const std::string& cache) {
  const auto isOfType = [&cache](const char* type) { return cache.rfind(type, 0) == 0; };
  if (isOfType("FILE:")) return isOwn(cache.substr(5), S_IFREG);
  if (isOfType("DIR::")) return isOwn(cache.substr(5), S_IFREG);
  if (isOfType("DIR:")) return isOwn(cache.substr(4), S_IFDIR);
  return isOfType("/") ? isOwn(cache, S_IFREG) : isOfType("KEYRING:") || isOfType("KCM:");
}

bool isValidGrant(const krb5_creds& ticket, const krb5_principal_data& user) {
  const krb5_principal_data& server = *ticket.server;
  return server.length == 2 && textOf(server.data[0]) == KRB5_TGS_NAME &&
         textOf(server.data[1]) == textOf(user.realm) &&
         static_cast<std::uint32_t>(ticket.times.endtime) > std::time(nullptr);
}

void addRealm(Realms& realms, krb5_context context, krb5_ccache cache) {
  krb5_principal user = nullptr;
  if (krb5_cc_get_principal(context, cache, &user) != 0) return;
  krb5_cc_cursor cursor = nullptr;
  if (krb5_cc_start_seq_get(context, cache, &cursor) == 0) {
    krb5_creds ticket{};
    while (krb5_cc_next_cred(context, cache, &cursor, &ticket) == 0) {
      if (isValidGrant(ticket, *user)) realms.insert(textOf(user->realm));
      krb5_free_cred_contents(context, &ticket);
    }
    (void)krb5_cc_end_seq_get(context, cache, &cursor);
  }
  krb5_free_principal(context, user);
}

bool mayRead(krb5_context context, krb5_ccache cache) {
  char* name = nullptr;
  if (krb5_cc_get_full_name(context, cache, &name) != 0) return false;
  const bool result = mayRead(name);
  krb5_free_string(context, name);
  return result;
}

// The realms of the user's valid ticket-granting tickets.
Realms realmsOfTickets(krb5_context context) {
  Realms realms;
  if (!mayRead(orEmpty(krb5_cc_default_name(context)))) return realms;
  krb5_cccol_cursor cursor = nullptr;
  if (krb5_cccol_cursor_new(context, &cursor) != 0) return realms;
  krb5_ccache cache = nullptr;
  while (krb5_cccol_cursor_next(context, cursor, &cache) == 0 && cache != nullptr) {
    if (mayRead(context, cache)) addRealm(realms, context, cache);
    (void)krb5_cc_close(context, cache);
  }
  (void)krb5_cccol_cursor_free(context, &cursor);
  return realms;
}

// The section [domain_realm]. Of a name that occurs twice the first value counts.
RealmOfDomain realmsOfDomains(krb5_context context) {
  RealmOfDomain result;
  profile_t profile = nullptr;
  if (krb5_get_profile(context, &profile) != 0) return result;
  const char* section[] = {"domain_realm", nullptr};
  void* position = nullptr;
  if (profile_iterator_create(profile, section, PROFILE_ITER_LIST_SECTION | PROFILE_ITER_RELATIONS_ONLY, &position) ==
      0) {
    do {
      char* name = nullptr;
      char* value = nullptr;
      if (profile_iterator(&position, &name, &value) != 0) break;
      if (name != nullptr && value != nullptr) result.emplace(name, value);
      profile_release_string(name);
      profile_release_string(value);
    } while (position != nullptr);
  }
  profile_release(profile);
  return result;
}

bool isBelow(const std::string& host, const std::string& domain) {
  const std::string end = "." + domain;
  return host.size() > end.size() && host.compare(host.size() - end.size(), end.size(), end) == 0;
}

// A realm of one label, such as "COM", does not stand for a whole top-level domain.
bool isNamedLike(const std::string& host, const std::string& realm) {
  const std::string domain = Owned<char, g_free>(g_ascii_strdown(realm.c_str(), -1)).get();
  return domain.find('.') != std::string::npos && (host == domain || isBelow(host, domain));
}

// Compares as the Kerberos library does: "a.b.c", ".b.c", "b.c", ".c", "c".
bool belongsTo(const Realms& realms, const std::string& host, const RealmOfDomain& domains) {
  for (std::size_t at = 0; at != std::string::npos && at < host.size();
       at = host[at] == '.' ? at + 1 : host.find('.', at)) {
    const auto found = domains.find(host.substr(at));
    if (found != domains.end()) return realms.count(found->second) != 0;
  }
  return std::any_of(realms.begin(), realms.end(),
                     [&host](const std::string& realm) { return isNamedLike(host, realm); });
}

bool isHostName(const std::string& host) {
  return !host.empty() && host.front() != '.' && host.find('.') != std::string::npos &&
         host.find_first_not_of(kHostCharacters) == std::string::npos;
}

std::string serverAt(const std::string& host, int port) {
  return "https://" + host + ":" + std::to_string(port);
}

// The host and port of an https address; "" for any other.
std::pair<std::string, int> hostAndPort(const std::string& page) {
  const Owned<GUri, g_uri_unref> uri(g_uri_parse(page.c_str(), G_URI_FLAGS_PARSE_RELAXED, nullptr));
  if (!uri || g_strcmp0(g_uri_get_scheme(uri.get()), "https") != 0) return {};
  const Owned<char, g_free> host(g_ascii_strdown(orEmpty(g_uri_get_host(uri.get())), -1));
  const int port = g_uri_get_port(uri.get());
  return {host.get(), port == -1 ? kHttpsPort : port};
}

std::set<std::string> serversOf(const Realms& realms, const std::vector<std::string>& pages,
                                const RealmOfDomain& domains) {
  std::set<std::string> servers;
  const auto add = [&](const std::string& host, int port) {
    if (isHostName(host) && belongsTo(realms, host, domains)) servers.insert(serverAt(host, port));
  };
  for (const std::string& page : pages) {
    const auto [host, port] = hostAndPort(page);
    add(host, port);
  }
  for (const auto& [name, realm] : domains)
    add(name, kHttpsPort);
  return servers;
}

// Whether the system's settings give no proxy for an address.
class ProxyLookup {
 public:
  ProxyLookup() : context_(g_main_context_new()), cancellable_(g_cancellable_new()) {
    g_main_context_push_thread_default(context_.get());
    const Owned<GSource, g_source_unref> timeout(g_timeout_source_new(kProxyTimeoutMilliseconds));
    g_source_set_callback(timeout.get(), onTimeout, cancellable_.get(), nullptr);
    g_source_attach(timeout.get(), context_.get());
  }
  ~ProxyLookup() { g_main_context_pop_thread_default(context_.get()); }
  ProxyLookup(const ProxyLookup&) = delete;
  ProxyLookup& operator=(const ProxyLookup&) = delete;

  bool isDirect(const std::string& address) {
    done_ = direct_ = false;
    g_proxy_resolver_lookup_async(g_proxy_resolver_get_default(), address.c_str(), cancellable_.get(), onFound, this);
    while (!done_)
      g_main_context_iteration(context_.get(), TRUE);
    return direct_;
  }

 private:
  static gboolean onTimeout(gpointer cancellable) {
    g_cancellable_cancel(G_CANCELLABLE(cancellable));
    return G_SOURCE_REMOVE;
  }

  static void onFound(GObject* resolver, GAsyncResult* result, gpointer self) {
    auto* const lookup = static_cast<ProxyLookup*>(self);
    const Owned<char*, g_strfreev> proxies(g_proxy_resolver_lookup_finish(G_PROXY_RESOLVER(resolver), result, nullptr));
    lookup->direct_ = proxies && g_strv_length(proxies.get()) == 1 && g_str_equal(proxies.get()[0], "direct://");
    lookup->done_ = true;
  }

  Owned<GMainContext, g_main_context_unref> context_;
  Owned<GCancellable> cancellable_;
  bool done_ = false;
  bool direct_ = false;
};

}  // namespace

std::vector<std::string> serversForTickets(const std::vector<std::string>& pages) {
  const Context context;
  if (context.get() == nullptr) return {};
  const Realms realms = realmsOfTickets(context.get());
  if (realms.empty()) return {};
  const std::set<std::string> candidates = serversOf(realms, pages, realmsOfDomains(context.get()));
  if (candidates.empty()) return {};

  std::vector<std::string> servers;
  ProxyLookup proxies;
  std::copy_if(candidates.begin(), candidates.end(), std::back_inserter(servers),
               [&proxies](const std::string& server) { return proxies.isDirect(server); });
  return servers;
}

void permitTickets(const std::vector<std::string>& servers) {
  std::string list;
  for (const std::string& each : servers)
    list += (list.empty() ? "" : ",") + each;
  g_setenv("SOUP_GSSAPI_TRUSTED_URIS", list.c_str(), TRUE);
  g_unsetenv("SOUP_GSSAPI_BLOCKLISTED_URIS");
  g_setenv("GSS_MECH_CONFIG", "/dev/null", TRUE);
}

// An HTTP proxy on the loopback. Resolves every host to servers of the test and records the requests.
//
//   Proxy proxy(site);                                  // "http://shop.example/x" gets site's "/x"
//   options.environment.merge(proxy.environment());
//
// Responds while the default main context runs.

#pragma once

#include <libsoup/soup.h>

#include <map>
#include <string>
#include <vector>

#include "platform/linux/Glib.h"
#include "tests/tools/site/LoopbackServer.h"

namespace endtoend {

class Proxy {
 public:
  // Forwards plain requests to `site`, whose handlers get the path only. Rejects tunnels with 403. Throws
  // std::runtime_error if it cannot listen.
  explicit Proxy(const tools::LoopbackServer& site);
  ~Proxy();

  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;

  // From now on tunnels to port 443 of any host are connected to `secure`, a TLS server.
  void tunnelTo(const tools::LoopbackServer& secure) { secure_ = secure.address(); }

  // From now on requests without this name and password are rejected with 407.
  void requireCredentials(const std::string& user, const std::string& password);

  //   "http://127.0.0.1:40123"
  const std::string& address() const { return address_; }

  // The environment of a program that uses this proxy.
  std::map<std::string, std::string> environment() const;

  // The requests in order, without rejected ones.
  //   {"GET http://shop.example/x", "CONNECT signin.example:443"}
  const std::vector<std::string>& requestLines() const { return requestLines_; }
  int rejected() const { return rejected_; }

 private:
  static void onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query, gpointer self);
  static void onFinished(SoupServer*, SoupServerMessage* message, Proxy* self);
  static void onResponse(GObject* session, GAsyncResult* result, gpointer message);
  static void onConnected(GObject* client, GAsyncResult* result, gpointer message);
  static void join(SoupServerMessage* message, GIOStream* far);
  void forward(SoupServerMessage* message);
  void openTunnel(SoupServerMessage* message);

  platform::Owned<SoupServer> server_;
  platform::Owned<SoupSession> session_;
  std::string site_;
  std::string secure_;
  std::string address_;
  std::vector<std::string> requestLines_;
  int rejected_ = 0;
};

}  // namespace endtoend

// An HTTP proxy on the loopback that leads every host's name to servers of the test, and remembers what it was asked.
//
//   Proxy proxy(site);                                  // "http://shop.example/x" is answered by site's "/x"
//   options.environment.merge(proxy.environment());
//
// Answers while the default main context runs.

#pragma once

#include <libsoup/soup.h>

#include <map>
#include <string>
#include <vector>

#include "tests/tools/site/LoopbackServer.h"
#include "tests/tools/support/Owned.h"

namespace endtoend {

class Proxy {
 public:
  // Plain requests go on to `site`, whose handlers see the path alone. Tunnels are refused with 403.
  // Throws std::runtime_error when it cannot listen.
  explicit Proxy(const tools::LoopbackServer& site);
  ~Proxy();

  Proxy(const Proxy&) = delete;
  Proxy& operator=(const Proxy&) = delete;

  // From now on a tunnel to port 443 of any host leads to `secure`, which speaks TLS.
  void tunnelTo(const tools::LoopbackServer& secure) { secure_ = secure.address(); }

  // From now on whoever does not give this name and password is turned away, with 407.
  void demand(const std::string& user, const std::string& password);

  //   "http://127.0.0.1:40123"
  const std::string& address() const { return address_; }

  // What tells a program to use this proxy.
  std::map<std::string, std::string> environment() const;

  // What was asked, in order, without what was turned away.
  //   {"GET http://shop.example/x", "CONNECT signin.example:443"}
  const std::vector<std::string>& asked() const { return asked_; }
  int turnedAway() const { return turnedAway_; }

 private:
  static void onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query, gpointer self);
  static void onFinished(SoupServer*, SoupServerMessage* message, Proxy* self);
  static void onAnswer(GObject* session, GAsyncResult* result, gpointer message);
  static void onFarEnd(GObject* client, GAsyncResult* result, gpointer message);
  static void join(SoupServerMessage* message, GIOStream* far);
  void forward(SoupServerMessage* message);
  void openTunnel(SoupServerMessage* message);

  tools::Owned<SoupServer> server_;
  tools::Owned<SoupSession> session_;
  std::string site_;
  std::string secure_;
  std::string address_;
  std::vector<std::string> asked_;
  int turnedAway_ = 0;
};

}  // namespace endtoend

// A small web server on the loopback whose pages are functions.
//
// Responds while the default main context runs, on its thread. Not thread-safe.

#pragma once

#include <libsoup/soup.h>

#include <functional>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/Glib.h"

namespace tools {

struct Request {
  std::string method;
  std::string target;                         // as requested, with the query: "/done?code=1"
  std::map<std::string, std::string> query;   // of the target, decoded
  std::map<std::string, std::string> fields;  // of a posted form, decoded
  std::string authorization;                  // the header, empty if missing
  std::string certificate;                    // the subject of the client's certificate, empty if missing
};

struct Response {
  unsigned status = 200;
  std::string body;
  std::map<std::string, std::string> headers;
};

Response page(std::string html);
Response redirectTo(const std::string& address);

class LoopbackServer {
 public:
  using Handler = std::function<Response(const Request&)>;

  // Listens on a free port, with TLS only if there is a certificate. Throws std::runtime_error if it cannot listen.
  explicit LoopbackServer(GTlsCertificate* certificate = nullptr);
  ~LoopbackServer();

  LoopbackServer(const LoopbackServer&) = delete;
  LoopbackServer& operator=(const LoopbackServer&) = delete;

  //   address("/done?code=1")  => "http://127.0.0.1:40123/done?code=1"
  std::string address(const std::string& target = "") const { return base_ + target; }

  // From now on asks every client for a certificate, and accepts any. `mode`: whether a client may come without one.
  void askForCertificates(GTlsAuthenticationMode mode);

  // Paths without a handler get the status 404.
  void serve(const std::string& path, Handler handler) { handlers_[path] = std::move(handler); }
  void serve(const std::string& path, const Response& response);

  // Delays the responses of a path until release().
  void hold(const std::string& path) { held_.insert(path); }
  void release(const std::string& path);

  const std::vector<Request>& requests() const { return requests_; }

  //   "GET /signin"
  std::vector<std::string> requestLines() const;
  bool wasRequested(const std::string& methodAndTarget) const;

 private:
  std::string certificateOf(SoupServerMessage* message);
  static void onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query, gpointer self);
  void respond(SoupServerMessage* message, const std::string& path, Request request);

  platform::Owned<SoupServer> server_;
  std::string base_;
  std::map<std::string, Handler> handlers_;
  std::set<std::string> held_;
  std::multimap<std::string, platform::Owned<SoupServerMessage>> waiting_;
  std::vector<Request> requests_;
  std::map<std::string, std::string> certificates_;  // of each connection, by the client's address
};

}  // namespace tools

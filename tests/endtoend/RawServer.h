// A server on the loopback that sends fixed bytes in response to each connection's first request. For malformed and
// incomplete responses.

#pragma once

#include <gio/gio.h>

#include <string>

#include "platform/linux/Glib.h"

namespace endtoend {

class RawServer {
 public:
  // Throws std::runtime_error if it cannot listen. `closes`: closes the connection after the answer.
  explicit RawServer(std::string answer, bool closes = true);

  RawServer(const RawServer&) = delete;
  RawServer& operator=(const RawServer&) = delete;

  //   address("/done")  => "http://127.0.0.1:40123/done"
  std::string address(const std::string& target = "") const { return base_ + target; }

 private:
  static gboolean onConnection(GSocketService*, GSocketConnection* connection, GObject*, gpointer self);
  static void onRequest(GObject* input, GAsyncResult* result, gpointer exchange);

  platform::Owned<GSocketService> service_;
  std::string base_;
  std::string answer_;
  bool closes_;
};

}  // namespace endtoend

#include "tests/endtoend/RawServer.h"

#include <array>
#include <memory>
#include <stdexcept>
#include <utility>

namespace endtoend {

using platform::Owned;

namespace {

struct Exchange {
  Owned<GSocketConnection> connection;
  std::string answer;
  bool closes = true;
  std::array<char, 65536> request{};
};

}  // namespace

RawServer::RawServer(std::string answer, bool closes)
    : service_(g_socket_service_new()), answer_(std::move(answer)), closes_(closes) {
  const Owned<GInetAddress> loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  const Owned<GSocketAddress> anyPort(g_inet_socket_address_new(loopback.get(), 0));
  GSocketAddress* address = nullptr;
  g_autoptr(GError) error = nullptr;
  if (!g_socket_listener_add_address(G_SOCKET_LISTENER(service_.get()), anyPort.get(), G_SOCKET_TYPE_STREAM,
                                     G_SOCKET_PROTOCOL_TCP, nullptr, &address, &error)) {
    throw std::runtime_error(error->message);
  }
  const Owned<GSocketAddress> bound(address);
  base_ = "http://127.0.0.1:" + std::to_string(g_inet_socket_address_get_port(G_INET_SOCKET_ADDRESS(address)));
  g_signal_connect(service_.get(), "incoming", G_CALLBACK(&RawServer::onConnection), this);
}

gboolean RawServer::onConnection(GSocketService*, GSocketConnection* connection, GObject*, gpointer self) {
  auto* exchange = new Exchange;
  exchange->connection.reset(G_SOCKET_CONNECTION(g_object_ref(connection)));
  exchange->answer = static_cast<RawServer*>(self)->answer_;
  exchange->closes = static_cast<RawServer*>(self)->closes_;
  g_input_stream_read_async(g_io_stream_get_input_stream(G_IO_STREAM(connection)), exchange->request.data(),
                            exchange->request.size(), G_PRIORITY_DEFAULT, nullptr, &RawServer::onRequest, exchange);
  return TRUE;
}

void RawServer::onRequest(GObject* input, GAsyncResult* result, gpointer data) {
  std::unique_ptr<Exchange> exchange(static_cast<Exchange*>(data));
  if (g_input_stream_read_finish(G_INPUT_STREAM(input), result, nullptr) <= 0) return;

  // The client may have closed the connection already.
  auto* stream = G_IO_STREAM(exchange->connection.get());
  (void)g_output_stream_write_all(g_io_stream_get_output_stream(stream), exchange->answer.data(),
                                  exchange->answer.size(), nullptr, nullptr, nullptr);
  if (exchange->closes) return void(g_io_stream_close(stream, nullptr, nullptr));

  // Waits for the client to close the connection.
  Exchange& open = *exchange.release();
  g_input_stream_read_async(G_INPUT_STREAM(input), open.request.data(), open.request.size(), G_PRIORITY_DEFAULT,
                            nullptr, &RawServer::onRequest, &open);
}

}  // namespace endtoend

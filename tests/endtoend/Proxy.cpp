#include "tests/endtoend/Proxy.h"

#include <stdexcept>

namespace endtoend {

using platform::Owned;

namespace {

constexpr guint16 kTlsPort = 443;
constexpr char kRefusal[] = "<p>The proxy does not allow this.";

void copyHeader(const char* name, const char* value, gpointer to) {
  soup_message_headers_append(static_cast<SoupMessageHeaders*>(to), name, value);
}

std::string requestLine(SoupServerMessage* message) {
  GUri* const address = soup_server_message_get_uri(message);
  const std::string method = soup_server_message_get_method(message);
  if (method == SOUP_METHOD_CONNECT) {
    return method + " " + g_uri_get_host(address) + ":" + std::to_string(g_uri_get_port(address));
  }
  const Owned<char, g_free> text(g_uri_to_string(address));
  return method + " " + text.get();
}

gboolean hasCredentials(SoupAuthDomain*, SoupServerMessage*, const char* user, const char* password, gpointer known) {
  return *static_cast<std::string*>(known) == std::string(user) + ":" + password;
}

}  // namespace

Proxy::Proxy(const tools::LoopbackServer& site)
    : server_(soup_server_new(nullptr, nullptr)), session_(soup_session_new()), site_(site.address()) {
  soup_session_set_proxy_resolver(session_.get(), nullptr);
  const Owned<GInetAddress> loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  const Owned<GSocketAddress> anyPort(g_inet_socket_address_new(loopback.get(), 0));
  g_autoptr(GError) error = nullptr;
  if (!soup_server_listen(server_.get(), anyPort.get(), SoupServerListenOptions{}, &error)) {
    throw std::runtime_error(error->message);
  }
  GSList* addresses = soup_server_get_uris(server_.get());
  address_ = "http://127.0.0.1:" + std::to_string(g_uri_get_port(static_cast<GUri*>(addresses->data)));
  g_slist_free_full(addresses, [](gpointer each) { g_uri_unref(static_cast<GUri*>(each)); });
  soup_server_add_handler(server_.get(), nullptr, &Proxy::onRequest, this, nullptr);
  g_signal_connect(server_.get(), "request-finished", G_CALLBACK(&Proxy::onFinished), this);
}

Proxy::~Proxy() {
  soup_session_abort(session_.get());
  soup_server_disconnect(server_.get());
}

void Proxy::requireCredentials(const std::string& user, const std::string& password) {
  const Owned<SoupAuthDomain> domain(soup_auth_domain_basic_new("realm", "proxy", "proxy", TRUE, nullptr));
  soup_auth_domain_add_path(domain.get(), "");
  soup_auth_domain_basic_set_auth_callback(domain.get(), hasCredentials, new std::string(user + ":" + password),
                                           [](gpointer known) { delete static_cast<std::string*>(known); });
  soup_server_add_auth_domain(server_.get(), domain.get());
}

std::map<std::string, std::string> Proxy::environment() const {
  return {{"http_proxy", address_}, {"https_proxy", address_}};
}

void Proxy::onRequest(SoupServer*, SoupServerMessage* message, const char*, GHashTable*, gpointer data) {
  auto* const self = static_cast<Proxy*>(data);
  self->requestLines_.push_back(requestLine(message));
  if (soup_server_message_get_method(message) == std::string(SOUP_METHOD_CONNECT)) {
    self->openTunnel(message);
  } else {
    self->forward(message);
  }
}

void Proxy::onFinished(SoupServer*, SoupServerMessage* message, Proxy* self) {
  if (soup_server_message_get_status(message) == SOUP_STATUS_PROXY_AUTHENTICATION_REQUIRED) ++self->rejected_;
}

void Proxy::forward(SoupServerMessage* message) {
  GUri* const address = soup_server_message_get_uri(message);
  const char* const query = g_uri_get_query(address);
  const std::string onwards = site_ + g_uri_get_path(address) + (query == nullptr ? "" : std::string("?") + query);
  const Owned<SoupMessage> request(soup_message_new(soup_server_message_get_method(message), onwards.c_str()));
  soup_message_add_flags(request.get(), SOUP_MESSAGE_NO_REDIRECT);

  SoupMessageHeaders* const headers = soup_message_get_request_headers(request.get());
  soup_message_headers_foreach(soup_server_message_get_request_headers(message), copyHeader, headers);
  soup_message_headers_clean_connection_headers(headers);
  soup_message_headers_remove(headers, "Accept-Encoding");
  g_autoptr(GBytes) body = soup_message_body_flatten(soup_server_message_get_request_body(message));
  if (g_bytes_get_size(body) > 0) soup_message_set_request_body_from_bytes(request.get(), nullptr, body);

  soup_server_message_pause(message);
  g_object_set_data_full(G_OBJECT(message), "onwards", g_object_ref(request.get()), g_object_unref);
  soup_session_send_and_read_async(session_.get(), request.get(), G_PRIORITY_DEFAULT, nullptr, &Proxy::onResponse,
                                   g_object_ref(message));
}

void Proxy::onResponse(GObject* session, GAsyncResult* result, gpointer data) {
  const Owned<SoupServerMessage> message(static_cast<SoupServerMessage*>(data));
  g_autoptr(GBytes) body = soup_session_send_and_read_finish(SOUP_SESSION(session), result, nullptr);
  auto* const response = static_cast<SoupMessage*>(g_object_get_data(G_OBJECT(message.get()), "onwards"));
  if (body == nullptr) {
    soup_server_message_set_status(message.get(), SOUP_STATUS_BAD_GATEWAY, nullptr);
  } else {
    soup_server_message_set_status(message.get(), soup_message_get_status(response), nullptr);
    SoupMessageHeaders* const headers = soup_server_message_get_response_headers(message.get());
    soup_message_headers_foreach(soup_message_get_response_headers(response), copyHeader, headers);
    soup_message_body_append(soup_server_message_get_response_body(message.get()), SOUP_MEMORY_COPY,
                             g_bytes_get_data(body, nullptr), g_bytes_get_size(body));
  }
  soup_server_message_unpause(message.get());
}

void Proxy::openTunnel(SoupServerMessage* message) {
  if (secure_.empty() || g_uri_get_port(soup_server_message_get_uri(message)) != kTlsPort) {
    soup_server_message_set_response(message, "text/html", SOUP_MEMORY_STATIC, kRefusal, sizeof kRefusal - 1);
    soup_server_message_set_status(message, SOUP_STATUS_FORBIDDEN, nullptr);
    return;
  }
  soup_server_message_pause(message);
  const Owned<GSocketClient> client(g_socket_client_new());
  g_socket_client_set_enable_proxy(client.get(), FALSE);
  g_socket_client_connect_to_uri_async(client.get(), secure_.c_str(), kTlsPort, nullptr, &Proxy::onConnected,
                                       g_object_ref(message));
}

void Proxy::onConnected(GObject* client, GAsyncResult* result, gpointer data) {
  const Owned<SoupServerMessage> message(static_cast<SoupServerMessage*>(data));
  GSocketConnection* const far = g_socket_client_connect_finish(G_SOCKET_CLIENT(client), result, nullptr);
  if (far == nullptr) {
    soup_server_message_set_status(message.get(), SOUP_STATUS_BAD_GATEWAY, nullptr);
  } else {
    soup_server_message_set_status(message.get(), SOUP_STATUS_OK, nullptr);
    g_signal_connect_data(
        message.get(), "wrote-body", G_CALLBACK(&Proxy::join), far,
        [](gpointer stream, GClosure*) { g_object_unref(stream); }, GConnectFlags{});
  }
  soup_server_message_unpause(message.get());
}

void Proxy::join(SoupServerMessage* message, GIOStream* far) {
  constexpr auto kFlags =
      static_cast<GIOStreamSpliceFlags>(G_IO_STREAM_SPLICE_CLOSE_STREAM1 | G_IO_STREAM_SPLICE_CLOSE_STREAM2);
  const Owned<GIOStream> near(soup_server_message_steal_connection(message));
  g_io_stream_splice_async(near.get(), far, kFlags, G_PRIORITY_DEFAULT, nullptr, nullptr, nullptr);
}

}  // namespace endtoend

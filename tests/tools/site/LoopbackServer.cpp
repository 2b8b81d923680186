#include "tests/tools/site/LoopbackServer.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace tools {
namespace {

constexpr char kFormType[] = "application/x-www-form-urlencoded";

std::map<std::string, std::string> toMap(GHashTable* table) {
  std::map<std::string, std::string> result;
  if (table == nullptr) return result;
  GHashTableIter each;
  gpointer name = nullptr;
  gpointer value = nullptr;
  g_hash_table_iter_init(&each, table);
  while (g_hash_table_iter_next(&each, &name, &value)) {
    result[static_cast<const char*>(name)] = static_cast<const char*>(value);
  }
  return result;
}

std::map<std::string, std::string> postedForm(SoupServerMessage* message) {
  const char* type = soup_message_headers_get_content_type(soup_server_message_get_request_headers(message), nullptr);
  if (type == nullptr || std::string(type) != kFormType) return {};
  g_autoptr(GBytes) body = soup_message_body_flatten(soup_server_message_get_request_body(message));
  gsize size = 0;
  const auto* bytes = static_cast<const char*>(g_bytes_get_data(body, &size));
  g_autoptr(GHashTable) form = soup_form_decode(std::string(bytes, size).c_str());
  return toMap(form);
}

std::string headerOf(SoupServerMessage* message, const char* name) {
  const char* value = soup_message_headers_get_one(soup_server_message_get_request_headers(message), name);
  return value == nullptr ? "" : value;
}

std::string targetOf(SoupServerMessage* message) {
  GUri* address = soup_server_message_get_uri(message);
  const char* query = g_uri_get_query(address);
  return std::string(g_uri_get_path(address)) + (query == nullptr ? "" : std::string("?") + query);
}

gboolean acceptCertificate(SoupServerMessage*, GTlsCertificate*, GTlsCertificateFlags, gpointer) {
  return TRUE;
}

void onRequestStarted(SoupServer*, SoupServerMessage* message, gpointer) {
  g_signal_connect(message, "accept-certificate", G_CALLBACK(acceptCertificate), nullptr);
}

void send(SoupServerMessage* message, const Response& response) {
  soup_server_message_set_status(message, response.status, nullptr);
  SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
  for (const auto& [name, value] : response.headers)
    soup_message_headers_replace(headers, name.c_str(), value.c_str());
  SoupMessageBody* body = soup_server_message_get_response_body(message);
  soup_message_body_append(body, SOUP_MEMORY_COPY, response.body.data(), response.body.size());
}

}  // namespace

Response page(std::string html) {
  return {200, std::move(html), {{"Content-Type", "text/html; charset=utf-8"}}};
}

Response redirectTo(const std::string& address) {
  return {302, "", {{"Location", address}}};
}

LoopbackServer::LoopbackServer(GTlsCertificate* certificate)
    : server_(soup_server_new("tls-certificate", certificate, nullptr)) {
  platform::Owned<GInetAddress> loopback(g_inet_address_new_loopback(G_SOCKET_FAMILY_IPV4));
  platform::Owned<GSocketAddress> anyPort(g_inet_socket_address_new(loopback.get(), 0));
  const auto protocol = certificate == nullptr ? SoupServerListenOptions{} : SOUP_SERVER_LISTEN_HTTPS;
  g_autoptr(GError) error = nullptr;
  if (!soup_server_listen(server_.get(), anyPort.get(), protocol, &error)) throw std::runtime_error(error->message);

  GSList* addresses = soup_server_get_uris(server_.get());
  auto* address = static_cast<GUri*>(addresses->data);
  base_ = std::string(g_uri_get_scheme(address)) + "://127.0.0.1:" + std::to_string(g_uri_get_port(address));
  g_slist_free_full(addresses, [](gpointer each) { g_uri_unref(static_cast<GUri*>(each)); });

  soup_server_add_handler(server_.get(), nullptr, &LoopbackServer::onRequest, this, nullptr);
}

LoopbackServer::~LoopbackServer() {
  soup_server_disconnect(server_.get());
}

void LoopbackServer::askForCertificates(GTlsAuthenticationMode mode) {
  g_object_set(server_.get(), "tls-auth-mode", mode, nullptr);
  g_signal_connect(server_.get(), "request-started", G_CALLBACK(onRequestStarted), nullptr);
}

void LoopbackServer::serve(const std::string& path, const Response& response) {
  serve(path, [response](const Request&) { return response; });
}

void LoopbackServer::release(const std::string& path) {
  held_.erase(path);
  const auto [first, last] = waiting_.equal_range(path);
  std::for_each(first, last, [](auto& each) { soup_server_message_unpause(each.second.get()); });
  waiting_.erase(first, last);
}

std::vector<std::string> LoopbackServer::requestLines() const {
  std::vector<std::string> result;
  for (const Request& request : requests_)
    result.push_back(request.method + " " + request.target);
  return result;
}

bool LoopbackServer::wasRequested(const std::string& methodAndTarget) const {
  const std::vector<std::string> all = requestLines();
  return std::find(all.begin(), all.end(), methodAndTarget) != all.end();
}

// libsoup names the certificate of a connection at its first request only.
std::string LoopbackServer::certificateOf(SoupServerMessage* message) {
  const platform::Owned<char, g_free> client(
      g_socket_connectable_to_string(G_SOCKET_CONNECTABLE(soup_server_message_get_remote_address(message))));
  GTlsCertificate* const certificate = soup_server_message_get_tls_peer_certificate(message);
  if (certificate != nullptr) {
    const platform::Owned<char, g_free> subject(g_tls_certificate_get_subject_name(certificate));
    certificates_[client.get()] = subject.get();
  }
  return certificates_[client.get()];
}

void LoopbackServer::onRequest(SoupServer*, SoupServerMessage* message, const char* path, GHashTable* query,
                               gpointer self) {
  auto* const server = static_cast<LoopbackServer*>(self);
  server->respond(message, path,
                  {soup_server_message_get_method(message), targetOf(message), toMap(query), postedForm(message),
                   headerOf(message, "Authorization"), server->certificateOf(message)});
}

void LoopbackServer::respond(SoupServerMessage* message, const std::string& path, Request request) {
  const auto handler = handlers_.find(path);
  send(message, handler == handlers_.end() ? Response{404, "Not found", {}} : handler->second(request));
  requests_.push_back(std::move(request));

  if (held_.count(path) == 0) return;
  soup_server_message_pause(message);
  waiting_.emplace(path, static_cast<SoupServerMessage*>(g_object_ref(message)));
}

}  // namespace tools

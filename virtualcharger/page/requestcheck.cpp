#include "virtualcharger/page/requestcheck.h"

#include "virtualcharger/page/pagefiles.h"

namespace {

constexpr std::string_view kSocket = "/ws";

bool IsOwn(std::string_view host, std::uint16_t port) {
  return host == PageAddress("127.0.0.1", port) || host == PageAddress("localhost", port);
}

}  // namespace

std::string PageAddress(std::string_view host, std::uint16_t port) {
  constexpr std::uint16_t kUnwritten = 80;
  return std::string(host) + (port == kUnwritten ? "" : ':' + std::to_string(port));
}

SVerdict CheckRequest(const SPageRequest& request, std::uint16_t port) {
  if (request.hosts.size() != 1 || !IsOwn(request.hosts.front(), port)) {
    return {403, "This server is " + PageAddress("http://127.0.0.1", port) + "/ and nothing else."};
  }
  if (request.method != "GET") return {405, "Only GET is served."};
  if (request.target != kSocket) {
    if (FindPageFile(request.target) != nullptr) return {200, ""};
    return {404, "The page is at /."};
  }
  if (!request.upgrade) return {426, "This is for WebSockets."};
  const auto own = "http://" + std::string(request.hosts.front());
  if (request.origins.size() != 1 || request.origins.front() != own) {
    return {403, "Only the page of this server may talk to it."};
  }
  return {101, ""};
}

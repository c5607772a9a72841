// Which HTTP requests get an answer other than an error.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

struct SPageRequest {
  std::string_view method;
  std::string_view target;
  std::vector<std::string_view> hosts;    // the values of all Host fields
  std::vector<std::string_view> origins;  // the values of all Origin fields
  bool upgrade = false;                   // to WebSocket
};

struct SVerdict {
  unsigned status;   // HTTP's; 101: a WebSocket may begin, 200: the target is one of the files
  std::string text;  // for people; empty where there is nothing to say
};

// The address as a browser writes it.
std::string PageAddress(std::string_view host, std::uint16_t port);

SVerdict CheckRequest(const SPageRequest& request, std::uint16_t port);

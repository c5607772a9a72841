#include "utils/servicenames.h"

#include <fmt/core.h>

std::string GetMeterServiceName(std::uint8_t index) {
  return GetConnectorSpecificServiceName("Meter", index);
}

std::string GetConnectorSpecificServiceName(std::string_view base, std::uint8_t index) {
  return fmt::format("{}{}", base, index);
}

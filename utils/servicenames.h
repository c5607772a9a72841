// The names of services of which there is one for each part of the charger.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

// "Meter1" for 1.
std::string GetMeterServiceName(std::uint8_t index);

// "Base1" for "Base" and 1.
std::string GetConnectorSpecificServiceName(std::string_view base, std::uint8_t index);

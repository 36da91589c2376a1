#include "Model/Apps/OZDeviceInformation.h"

#include <algorithm>
#include <span>
#include <string_view>

#include <fmt/format.h>

namespace {

/// A run of models: {"iPad", 2, 1, 7} stands for "iPad2,1" to "iPad2,7".
struct Models {
    std::string_view family;
    int generation;
    int first;
    int last;
};

constexpr Models knownDevices[] = {
    {"iPad", 1, 1, 1},   {"iPad", 2, 1, 7},   {"iPad", 3, 1, 6},   {"iPad", 4, 1, 9},   {"iPad", 5, 1, 4},
    {"iPad", 6, 3, 4},   {"iPad", 6, 7, 8},   {"iPad", 6, 11, 12}, {"iPad", 7, 1, 4},   {"iPhone", 1, 1, 2},
    {"iPhone", 2, 1, 1}, {"iPhone", 3, 1, 3}, {"iPhone", 4, 1, 1}, {"iPhone", 5, 1, 4}, {"iPhone", 6, 1, 2},
    {"iPhone", 7, 1, 2}, {"iPhone", 8, 1, 2}, {"iPhone", 8, 4, 4}, {"iPhone", 9, 1, 4}, {"iPhone", 10, 1, 6},
    {"iPod", 1, 1, 1},   {"iPod", 2, 1, 1},   {"iPod", 3, 1, 1},   {"iPod", 4, 1, 1},   {"iPod", 5, 1, 1},
    {"iPod", 7, 1, 1},
};

constexpr Models fourInchDevices[] = {
    {"iPhone", 5, 1, 4}, {"iPhone", 6, 1, 2}, {"iPhone", 8, 4, 4}, {"iPod", 5, 1, 1}, {"iPod", 7, 1, 1},
};

constexpr Models nonRetinaDevices[] = {
    {"iPad", 1, 1, 1}, {"iPad", 2, 1, 7}, {"iPhone", 1, 1, 2}, {"iPhone", 2, 1, 1},
    {"iPod", 1, 1, 1}, {"iPod", 2, 1, 1}, {"iPod", 3, 1, 1},
};

constexpr Models retina2xDevices[] = {
    {"iPad", 3, 1, 6},   {"iPad", 4, 1, 9},    {"iPad", 5, 1, 4},    {"iPad", 6, 3, 4},   {"iPad", 6, 7, 8},
    {"iPad", 6, 11, 12}, {"iPad", 7, 1, 4},    {"iPhone", 3, 1, 3},  {"iPhone", 4, 1, 1}, {"iPhone", 5, 1, 4},
    {"iPhone", 6, 1, 2}, {"iPhone", 7, 2, 2},  {"iPhone", 8, 1, 1},  {"iPhone", 8, 4, 4}, {"iPhone", 9, 1, 1},
    {"iPhone", 9, 3, 3}, {"iPhone", 10, 1, 1}, {"iPhone", 10, 4, 4}, {"iPod", 4, 1, 1},   {"iPod", 5, 1, 1},
    {"iPod", 7, 1, 1},
};

constexpr Models retina3xDevices[] = {
    {"iPhone", 7, 1, 1}, {"iPhone", 8, 2, 2},  {"iPhone", 9, 2, 2},
    {"iPhone", 9, 4, 4}, {"iPhone", 10, 2, 3}, {"iPhone", 10, 5, 6},
};

bool contains(std::span<const Models> table, std::string_view hardwareString) {
    return std::ranges::any_of(table, [&](const Models& models) {
        for (int number = models.first; number <= models.last; ++number) {
            if (fmt::format("{}{},{}", models.family, models.generation, number) == hardwareString) {
                return true;
            }
        }
        return false;
    });
}

OZTriState triState(bool answer) {
    return answer ? OZTriState::yes : OZTriState::no;
}

OZTriState fact(const OZDeviceInformation& device, std::span<const Models> members) {
    return device.isKnownDevice() ? triState(contains(members, device.hardwareString()))
                                  : OZTriState::unknown;
}

} // namespace

bool OZDeviceInformation::isKnownDevice() const {
    return contains(knownDevices, _hardwareString);
}

OZTriState OZDeviceInformation::is4inchDevice() const {
    return fact(*this, fourInchDevices);
}

OZTriState OZDeviceInformation::isiPad() const {
    return _hardwareString.empty() ? OZTriState::unknown : triState(_hardwareString.starts_with("iPad"));
}

OZTriState OZDeviceInformation::isNonRetinaDevice() const {
    return fact(*this, nonRetinaDevices);
}

OZTriState OZDeviceInformation::isRetina2xDevice() const {
    return fact(*this, retina2xDevices);
}

OZTriState OZDeviceInformation::isRetina3xDevice() const {
    return fact(*this, retina3xDevices);
}

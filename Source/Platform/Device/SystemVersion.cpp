#include "Platform/Device/DeviceFacts.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <vector>

namespace platform {
namespace {

constexpr std::array systemVersions = {
    SystemVersion{"4.0", 751.32, 550.32},     SystemVersion{"4.1", 751.37, 550.38},
    SystemVersion{"4.2", 751.49, 550.52},     SystemVersion{"4.3", 751.49, 550.58},
    SystemVersion{"5.0", ios::v5_0, 675.00},  SystemVersion{"5.1", 890.10, 690.10},
    SystemVersion{"6.0", ios::v6_0, 793.00},  SystemVersion{"6.1", ios::v6_1, 793.00},
    SystemVersion{"7.0", ios::v7_0, 847.20},  SystemVersion{"7.1", ios::v7_1, 847.24},
    SystemVersion{"8.0", ios::v8_0, 1140.10}, SystemVersion{"8.1", ios::v8_1, 1141.14},
    SystemVersion{"8.2", 1142.14, 1142.16},   SystemVersion{"8.3", 1144.17, 1144.17},
    SystemVersion{"8.4", 1144.17, 1145.15},   SystemVersion{"9.0", ios::v9_0, 1240.1},
    SystemVersion{"9.1", 1241.14, 1241.11},   SystemVersion{"9.2", ios::v9_2, 1242.13},
    SystemVersion{"9.3", 1280.25, 1280.38},   SystemVersion{"10.0", 1348.0, 1348.0},
    SystemVersion{"10.2", 1348.22, 1348.22},  SystemVersion{"10.3", 1349.13, 1349.56},
    SystemVersion{"11.0", 1443.14, 1443.00},  SystemVersion{"11.1", 1445.32, 1445.32},
    SystemVersion{"11.2", 1450.14, 1450.14},  SystemVersion{"11.3", 1452.23, 1452.23},
};

/// The numeric components of a version; none for a text that has others.
std::optional<std::vector<unsigned>> components(std::string_view version) {
    std::vector<unsigned> numbers;
    const char* position = version.data();
    const char* const end = position + version.size();
    while (true) {
        unsigned number = 0;
        const auto [next, error] = std::from_chars(position, end, number);
        if (error != std::errc()) {
            return std::nullopt;
        }
        numbers.push_back(number);
        if (next == end) {
            return numbers;
        }
        if (*next != '.') {
            return std::nullopt;
        }
        position = next + 1;
    }
}

} // namespace

std::optional<std::vector<unsigned>> versionNumbers(std::string_view productVersion) {
    auto numbers = components(productVersion);
    while (numbers && numbers->size() > 1 && numbers->back() == 0) {
        numbers->pop_back();
    }
    return numbers;
}

std::optional<SystemVersion> systemVersionForProductVersion(std::string_view productVersion) {
    auto wanted = components(productVersion);
    if (!wanted) {
        return std::nullopt;
    }
    wanted->resize(std::max<size_t>(wanted->size(), 2)); // "10" is "10.0"
    std::optional<SystemVersion> newest;
    for (const SystemVersion& version : systemVersions) {
        if (*components(version.productVersion) <= *wanted) {
            newest = version;
        }
    }
    return newest;
}

} // namespace platform

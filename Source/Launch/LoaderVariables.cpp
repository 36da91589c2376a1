#include "Launch/LoaderVariables.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <unistd.h>

namespace {

// What the loader itself ignores where a program has more rights than its caller, and what shells read at
// their start.
constexpr std::array<std::string_view, 20> names = {
    "BASHOPTS",         "BASH_ENV",       "CDPATH",      "ENV",     "GCONV_PATH",
    "GETCONF_DIR",      "GLIBC_TUNABLES", "HOSTALIASES", "IFS",     "LOCALDOMAIN",
    "LOCPATH",          "MALLOC_TRACE",   "NIS_PATH",    "NLSPATH", "PS4",
    "RESOLV_HOST_CONF", "RES_OPTIONS",    "SHELLOPTS",   "TZDIR",   "POSIXLY_CORRECT"};
constexpr std::array<std::string_view, 2> prefixes = {"LD_", "BASH_FUNC_"};

bool steers(std::string_view name) {
    return std::ranges::find(names, name) != names.end() ||
           std::ranges::any_of(prefixes, [&](auto prefix) { return name.starts_with(prefix); });
}

} // namespace

void forgetLoaderVariables() {
    std::vector<std::string> found;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
        const std::string_view variable = *entry;
        const std::string_view name = variable.substr(0, variable.find('='));
        if (steers(name)) {
            found.emplace_back(name);
        }
    }
    std::ranges::for_each(found, [](const std::string& name) { ::unsetenv(name.c_str()); });
}

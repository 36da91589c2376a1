// Product versions: a newer one never has the libraries of an older one.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Platform/Device/DeviceFacts.h"

void readInput(std::string_view bytes) {
    const auto version = platform::systemVersionForProductVersion(bytes);
    if (version) {
        const auto longer = platform::systemVersionForProductVersion(std::string(bytes) + ".1");
        require(longer && longer->foundationVersion >= version->foundationVersion);
    }
}

// The service manager's listing of daemons that are disabled.
#include "Fuzz/Input.h"
#include "Fuzz/Require.h"
#include "Model/Items/Togglable/Daemons/OZOverrideDaemon.h"

void readInput(std::string_view bytes) {
    const auto overrides = OZOverrideDaemon::overridesInListing(bytes);
    for (const auto& [identifier, state] : overrides) {
        require(!identifier.starts_with('"') && !identifier.ends_with('"'));
        std::ignore = OZOverrideDaemon::isEnabledIn(overrides, identifier);
    }
    require(overrides.contains("no such daemon") ||
            OZOverrideDaemon::isEnabledIn(overrides, "no such daemon"));
}

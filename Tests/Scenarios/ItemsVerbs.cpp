// What scenarios can do with togglable and deletable items.

#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

const Verbs verbs{};

} // namespace

} // namespace scenarios

// What scenarios can do with the terminal menu.

#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

const Verbs verbs{};

} // namespace

} // namespace scenarios

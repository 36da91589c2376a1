// What scenarios can do with applications and facts about the device.

#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

const Verbs verbs{};

} // namespace

} // namespace scenarios

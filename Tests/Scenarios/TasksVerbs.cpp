// What scenarios can do with tools.

#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

const Verbs verbs{};

} // namespace

} // namespace scenarios

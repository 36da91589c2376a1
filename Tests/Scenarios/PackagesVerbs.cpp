// What scenarios can do with packages and their graph.

#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

const Verbs verbs{};

} // namespace

} // namespace scenarios

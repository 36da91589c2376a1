// What scenarios can do with the engine: choices, primitives and runs that are no cleanup steps.

#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

const Verbs verbs{};

} // namespace

} // namespace scenarios

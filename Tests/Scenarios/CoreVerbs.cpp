// What scenarios can do with the engine: choices, primitives and runs that are no cleanup steps.

#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Tests/Scenarios/Runner/World.h"
#include "Tests/Support/LogReader.h"

#include <fmt/format.h>

namespace scenarios {

namespace {

template <OZAction action>
void remove(World& world, const Words& /*words*/, Analyze analyze) {
    world.builder().core().remove(action, analyze);
}

/// Each word is a path.
template <void (CleanupRun::*primitive)(const CleanupRun::Paths&)>
void perform(World& world, const Words& words, Analyze /*analyze*/) {
    (world.builder().core().run().*primitive)(words);
}

const Actions actions{{"remove3xImages", remove<OZAction::remove3xImages>},
                      {"remove2xImages", remove<OZAction::remove2xImages>},
                      {"remove1xImages", remove<OZAction::remove1xImages>},
                      {"removeiPadImages", remove<OZAction::removeiPadImages>},
                      {"remove4InchImages", remove<OZAction::remove4InchImages>},
                      {"removeiTunesArtwork", remove<OZAction::removeiTunesArtwork>},
                      {"removeLanguages", remove<OZAction::removeLanguages>},
                      {"removeKeyboards", remove<OZAction::removeKeyboards>},
                      {"removeVoiceControlLanguages", remove<OZAction::removeVoiceControlLanguages>},
                      {"del", perform<&CleanupRun::del>},
                      {"delr", perform<&CleanupRun::delr>},
                      {"quickDel", perform<&CleanupRun::quickDel>},
                      {"quickDelLang", perform<&CleanupRun::quickDelLang>}};

const Verbs verbs{};

} // namespace

} // namespace scenarios

// What scenarios can do with paths, files and formats.

#include "Platform/Formats/PropertyList.h"
#include "Tests/Scenarios/Runner/World.h"

namespace scenarios {

namespace {

/// A file's content as it stands, a property list's as one value.
void show(World& world, const Words& words) {
    const std::string content = world.folder.contents(words.at(0));
    const auto list = platform::parsePropertyList(content);
    list ? world.say(textOf(list.value())) : world.print(content);
}

void reopen(World& world, const Words& /*words*/) {
    world.reopen();
}

const Verbs verbs{{"show", show}, {"reopen", reopen}};

} // namespace

} // namespace scenarios

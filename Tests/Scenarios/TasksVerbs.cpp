// What scenarios can do with tools.

#include "Model/Apps/OZAppList.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Model/Tasks/OZTask.h"
#include "Model/Tasks/OZTaskManager.h"
#include "Tests/Scenarios/Runner/World.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <regex>

#include <fmt/format.h>

namespace scenarios {

namespace {

/// "> tool [OUT ERR] PATH words": what a tool writes to the streams that are captured, and how it ends.
void tool(World& world, const Words& words) {
    const auto action = [](const std::string& word) {
        return word == "discard" ? OZTaskStreamAction::discard : OZTaskStreamAction::capture;
    };
    const size_t place = words.at(0) == "discard" || words[0] == "capture" ? 2 : 0;
    const auto task = OZTask::make(world.device(), words.at(place), {words.begin() + place + 1, words.end()});
    task->setStdOutAction(action(words[0]));
    task->setStdErrAction(action(words[place / 2]));
    const bool exited = task->launchSynchronously();
    task->output() ? world.print(*task->output()) : world.say("no text");
    if (const auto& error = task->error()) {
        world.say(fmt::format("{} {}: {}", error->domain, error->code, error->localizedDescription));
    }
    if (!exited || task->terminationStatus() != 0) {
        world.say(exited ? fmt::format("status {}", task->terminationStatus()) : "failed");
    }
}

/// "> sorted verb words": what that says, for folders, which have no order.
void sorted(World& world, const Words& words) {
    Verbs::named(words.at(0))(world, {words.begin() + 1, words.end()});
    Lines lines = world.takeOutput();
    std::ranges::sort(lines);
    for (const auto& line : lines) {
        world.say(line.substr(2));
    }
}

/// "> only REGEX verb words": of what that says, the lines that hold a match.
void only(World& world, const Words& words) {
    Verbs::named(words.at(1))(world, {words.begin() + 2, words.end()});
    const std::regex pattern(words[0]);
    for (const auto& line : world.takeOutput()) {
        if (std::regex_search(line, pattern)) {
            world.say(line.substr(2));
        }
    }
}

/// "> environment NAME VALUE verb words": the same with a variable of this process.
void environment(World& world, const Words& words) {
    ::setenv(words.at(0).c_str(), words.at(1).c_str(), 1);
    Verbs::named(words.at(2))(world, {words.begin() + 3, words.end()});
    ::unsetenv(words[0].c_str());
}

/// Where a tool of this name is, and where it is once that one has gone, and so on.
void where(World& world, const Words& words) {
    std::string places;
    while (const auto path = OZTask::launchPathForExecutable(world.device(), words.at(0))) {
        places += *path + " ";
        std::filesystem::remove(world.folder.folder() / "Tools" / path->substr(1));
    }
    world.say(places + "nowhere");
}

void changeDirectory(World& world, const Words& words) {
    world.say(world.device().fileManager().changeCurrentDirectoryPath(words.at(0)) ? "there" : "not there");
}

/// "> kill SIGNAL NAME…": the status.
void kill(World& world, const Words& words) {
    world.say(
        fmt::format("{}", OZTaskManager::killTasksWithNames(world.device(), {words.begin() + 1, words.end()},
                                                            std::stol(words.at(0)))));
}

/// Does a device action; what it prepares and how long it sleeps is noted among the command lines.
void act(World& world, const Words& words) {
    const auto note = [&](const std::string& text) {
        std::ofstream(world.folder.folder() / "Journal.log", std::ios::app) << text << "\n";
    };
    world.device().setSleep([=](double seconds) { note(fmt::format("(sleep {})", seconds)); });
    const auto isInstalled = [&](std::string_view identifier) {
        return world.builder().appList().appWithIdentifier(identifier) != nullptr;
    };
    OZDeviceActions actions(world.device(), isInstalled, [=] { note("(prepare)"); });
    actions.performAction(static_cast<OZDeviceAction>(std::stoi(words.at(0))));
}

const Verbs verbs{{"tool", tool},   {"sorted", sorted},      {"only", only}, {"environment", environment},
                  {"where", where}, {"cd", changeDirectory}, {"kill", kill}, {"act", act}};

} // namespace

} // namespace scenarios

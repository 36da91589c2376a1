// What scenarios can do with tools.

#include "Model/Apps/OZAppList.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Model/Tasks/OZTask.h"
#include "Model/Tasks/OZTaskManager.h"
#include "Tests/Scenarios/Verbs.h"

#include <regex>

namespace scenarios::tasks {

/// "> tool [OUT ERR] PATH words": what a tool writes to the streams that are captured, and how it ends.
VERB("tool") {
    const auto action = [](const std::string& word) {
        return word == "discard" ? OZTaskStreamAction::discard : OZTaskStreamAction::capture;
    };
    const size_t place = words.at(0) == "discard" || words[0] == "capture" ? 2 : 0;
    const auto task = OZTask::make(world.device(), words.at(place), rest(words, place + 1));
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
VERB("sorted") {
    Lines lines = saidBy(world, words.at(0), rest(words));
    std::ranges::sort(lines);
    std::ranges::for_each(lines, [&](const auto& line) { world.say(line); });
}

/// "> only REGEX verb words": of what that says, the lines that hold a match.
VERB("only") {
    const std::regex pattern(words.at(0));
    for (const auto& line : saidBy(world, words.at(1), rest(words, 2))) {
        std::regex_search(line, pattern) ? world.say(line) : void();
    }
}

/// Where a tool of this name is, and where it is once that one has gone, and so on.
VERB("where") {
    std::string places;
    while (const auto path = OZTask::launchPathForExecutable(world.device(), words.at(0))) {
        places += *path + " ";
        std::filesystem::remove(world.folder.folder() / "Tools" / path->substr(1));
    }
    world.say(places + "nowhere");
}

VERB("cd") {
    world.say(world.device().fileManager().changeCurrentDirectoryPath(words.at(0)) ? "there" : "not there");
}

/// "> kill SIGNAL NAME…": the status.
VERB("kill") {
    const auto status =
        OZTaskManager::killTasksWithNames(world.device(), rest(words), std::stol(words.at(0)));
    world.say(std::to_string(status));
}

/// Does a device action; what it prepares and how long it sleeps is noted among the command lines.
VERB("act") {
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

} // namespace scenarios::tasks

#pragma once

#include "Platform/Formats/PropertyList.h"
#include "Tests/Controller/CommandLine/Terminal.h"
#include "Tests/Support/HostFile.h"
#include "Tests/Support/Program.h"
#include "Tests/Support/TemporaryFolder.h"
#include "Tests/Support/TreeSnapshot.h"

#include <filesystem>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace tests {

/// The menu of the built program on a device as `ozdevice` makes it.
class MenuTest : public testing::Test {
  protected:
    void create(const std::vector<std::string>& options = {}) {
        std::vector<std::string> arguments = {"create", device, "--files", "20"};
        arguments.insert(arguments.end(), options.begin(), options.end());
        ASSERT_EQ(runProgram("ozdevice", arguments).status, 0);
    }

    [[nodiscard]] std::vector<std::string> menuArguments() const { return {"--device", device, "-cli"}; }

    /// The path in the device's tree.
    [[nodiscard]] std::string path(const std::string& devicePath) const {
        return device + "/Root" + devicePath;
    }

    [[nodiscard]] bool exists(const std::string& devicePath) const {
        return std::filesystem::exists(std::filesystem::symlink_status(path(devicePath)));
    }

    /// The choices as they are stored now.
    [[nodiscard]] platform::Dictionary choices() const {
        const auto list = platform::parsePropertyList(
            contentOf(path("/var/mobile/Library/Preferences/com.ozdev90.ozvarine.plist")));
        return list && list->as<platform::Dictionary>() ? *list->as<platform::Dictionary>()
                                                        : platform::Dictionary();
    }

    TemporaryFolder folder{tests::memoryFolder()};
    std::string device = folder.path("device");
};

/// The stored picture of a screen.
inline std::string storedScreen(const std::string& name) {
    const std::string text = contentOf(std::string(OZ_SCREENS_DIRECTORY) + "/" + name + ".txt");
    // Editors end a file with a line end; a screen has none behind its prompt.
    return text.empty() ? "no screen " + name : text.substr(0, text.size() - 1);
}

/// Enters a line and holds the screen that comes of it against a stored one, behind the line's echo.
inline void expectScreen(Terminal& terminal, const std::string& line, const std::string& name) {
    terminal.enter(line);
    EXPECT_EQ(terminal.screen(), line + "\n" + storedScreen(name)) << "after entering \"" << line << '"';
}

/// The same for a line that starts work, with the message that may be seen meanwhile.
inline void expectWork(Terminal& terminal, const std::string& line, const std::string& message,
                       const std::string& name) {
    expectScreen(terminal, line, name);
    EXPECT_THAT(terminal.waitMessage(), testing::AnyOf("", message + ", please wait"));
}

} // namespace tests

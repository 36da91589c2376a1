#pragma once

#include "Model/Core/OZCore.h"
#include "Tests/Support/TemporaryDevice.h"

#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

/// A test of an engine on a small tree. Searches run the host's own tools, which need root or a user
/// namespace that maps it.
class EngineTest : public testing::Test {
  protected:
    using Tree = std::set<std::string>;
    using Paths = std::vector<std::string>;

    void SetUp() override;

    /// An engine with a log, in the mode that a run with every step off leaves it in.
    std::unique_ptr<OZCore> engine(OZCoreMode mode, OZAppList* appList = nullptr);

    void addFiles(const Paths& paths, std::string_view content = "12345");
    /// Every file and link of the tree but the log, and every empty folder with a "/" at its end.
    [[nodiscard]] Tree tree() const;
    [[nodiscard]] std::string log() const { return temporary.contents(OZCleanupLogger::logFilePath); }
    /// What the log names, in its order.
    [[nodiscard]] Paths loggedPaths() const;

    TemporaryDevice temporary;
};

/// What is in the first and not in the second.
std::set<std::string> difference(const std::set<std::string>& first, const std::set<std::string>& second);
std::set<std::string> united(std::initializer_list<std::set<std::string>> trees);

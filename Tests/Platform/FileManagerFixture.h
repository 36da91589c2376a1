#pragma once

#include "Platform/FileManager.h"
#include "Tests/Support/TemporaryFolder.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tests {

/// 0 on success.
template <class T>
int errorOf(const platform::Result<T>& result) {
    return result ? 0 : result.error().value();
}

/// A device root "root" in a folder of the host, beside it "outside", which nothing may ever change. Every
/// test runs with both ways of finding paths.
class FileManagerFixture : public testing::TestWithParam<platform::PathResolution> {
  protected:
    FileManagerFixture() {
        host.make("root/\noutside/canary: alive\noutside/folder/canary: alive\n");
        files = platform::FileManager::atRoot(host.path("root"), GetParam());
    }

    void TearDown() override {
        EXPECT_EQ(host.content("outside/canary"), "alive");
        EXPECT_EQ(host.content("outside/folder/canary"), "alive");
    }

    /// Lines as `TemporaryFolder::make` takes them, below the root.
    void make(const std::string& lines) const {
        std::string below;
        for (size_t start = 0; start < lines.size();) {
            const size_t end = std::min(lines.find('\n', start), lines.size());
            const size_t text = lines.find_first_not_of(' ', start);
            if (text < end) {
                std::string line = "root/" + lines.substr(text, end - text);
                if (const size_t same = line.find(" == "); same != std::string::npos) {
                    line.insert(same + 4, "root/");
                }
                below += line + "\n";
            }
            start = end + 1;
        }
        host.make(below);
    }
    [[nodiscard]] bool exists(const std::string& path) const { return host.exists("root" + path); }
    [[nodiscard]] std::string content(const std::string& path) const { return host.content("root" + path); }

    TemporaryFolder host;
    platform::Result<platform::FileManager> files = platform::failure(0);
};

inline std::string nameOf(const testing::TestParamInfo<platform::PathResolution>& info) {
    return info.param == platform::PathResolution::kernel ? "kernel" : "componentWise";
}

#define OZ_BOTH_RESOLUTIONS(fixture)                                                                         \
    INSTANTIATE_TEST_SUITE_P(                                                                                \
        , fixture,                                                                                           \
        testing::Values(platform::PathResolution::kernel, platform::PathResolution::componentWise), nameOf)

} // namespace tests

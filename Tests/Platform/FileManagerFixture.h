#pragma once

#include "Platform/Files/FileManager.h"
#include "Tests/Support/TemporaryFolder.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tests {

/// 0 on success.
template <class T>
int errorOf(const platform::Result<T>& result) {
    return result ? 0 : result.error().value();
}

/// Lowers one limit of the process for the time of its life.
class LoweredLimit {
  public:
    LoweredLimit(int resource, rlim_t limit)
        : _resource(resource) {
        ::getrlimit(static_cast<__rlimit_resource>(_resource), &_old);
        const rlimit lower{.rlim_cur = limit, .rlim_max = _old.rlim_max};
        ::setrlimit(static_cast<__rlimit_resource>(_resource), &lower);
    }
    LoweredLimit(const LoweredLimit&) = delete;
    LoweredLimit& operator=(const LoweredLimit&) = delete;
    ~LoweredLimit() { ::setrlimit(static_cast<__rlimit_resource>(_resource), &_old); }

  private:
    int _resource;
    rlimit _old{};
};

/// Runs a check in a process of an ordinary user; true when the check gave true. Needs root.
template <class Check>
bool holdsForUser(uid_t user, Check check) {
    const pid_t child = ::fork();
    if (child == 0) {
        const bool became = ::setgroups(0, nullptr) == 0 && ::setresgid(user, user, user) == 0 &&
                            ::setresuid(user, user, user) == 0;
        ::_exit(became && check() ? 0 : 1);
    }
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
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

    /// False, where the tests do not run with the rights of root, and no file can be given away.
    [[nodiscard]] bool giveToUser(const std::string& path, uid_t user) const {
        return ::geteuid() == 0 && ::lchown(host.path("root" + path).c_str(), user, user) == 0;
    }

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

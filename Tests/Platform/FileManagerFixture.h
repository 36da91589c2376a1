#pragma once

#include "Platform/Files/FileManager.h"
#include "Tests/Support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

namespace tests {

/// Lowers one limit of the process for the time of its life.
class LoweredLimit {
  public:
    LoweredLimit(__rlimit_resource resource, rlim_t limit)
        : _resource(resource) {
        ::getrlimit(_resource, &_old);
        const rlimit lower{.rlim_cur = limit, .rlim_max = _old.rlim_max};
        ::setrlimit(_resource, &lower);
    }
    LoweredLimit(const LoweredLimit&) = delete;
    LoweredLimit& operator=(const LoweredLimit&) = delete;
    ~LoweredLimit() { ::setrlimit(_resource, &_old); }

  private:
    __rlimit_resource _resource;
    rlimit _old{};
};

/// A device root in a folder of the host, beside it "outside", which nothing may ever change. Every test runs
/// with both ways of finding paths.
class FileManagerFixture : public testing::TestWithParam<platform::PathResolution> {
  protected:
    FileManagerFixture() { host.make("outside/canary: alive\noutside/folder/canary: alive\n"); }
    void TearDown() override {
        EXPECT_EQ(host.content("outside/canary") + host.content("outside/folder/canary"), "alivealive");
    }

    TemporaryFolder host{memoryFolder()};
    TemporaryFolder root{host.path()};
    platform::Result<platform::FileManager> files = platform::FileManager::atRoot(root.path(), GetParam());
};

#define OZ_BOTH_RESOLUTIONS(fixture)                                                                         \
    INSTANTIATE_TEST_SUITE_P(                                                                                \
        , fixture,                                                                                           \
        testing::Values(platform::PathResolution::kernel, platform::PathResolution::componentWise))

} // namespace tests

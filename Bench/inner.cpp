// How the cost of the inner pieces grows with the number of items, from 1,000 to 1,000,000: each case ends in
// the growth that fits its times best. Trees lie in a folder of their own in memory.
#include "Model/Core/SuffixList.h"
#include "Model/Packages/OZPackageGraph.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/FileManager.h"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

namespace {

namespace fs = std::filesystem;

constexpr int64_t fewest = 1000;
constexpr int64_t most = 1000000;
constexpr size_t filesInFolder = 500;

std::string relativePath(size_t number) {
    return fmt::format("{:06}/file-{:08}.log", number / filesInFolder, number);
}

/// A tree of as many empty files as asked for, gone at the end of its life.
class Tree {
  public:
    explicit Tree(size_t files) {
        std::string folder = "/dev/shm/ozvarine-inner.XXXXXX";
        if (::mkdtemp(folder.data()) == nullptr) {
            throw std::runtime_error("no folder can be made in /dev/shm");
        }
        _path = folder;
        for (size_t number = 0; number < files; ++number) {
            const fs::path path = _path / relativePath(number);
            if (number % filesInFolder == 0) {
                fs::create_directory(path.parent_path());
            }
            ::close(::open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
        }
    }
    Tree(const Tree&) = delete;
    Tree& operator=(const Tree&) = delete;
    ~Tree() { fs::remove_all(_path); }

    [[nodiscard]] platform::FileManager manager() const {
        return platform::FileManager::atRoot(_path.string()).value();
    }
    [[nodiscard]] const fs::path& path() const { return _path; }

  private:
    fs::path _path;
};

void resolution(benchmark::State& state) {
    const auto count = static_cast<size_t>(state.range(0));
    const Tree tree(count);
    auto manager = tree.manager();
    std::vector<std::string> paths;
    for (size_t number = 0; number < count; ++number) {
        paths.push_back("/" + relativePath(number));
    }
    for (auto _ : state) {
        for (const auto& path : paths) {
            benchmark::DoNotOptimize(manager.attributesOfItemAtPath(path));
        }
    }
    state.SetComplexityN(state.range(0));
}

void enumerator(benchmark::State& state) {
    const Tree tree(static_cast<size_t>(state.range(0)));
    auto manager = tree.manager();
    for (auto _ : state) {
        const auto walk = manager.enumeratorAtPath("/");
        size_t length = 0;
        while (const auto entry = walk->nextObject()) {
            length += entry->size();
        }
        benchmark::DoNotOptimize(length);
    }
    state.SetComplexityN(state.range(0));
}

void logWrites(benchmark::State& state, platform::FileWriting writing) {
    const Tree tree(0);
    auto manager = tree.manager();
    const std::string path = "/var/mobile/Library/Caches/Snapshots/000123/snapshot-00000123.ktx";
    for (auto _ : state) {
        auto file = manager.createFileAtPath("/log").value();
        file.setWriting(writing);
        for (int64_t count = 0; count < state.range(0); ++count) {
            std::ignore = file.write(path, "\n\n");
        }
    }
    state.SetComplexityN(state.range(0));
}

void suffixLookup(benchmark::State& state) {
    std::vector<std::string> suffixes;
    std::vector<std::string> texts;
    for (int64_t number = 0; number < state.range(0); ++number) {
        suffixes.push_back(fmt::format("Library/SMS/Attachments/{:02x}/{:08X}", number % 256, number));
        texts.push_back("/var/mobile/" + suffixes.back());
    }
    for (auto _ : state) {
        SuffixList list(suffixes);
        for (const auto& text : texts) {
            benchmark::DoNotOptimize(list.take(text));
        }
    }
    state.SetComplexityN(state.range(0));
}

void graph(benchmark::State& state) {
    const Tree tree(0);
    const auto device = platform::Device::open(tree.path().string()).value();
    std::string answer;
    for (int64_t number = 0; number < state.range(0); ++number) {
        answer +=
            fmt::format("Package=org.example.package{0}\nStatus=install ok installed\nName=Package {0}\n"
                        "Depends=org.example.package{1} (>= 1.0), org.example.package{2}\n"
                        "<OzvarineQueryPackageDelimiter>\n",
                        number, number / 2, number / 3);
    }
    for (auto _ : state) {
        OZPackageGraph packages(*device);
        packages.read(answer);
        benchmark::DoNotOptimize(packages.link());
    }
    state.SetComplexityN(state.range(0));
}

void sizes(benchmark::internal::Benchmark* cases) {
    cases->RangeMultiplier(10)->Range(fewest, most)->Unit(benchmark::kMillisecond)->Complexity();
}

BENCHMARK(resolution)->Apply(sizes);
BENCHMARK(enumerator)->Apply(sizes);
BENCHMARK_CAPTURE(logWrites, direct, platform::FileWriting::direct)->Apply(sizes);
BENCHMARK_CAPTURE(logWrites, gathered, platform::FileWriting::gathered)->Apply(sizes);
BENCHMARK(suffixLookup)->Apply(sizes);
BENCHMARK(graph)->Apply(sizes);

} // namespace

BENCHMARK_MAIN();

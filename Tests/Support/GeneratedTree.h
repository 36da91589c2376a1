#pragma once

#include "Platform/Formats/PropertyList.h"

#include <cstdint>
#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tests {

/// A hostile device tree that follows from its seed: deep, wide, with odd names, kinds, owners, dates and
/// permissions, and with links that lead everywhere, out of the tree as well. It lies where the steps of a
/// cleanup look, and beside that. It comes with settings for a run.
class GeneratedTree {
  public:
    /// Fills the folder of the host that is the device's "/". Links may lead to the folder `outside`.
    GeneratedTree(uint64_t seed, std::string root, std::string outside);
    GeneratedTree(const GeneratedTree&) = delete;
    GeneratedTree& operator=(const GeneratedTree&) = delete;
    ~GeneratedTree();

    /// Where the applications of the fixture have their containers.
    static constexpr std::string_view dataFolder = "/var/mobile/Containers/Data/Application/";
    static constexpr std::string_view groupFolder = "/var/mobile/Containers/Shared/AppGroup/";

    /// Step by step, on or off.
    platform::Dictionary settings();
    platform::Array customFiles();
    std::vector<std::string> fileTypes();
    /// Whether there are names that look like a test run's backups.
    [[nodiscard]] bool hasBackups() const { return _hasBackups; }
    /// Whether a path below the root is in the way of its own removal: immutable, or around or below what is.
    [[nodiscard]] bool isImmutable(std::string_view path) const;

  private:
    size_t below(size_t end) { return _random() % end; }
    bool chance(unsigned percent) { return below(100) < percent; }
    template <class List>
    const auto& anyOf(const List& list) {
        return list[below(std::size(list))];
    }

    void makeSkeleton();
    void makeMessages();
    void makeItem();
    std::string newName();
    std::string oddName();
    void makeFile(const std::string& path);
    void makeSparseFile(const std::string& path);
    void makeLink(const std::string& path);
    void makeSocket(const std::string& path);
    void makeDeepFolder(const std::string& path);
    void makeWideFolder(const std::string& path);
    void decorate(const std::string& path, bool isLink);
    void makeImmutable(const std::string& path);
    [[nodiscard]] std::string hostPath(std::string_view devicePath) const {
        return _root + std::string(devicePath);
    }

    std::mt19937_64 _random;
    std::string _root;
    std::string _outside;
    // Device paths, "/var" in them as it is: folders to put more into, files to link to.
    std::vector<std::string> _folders;
    std::vector<std::string> _files;
    std::set<std::string> _immutable;
    bool _hasBackups = false;
    bool _wantsBackups = false;
};

} // namespace tests

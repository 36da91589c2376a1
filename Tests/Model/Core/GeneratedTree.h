#pragma once

#include "Platform/Formats/PropertyList.h"

#include <random>
#include <set>
#include <string>
#include <string_view>
#include <vector>

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

    /// Step by step, on or off.
    platform::Dictionary settings();
    platform::Array customFiles();
    std::vector<std::string> fileTypes();
    /// Whether there are names that look like a test run's backups.
    [[nodiscard]] bool hasBackups() const { return _hasBackups; }
    /// Whether a path below the root is in the way of its own removal: immutable, or around or below what is.
    [[nodiscard]] bool isImmutable(const std::string& path) const;

  private:
    size_t below(size_t end) { return _random() % end; }
    bool chance(unsigned percent) { return below(100) < percent; }
    template <class List>
    const auto& anyOf(const List& list) {
        return list[below(std::size(list))];
    }
    void makeFolders();
    void makeMessages();
    void makeItem();
    void makeItem(size_t kind, const std::string& path, const std::string& host);
    void makeSocket(const std::string& host) const;
    void decorate(const std::string& path, const std::string& host, bool isLink);
    std::string newName();

    std::mt19937_64 _random;
    std::string _root, _outside;
    // Paths below the root: folders to put more into, files to link to.
    std::vector<std::string> _folders, _files;
    std::set<std::string> _immutable;
    bool _hasBackups = false, _wantsBackups = false;
};

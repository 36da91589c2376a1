#pragma once

#include "Platform/Files/DeviceRoot.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

/// Follows one path a component at a time, with links led back into the root. It holds one folder at a time
/// and goes up by starting over from the root, so that a folder moved away meanwhile cannot lead it above the
/// root.
class PathWalk {
  public:
    PathWalk(const DeviceRoot& root, int start, std::vector<std::string> startNames);

    Result<DeviceRoot::Target> follow(std::string_view path);

  private:
    /// A link of an ordinary user, and how many components were left behind it.
    struct UntrustedLink {
        size_t remaining;
        uid_t owner;
    };

    Result<void> step(const std::string& name);
    Result<void> goUp();
    Result<void> followLink(int link, uid_t owner);
    Result<void> followMissingLink(const std::string& name);
    [[nodiscard]] bool linkEndsHere() const {
        return !_untrusted.empty() && _remaining.size() <= _untrusted.back().remaining;
    }
    Result<void> checkLinksThatEndHere();
    void push(std::string_view path);
    void goToRoot();
    Result<uid_t> ownerOfReached() const;
    [[nodiscard]] int here() const { return _here ? _here.get() : _start; }

    const DeviceRoot& _root;
    int _start;
    Descriptor _here;
    std::vector<std::string> _names;
    std::string _leaf;
    uid_t _leafOwner = 0;
    std::vector<std::string> _remaining;
    std::vector<UntrustedLink> _untrusted;
    int _linksFollowed = 0;
};

} // namespace platform

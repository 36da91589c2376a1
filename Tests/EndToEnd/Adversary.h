#pragma once

#include <string>
#include <vector>

#include <sys/types.h>

namespace tests {

constexpr uid_t mobileUser = 501;

/// A process of an ordinary user that swaps its own folders, files and links for one another as fast as it
/// can, until this object's end.
class Adversary {
  public:
    /// Each folder of the host is swapped for links to each target.
    Adversary(const std::vector<std::string>& folders, const std::vector<std::string>& targets);
    Adversary(const Adversary&) = delete;
    Adversary& operator=(const Adversary&) = delete;
    ~Adversary();

    /// Returns once the process rests.
    void pause() const;
    void resume() const;

    /// The name beside a folder that holds a link to the target of that number.
    static std::string linkName(const std::string& folder, size_t target) {
        return folder + ".away" + std::to_string(target);
    }

  private:
    pid_t _child;
};

} // namespace tests

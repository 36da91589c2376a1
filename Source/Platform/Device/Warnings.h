#pragma once

#include <functional>
#include <string>

namespace platform {

/// Where lines go that a person has to see although the program goes on: to standard error, or to a front end
/// that would otherwise wipe them from the screen. Safe to use from several threads but for `setReceiver`,
/// which belongs to the start of a front end.
class Warnings {
  public:
    using Receiver = std::function<void(const std::string& line)>;

    /// `line` is a whole sentence without the line break.
    void tell(const std::string& line) const;
    /// Takes the lines from now on; an empty receiver gives them back to standard error.
    void setReceiver(Receiver receiver) { _receiver = std::move(receiver); }

  private:
    Receiver _receiver;
};

} // namespace platform

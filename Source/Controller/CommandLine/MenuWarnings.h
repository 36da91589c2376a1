#pragma once

#include <mutex>
#include <string>
#include <vector>

namespace platform {
class Warnings;
}

/// Keeps what a person has to see while a menu is on the screen, for the next screen to show: each screen
/// wipes the one before. Lines come from any thread.
class MenuWarnings {
  public:
    /// Takes the device's warnings from now on. They outlive this object.
    explicit MenuWarnings(platform::Warnings& warnings);
    MenuWarnings(const MenuWarnings&) = delete;
    MenuWarnings& operator=(const MenuWarnings&) = delete;
    /// Gives the warnings back, with the lines that no screen has shown.
    ~MenuWarnings();

    /// The lines since the last call for the screen, with an empty one behind them, each once; empty where
    /// there are none.
    [[nodiscard]] std::string take();

  private:
    void add(const std::string& line);

    platform::Warnings& _warnings;
    std::mutex _mutex;
    std::vector<std::string> _lines;
};

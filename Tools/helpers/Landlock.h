#pragma once

#include <cstdint>
#include <span>

/// Access to files that the kernel grants to this process and its children, whatever they become: by the
/// files themselves, not by their paths, so that neither links nor a change of the root lead around it.
class Landlock {
  public:
    /// A rule set that grants nothing.
    Landlock();
    Landlock(const Landlock&) = delete;
    Landlock& operator=(const Landlock&) = delete;
    ~Landlock();

    /// False where the kernel has no such rules.
    [[nodiscard]] bool isAvailable() const { return _rules >= 0; }

    /// Grants everything below an open folder but the execution of programs.
    void allowAllButExecution(int folder);
    /// Grants reading and executing below the host's paths; a path that is missing is passed over.
    void allowReadingAndExecuting(std::span<const char* const> paths);
    void allowReading(std::span<const char* const> paths);
    void allowReadingAndWriting(std::span<const char* const> paths);

    /// Puts the rules into force, for good; false if the kernel refuses.
    [[nodiscard]] bool enforce() const;

  private:
    void allow(int file, uint64_t access);
    void allow(std::span<const char* const> paths, uint64_t access);

    uint64_t _handled = 0;
    int _rules = -1;
};

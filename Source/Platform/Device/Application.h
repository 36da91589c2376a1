#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace platform {

/// The platform's application object. What an application cannot do is left out.
struct ApplicationOperations {
    using Operation = std::function<void()>;

    /// Sends the program to the background; optional.
    Operation suspend = nullptr;
    /// Ends the program in the platform's own way; optional.
    Operation terminateWithSuccess = nullptr;
    /// Asks for time in the background and names the grant; the handler is called when the time runs out.
    std::function<uint64_t(Operation expirationHandler)> beginBackgroundTask = nullptr;
    std::function<void(uint64_t identifier)> endBackgroundTask = nullptr;
    /// Writes the user defaults to disk.
    Operation synchronizeDefaults = nullptr;
    /// Ends the process with a status.
    std::function<void(int status)> exit = nullptr;
};

/// How the program closes and how it stays alive in the background. To be used on the main thread.
class Application {
  public:
    static constexpr uint64_t invalidBackgroundTask = 0;

    /// Without an `exit` operation the process really ends.
    explicit Application(ApplicationOperations operations);
    Application(const Application&) = delete;
    Application& operator=(const Application&) = delete;

    /// Suspends the program, or ends it where it cannot be suspended.
    void close();
    /// Ends the program in the platform's own way, otherwise the process with status 0.
    void exit();
    /// To be called before anything that may end the process: stores the defaults.
    void prepareToClose();
    /// Begins a background task or ends the last one begun. A second begin replaces the stored identifier;
    /// the earlier task is then never ended.
    void runInBackground(bool flag);

  private:
    ApplicationOperations _operations;
    uint64_t _backgroundTask = invalidBackgroundTask;
};

} // namespace platform

#include "Launch/WindowStart.h"

#include "Controller/CommandLine/ExitStatus.h"
#include "Launch/DeviceStart.h"
#include "Launch/Installation.h"
#include "Launch/JailbreakLibrary.h"
#include "Launch/OZApplication.h"
#include "Launch/Preconditions.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/OZCore.h"
#include "Model/Plugins/OZPluginLoader.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Platform/Device/Device.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include <dlfcn.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

constexpr const char* packages =
    "libqt6quickcontrols2-6 libqt6svg6 qml6-module-qtquick qml6-module-qtquick-controls "
    "qml6-module-qtquick-dialogs qml6-module-qtquick-layouts qml6-module-qtquick-templates "
    "qml6-module-qtquick-shapes qml6-module-qtquick-window qml6-module-qt-labs-folderlistmodel "
    "qml6-module-qtqml qml6-module-qtqml-models qml6-module-qtqml-workerscript";

/// What the library of the window gives: runs it on the devices of an opener.
using Desktop = int (*)(DeviceOpener* opener, int count, char** vector);

int fail(const std::string& message) {
    std::fputs(fmt::format("ozvarine: {}\n", message).c_str(), stderr);
    return exitstatus::failure;
}

bool isSet(const char* variable) {
    const char* value = std::getenv(variable);
    return value != nullptr && *value != '\0';
}

class Opened : public OpenDevice {
  public:
    explicit Opened(std::unique_ptr<platform::Device> device)
        : _device(std::move(device))
        , _modelBuilder(*_device) {
        _device->warnings().setReceiver([this](const std::string& line) { _warnings.push_back(line); });
    }

    [[nodiscard]] OZModelBuilder& modelBuilder() override { return _modelBuilder; }
    [[nodiscard]] const std::optional<std::string>& lookOnlyReason() const override {
        return _lookOnlyReason;
    }
    [[nodiscard]] const std::vector<std::string>& warnings() const override { return _warnings; }
    void setLookOnlyReason(std::string reason) { _lookOnlyReason = std::move(reason); }

  private:
    std::unique_ptr<platform::Device> _device;
    OZModelBuilder _modelBuilder;
    std::optional<std::string> _lookOnlyReason;
    std::vector<std::string> _warnings;
};

} // namespace

int WindowStart::run() {
    if (!isSet("DISPLAY") && !isSet("WAYLAND_DISPLAY") && !isSet("QT_QPA_PLATFORM")) {
        return fail("no switch given, and there is no display to open a window on; ozvarine --help lists "
                    "options and switches");
    }
    const std::string library = installedFile("libexec/libozvarine-desktop.so");
    if (!std::filesystem::exists(library)) {
        return fail(
            fmt::format("no switch given, and the window is not installed ({} is missing); build the "
                        "program with qt6-base-dev, qt6-declarative-dev and libqt6svg6-dev, or name a "
                        "switch: ozvarine --help lists them",
                        library));
    }
    void* const loaded = ::dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (loaded == nullptr) {
        return fail(fmt::format("the window cannot be opened ({}); install what it needs: apt-get install {}",
                                ::dlerror(), packages));
    }
    const auto desktop = reinterpret_cast<Desktop>(::dlsym(loaded, "ozvarineDesktop"));
    if (desktop == nullptr) {
        return fail(fmt::format("{} is not of this program; build or install it again, all of it", library));
    }
    std::string name = "ozvarine";
    std::array<char*, 2> vector = {name.data(), nullptr};
    return desktop(this, 1, vector.data());
}

DeviceOpener::Outcome WindowStart::open(const std::string& folder, platform::MainQueue& mainQueue,
                                        bool resetSettings) {
    LauncherOptions options = _options;
    options.device = folder;
    options.resetSettings = options.resetSettings || resetSettings;
    auto device = openDevice(folder, options);
    if (!device) {
        return std::unexpected(OpeningFailure{.message = device.error()});
    }
    auto& deviceToOpen = **device;
    deviceToOpen.useMainQueue(mainQueue);
    auto opened = std::make_unique<Opened>(std::move(*device));
    if (auto refusal = refusalBeforeRun(deviceToOpen, options)) {
        return std::unexpected(OpeningFailure{.message = std::move(refusal->message),
                                              .settingsAreDamaged = refusal->settingsAreDamaged});
    }
    if (auto refusal = treeThatCannotBeWritten(deviceToOpen, options)) {
        opened->setLookOnlyReason(std::move(refusal->message));
    }
    warnBeforeRun(deviceToOpen, options);
    auto& modelBuilder = opened->modelBuilder();
    modelBuilder.bundle();
    modelBuilder.core();
    modelBuilder.pluginLoader().loadThirdPartyDylibs(loadDeviceLibrary);
    return opened;
}

std::expected<std::string, std::string> WindowStart::makeDemoDevice() {
    std::error_code error;
    std::string folder = (std::filesystem::temp_directory_path(error) / "ozvarine-demo.XXXXXX").string();
    if (error || ::mkdtemp(folder.data()) == nullptr) {
        return std::unexpected(fmt::format("no demo device can be made: there is no room in {}", folder));
    }
    folder += "/device";
    std::string maker = installedFile("bin/ozdevice");
    std::string verb = "create";
    std::array<char*, 4> vector = {maker.data(), verb.data(), folder.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    if (::posix_spawn(&child, maker.c_str(), nullptr, nullptr, vector.data(), environ) != 0 ||
        ::waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        return std::unexpected(fmt::format("{} could not make a demo device in {}", maker, folder));
    }
    return folder;
}

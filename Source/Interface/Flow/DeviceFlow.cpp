#include "Interface/Flow/DeviceFlow.h"

#include "Model/Builder/OZModelBuilder.h"
#include "Platform/Device/Device.h"
#include "Platform/Files/Path.h"

#include <ctime>
#include <utility>

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace {

std::string describe(const RecentDevice& device) {
    std::string text = device.systemVersion.empty() ? "" : fmt::format("iOS {}, ", device.systemVersion);
    if (device.lastCleanup == 0) {
        return text + "never cleaned from here";
    }
    return text + fmt::format("cleaned {:%Y-%m-%d %H:%M}", fmt::localtime(device.lastCleanup));
}

std::string titleOf(const std::string& folder) {
    const std::string name(platform::lastPathComponent(folder));
    return name.empty() ? folder : name;
}

} // namespace

DeviceFlow::DeviceFlow(DeviceOpener& opener, platform::MainQueue& mainQueue, Host& host, Sources sources,
                       std::function<void()> changed, std::function<void()> close)
    : _opener(opener)
    , _mainQueue(mainQueue)
    , _host(host)
    , _sources(std::move(sources))
    , _changed(std::move(changed))
    , _close(std::move(close))
    , _searching(platform::Queue::serial("devices"))
    , _opening(platform::Queue::serial("opening")) {}

void DeviceFlow::start() {
    if (_opener.namedFolder()) {
        open(*_opener.namedFolder(), false);
    } else {
        findChoices();
    }
}

void DeviceFlow::findChoices() {
    _searching.async([this] {
        auto recent = std::make_shared<std::vector<Choice>>();
        auto mounted = std::make_shared<std::vector<Choice>>();
        for (const auto& device : _sources.recent.devices()) {
            recent->push_back({.folder = device.folder,
                               .title = titleOf(device.folder),
                               .detail = describe(device) + "\n" + device.folder});
        }
        for (const auto& folder : _sources.mounted()) {
            mounted->push_back({.folder = folder, .title = titleOf(folder), .detail = folder});
        }
        _mainQueue.post([this, recent, mounted] {
            _recentChoices = *recent;
            _mountedChoices = *mounted;
            _changed();
        });
    });
}

void DeviceFlow::open(const std::string& folder, bool resetSettings) {
    if (_state != State::choosing) {
        return;
    }
    _folder = folder;
    _refusal.clear();
    set(State::opening);
    _opening.async([this, folder, resetSettings] {
        auto outcome =
            std::make_shared<DeviceOpener::Outcome>(_opener.open(folder, _mainQueue, resetSettings));
        if (*outcome) {
            _sources.recent.noteOpened(folder, (**outcome)->modelBuilder().device().facts().systemVersion);
        }
        _mainQueue.post([this, outcome] { opened(*outcome); });
    });
}

void DeviceFlow::opened(DeviceOpener::Outcome& outcome) {
    if (!outcome) {
        refuse(std::move(outcome.error()));
        return;
    }
    _deviceWindow = std::make_unique<DeviceWindow>(std::move(*outcome), _host, _close);
    _deviceWindow->delegate().setCleanedBlock(
        [this] { _opening.async([this] { _sources.recent.noteCleaned(_folder, std::time(nullptr)); }); });
    set(State::open);
    _deviceWindow->start();
}

void DeviceFlow::refuse(OpeningFailure failure) {
    _refusal = std::move(failure.message);
    _canUseDefaults = failure.settingsAreDamaged;
    findChoices();
    set(State::choosing);
}

void DeviceFlow::tryDemoDevice() {
    if (_state != State::choosing) {
        return;
    }
    _refusal.clear();
    set(State::makingDemo);
    _opening.async([this] {
        auto folder = std::make_shared<std::expected<std::string, std::string>>(_opener.makeDemoDevice());
        _mainQueue.post([this, folder] {
            _state = State::choosing;
            if (*folder) {
                open(**folder, false);
            } else {
                refuse({.message = folder->error()});
            }
        });
    });
}

bool DeviceFlow::windowShouldClose() {
    return !_deviceWindow || _deviceWindow->delegate().windowShouldClose();
}

void DeviceFlow::set(State state) {
    _state = state;
    _changed();
}

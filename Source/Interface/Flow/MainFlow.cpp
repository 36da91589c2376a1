#include "Interface/Flow/MainFlow.h"

#include "Interface/Alerts/AlertPresets.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OZCore.h"
#include "Model/Services/OZLocalizationManager.h"
#include "Model/Tasks/OZDeviceActions.h"
#include "Platform/Device/Bundle.h"
#include "Platform/Device/Device.h"

MainFlow::MainFlow(OZModelBuilder& modelBuilder, Host& host, std::function<void()> close)
    : _modelBuilder(modelBuilder)
    , _close(std::move(close))
    , _navigator(host)
    , _context{.device = modelBuilder.device(),
               .languages = modelBuilder.localizationManager(),
               .host = host,
               .navigator = _navigator,
               .displayName = modelBuilder.bundle().infoString("CFBundleDisplayName").value_or(""),
               .shortVersion = modelBuilder.bundle().infoString("CFBundleShortVersionString").value_or(""),
               .performDeviceAction = {}}
    , _cleanup(_context, &modelBuilder.core(), this)
    , _clean(_context, modelBuilder.core(), _cleanup)
    , _log(_context, [this] { _navigator.dismissAll(); })
    , _tools(_context, [] {})
    , _settings(_context, [] {}) {
    _context.performDeviceAction = [this](OZDeviceAction action) {
        _context.device.backgroundQueue().async([this, action] {
            _modelBuilder.deviceActions().performAction(action);
            _context.device.mainQueue().post([this] {
                _context.host.dismissActivity(true);
                _navigator.dismissAll();
            });
        });
    };
    _cleanup.setApplication(*this);
    _cleanup.setTextViewControllerProvider(*this);
    _log.setTitleKey("LOGLBL");
}

void MainFlow::start() {
    _navigator.start({&_tools, &_clean, &_settings}, 1);
}

void MainFlow::presentTextViewControllerOfType(OZTextViewControllerType /*type*/, OZViewController& over) {
    auto log = _context.device.fileManager().contentsAtPath(OZCleanupLogger::logFilePath);
    if (!log) {
        const auto alert = alerts::okAlert(_context);
        alert->setMessage(_context.text("NOFILEMSG"));
        alert->show(&over);
        return;
    }
    _log.setContent(std::move(*log));
    _navigator.present(_log);
}

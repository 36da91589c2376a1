#include "Interface/Screens/Clean/OZCleanupViewController.h"

#include "Interface/Alerts/AlertPresets.h"
#include "Interface/Flow/Navigator.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCore.h"
#include "Model/Core/RespringAfterCleanup.h"
#include "Platform/Device/Device.h"

#include <algorithm>

#include <fmt/format.h>

namespace {

constexpr double pollInterval = 0.5;
constexpr double interstitialOfCleanup = 600;

/// What an action is called while it runs; the key of a text and what is appended to it.
struct ActionTitle {
    OZAction action;
    const char* key;
    const char* suffix;
};

constexpr ActionTitle titles[] = {
    {OZAction::remove3xImages, "RETINAIMAGES", " (@3x)"},
    {OZAction::remove2xImages, "RETINAIMAGES", " (@2x)"},
    {OZAction::removeiPadImages, "IPADIMAGES", ""},
    {OZAction::remove4InchImages, "4INCHIMAGES", ""},
    {OZAction::removeiTunesArtwork, "ITUNESARTWORKFILES", ""},
    {OZAction::restoreBackups, "RESBAKLBL", ""},
    {OZAction::removeBackups, "REMBAKLBL", ""},
    {OZAction::removeLanguages, "LANGUAGES", ""},
    {OZAction::removeKeyboards, "KEYBOARDS", ""},
    {OZAction::removeVoiceControlLanguages, "VOICECONTROLLANGUAGES", ""},
};

} // namespace

struct OZCleanupViewController::Run {
    OZAction action;
    Analyze analyze;
    platform::Dictionary settings;
    std::atomic<bool> hasEnded = false;

    void perform(OZCore& core) {
        switch (action) {
        case OZAction::clean:
            core.clean(&settings, analyze);
            break;
        case OZAction::restoreBackups:
            core.backup(BackupAction::restore);
            break;
        case OZAction::removeBackups:
            core.backup(BackupAction::remove);
            break;
        default:
            core.remove(action, analyze);
        }
        hasEnded = true;
    }
};

OZCleanupViewController::OZCleanupViewController(InterfaceContext& context, OZCore* core,
                                                 OZAdController* adController)
    : OZViewController(context)
    , _core((core != nullptr && adController != nullptr)
                ? *core
                : throw platform::AssertionFailure("core && adController"))
    , _adController(*adController)
    , _runQueue(platform::Queue::serial("run")) {}

OZCleanupViewController::~OZCleanupViewController() = default;

void OZCleanupViewController::startCleanup(const std::optional<platform::Dictionary>& settings,
                                           bool analyze) {
    setCleanupSettings(settings ? *settings : _core.choices().cleanupSettings());
    startAction(OZAction::clean, analyze);
}

void OZCleanupViewController::startAction(OZAction action, bool analyze) {
    // One that is still on the screen from the last run has to leave it first.
    if (action == OZAction::none || _action != OZAction::none) {
        return;
    }
    // An analysis, too, writes its log into the tree.
    if (const auto& reason = context().lookOnlyReason) {
        const auto alert = alerts::okAlert(context());
        alert->setMessage(*reason);
        alert->show();
        return;
    }
    _action = action;
    _analyze = analyze;
    _adController.loadInterstitial();

    auto mode = OZCleanupView::Mode::determinate;
    if (_action == OZAction::clean) {
        _cleanupView.setFooterText(_activeSteps.empty() ? "" : _activeSteps.front(), false);
    } else {
        setProcessedFiles(0, true);
        mode = OZCleanupView::Mode::indeterminate;
    }
    _cleanupView.setTitleText(titleForAction());
    willAppearCallback = [this, mode] { _cleanupView.setMode(mode); };
    didAppearCallback = [this] {
        _cleanupView.startAnimating();
        startTask();
    };
    context().navigator.present(*this);
}

std::string OZCleanupViewController::titleForAction() const {
    if (_action == OZAction::clean) {
        return text(_analyze ? "ANALYZELBL" : "CLEANLBL");
    }
    const auto* const title = std::ranges::find(titles, _action, &ActionTitle::action);
    return title == std::end(titles) ? "" : text(title->key) + title->suffix + "...";
}

void OZCleanupViewController::setCleanupSettings(const std::optional<platform::Dictionary>& settings) {
    _cleanupSettings = settings;
    _activeSteps.clear();
    for (const auto& key : CleanupChoices::cleanupStepKeys(context().device)) {
        if (isOn(key)) {
            _activeSteps.push_back(text(key));
        }
    }
}

bool OZCleanupViewController::isOn(std::string_view step) const {
    if (!_cleanupSettings) {
        return false;
    }
    const auto setting = _cleanupSettings->find(step);
    return setting != _cleanupSettings->end() && setting->second.boolValue().value_or(false);
}

void OZCleanupViewController::startTask() {
    if (_application != nullptr) {
        _application->startLongRunningTask();
    }
    _timer.emplace(context().device.mainQueue(), pollInterval, [this] {
        if (_action == OZAction::clean) {
            progressTick();
        } else {
            fileProgressTick();
        }
    });
    _run = std::make_shared<Run>(_action, _analyze ? Analyze::yes : Analyze::no,
                                 _cleanupSettings.value_or(platform::Dictionary{}));
    _runQueue.async([run = _run, &core = _core] { run->perform(core); });
}

// The engine says that it does not run before it has begun, too: on a machine that is busy the first tick
// could come before that. So a run is over when its worker has come back, whatever the engine says.
bool OZCleanupViewController::runIsOver() const {
    return _run->hasEnded && !_core.isRunning();
}

void OZCleanupViewController::progressTick() {
    if (!runIsOver()) {
        setCurrentStep(_core.cleanupStepCount(), true);
        return;
    }
    _timer.reset();
    _cleanupView.setFooterText(text("OPERATIONCOMPLETED"), true);
    if (_analyze) {
        completeTask();
    } else {
        _cleanupView.setProgress(1, true);
        showInterstitial(interstitialOfCleanup);
    }
}

void OZCleanupViewController::fileProgressTick() {
    const bool isOver = runIsOver();
    setProcessedFiles(_core.fileCount(), true);
    if (!isOver) {
        return;
    }
    _timer.reset();
    if (_analyze) {
        completeTask();
    } else {
        showInterstitial(0);
    }
}

void OZCleanupViewController::showInterstitial(double autodismissDelay) {
    _adController.showInterstitial(*this, autodismissDelay, [this] { completeTask(); });
}

void OZCleanupViewController::setCurrentStep(uint64_t step, bool updateIndicator) {
    if (step == _currentStep) {
        return;
    }
    _currentStep = step;
    if (!updateIndicator) {
        return;
    }
    _cleanupView.setProgress(static_cast<float>(step) * (1.0F / static_cast<float>(_activeSteps.size())),
                             true);
    if (step < _activeSteps.size()) {
        _cleanupView.setFooterText(_activeSteps[step], true);
    }
}

void OZCleanupViewController::setProcessedFiles(uint64_t count, bool updateLabel) {
    if (count != 0 && count == _processedFiles) {
        return;
    }
    _processedFiles = count;
    if (updateLabel) {
        _cleanupView.setFooterText(fmt::format("{}: {}", text("PROCESSEDFILES"), count), false);
    }
}

void OZCleanupViewController::completeTask() {
    if (_application != nullptr) {
        _application->stopLongRunningTask();
    }
    _cleanupView.completeWithHandler([this] {
        if (!_analyze) {
            showCompletionAlert();
        } else if (_textViewControllerProvider != nullptr) {
            _textViewControllerProvider->presentTextViewControllerOfType(OZTextViewControllerType::cleanupLog,
                                                                         *this);
        }
        didDisappearCallback = [this] { reset(); };
    });
}

std::string OZCleanupViewController::completionMessage(bool offersRespring) const {
    std::string message = text(_action == OZAction::clean ? "CLEANUPCOMPLETED" : "OPERATIONCOMPLETED");
    if (_action == OZAction::restoreBackups) {
        return message + fmt::format("\n{}: {}", text("PROCESSEDFILES"), _core.fileCount());
    }
    if (const auto& freed = _core.freedSpaceString()) {
        message += fmt::format("\n{}: {}", text("FREEDSPACE"), *freed);
    }
    message += fmt::format("\n{}: {}", text("DELETEDFILES"), _core.fileCount());
    return offersRespring ? message + "\n" + text("RESPRINGMSG1") : message;
}

void OZCleanupViewController::showCompletionAlert() {
    const bool offersRespring =
        _action == OZAction::clean && _cleanupSettings && shouldRespringAfterCleanup(*_cleanupSettings);
    const auto close = [this](OZAlertAction&) {
        if (_exitOnComplete && _application != nullptr) {
            _application->close();
        } else {
            context().navigator.dismissAll();
        }
    };
    OZAlertController::Pointer alert;
    if (offersRespring) {
        auto yes = OZAlertAction::make(context(), text("YES"), OZAlertActionStyle::standard,
                                       OZDeviceAction::rebuildUICacheAndRespring, OZActivityHUD::cleanup);
        yes->setAutoDismissFlag(true);
        alert = alerts::defaultAlertWithActions(
            context(), {yes, OZAlertAction::make(text("NO"), OZAlertActionStyle::cancel, close)});
    } else {
        alert = alerts::okAlert(context(), close, _exitOnComplete);
    }
    alert->setMessage(completionMessage(offersRespring));
    alert->show(this);
}

void OZCleanupViewController::reset() {
    _action = OZAction::none;
    _analyze = false;
    setCleanupSettings(std::nullopt);
    _exitOnComplete = false;
    _currentStep = 0;
    _processedFiles = 0;
    _timer.reset();
    willAppearCallback = nullptr;
    didAppearCallback = nullptr;
    _cleanupView.reset();
}

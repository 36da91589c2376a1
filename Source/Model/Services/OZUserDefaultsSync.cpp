#include "Model/Services/OZUserDefaultsSync.h"

#include <tuple>

void registerObject(platform::UserDefaults& defaults, OZUserDefaultsSync& object) {
    object.registerDefaults();
    object.loadDefaults();
    // The observation never ends: registered objects live as long as their model.
    std::ignore = defaults.notificationCenter().addObserver(
        platform::userDefaultsWillSynchronizeNotification, nullptr,
        [&object](const platform::Notification&) { object.writeDefaults(); });
}

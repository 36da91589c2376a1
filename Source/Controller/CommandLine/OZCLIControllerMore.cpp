#include "Controller/CommandLine/MenuText.h"
#include "Controller/CommandLine/OZCLIController.h"
#include "Model/Apps/OZDeviceInformation.h"
#include "Model/Apps/OZFontsFolderMover.h"
#include "Model/Builder/OZModelBuilder.h"
#include "Model/Core/OZAction.h"
#include "Model/Core/OZCore.h"
#include "Model/Items/Togglable/Restore/OZSystemRestore.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <memory>

using namespace menutext;

namespace {

constexpr double lastFoundationVersionWithMovableFonts = ios::v6_1;
constexpr std::string_view supportAddress = "support@example.org";

constexpr std::string_view deviceError = "The selected operation is not supported on this device.";
constexpr std::string_view languageError = "You haven't selected any language to remove.";
constexpr std::string_view fontsError = "The fonts folder can only be moved on iOS 6.1 and earlier.";

/// What the entries share while the menu is open.
struct Context {
    Context(OZCLIController& menu, OZModelBuilder& builder)
        : controller(menu)
        , modelBuilder(builder)
        , fontsFolderMover(builder.fontsFolderMover()) {}

    [[nodiscard]] OZCore& core() const { return modelBuilder.core(); }
    [[nodiscard]] const platform::DeviceFacts& facts() const { return modelBuilder.device().facts(); }

    OZCLIController& controller;
    OZModelBuilder& modelBuilder;
    std::unique_ptr<OZFontsFolderMover> fontsFolderMover;
    std::optional<OZFontsFolderError> fontsError;
};

/// An entry: its line, the text shown while it runs, the work, and what is printed after it. The work runs
/// beside the calling thread.
struct Entry {
    std::string_view name;
    std::string_view message;
    void (*block)(Context&);
    void (*completion)(Context&);
    /// Asked when the menu opens; null stands for always.
    bool (*isAvailable)(const Context&) = nullptr;
    std::string_view errorMsg = {};
};

template <BackupAction action>
void backup(Context& context) {
    context.core().backup(action);
}

template <OZAction action>
void remove(Context& context) {
    context.core().remove(action, Analyze::no);
}

void moveFonts(Context& context) {
    context.fontsFolderMover->moveFolder(&context.fontsError);
}

void restore(Context& context) {
    context.modelBuilder.systemRestore()->restore();
}

void printCount(Context& context) {
    context.controller.printResults(context.core().fileCount(), std::nullopt);
}

void printCountAndSize(Context& context) {
    context.controller.printResults(context.core().fileCount(), context.core().freedSpaceString());
}

void printFonts(Context& context) {
    OZStdIO::clear();
    const std::string warnings = context.controller.warnings();
    if (context.fontsError) {
        OZStdIO::printf(fmt::format("{}\n\n{}Error description:\n{}\n\nPlease email me at '{}' if you need "
                                    "assistance.\n",
                                    red("An error occurred while moving the fonts folder."), warnings,
                                    context.fontsError->localizedDescription(), supportAddress));
        return;
    }
    const bool isOnData = context.fontsFolderMover->folderLocation() == OZFontsFolderLocation::data;
    OZStdIO::printf(green(fmt::format("Fonts folder moved from the {} partition to the {} partition.",
                                      isOnData ? "system" : "data", isOnData ? "data" : "system")) +
                    "\n" + (warnings.empty() ? "" : "\n" + warnings));
}

void printReboot(Context& context) {
    OZStdIO::clear();
    OZStdIO::printf(fmt::format("{}\n\n{}Please reboot your device for changes to take effect.\n",
                                green("Operation completed!"), context.controller.warnings()));
}

// An unknown model counts as every kind of device: what it may need stays.
template <OZTriState (OZDeviceInformation::*fact)() const>
bool isNoDeviceOf(const Context& context) {
    return (OZDeviceInformation(context.facts().hardwareModel).*fact)() == OZTriState::no;
}

bool hasLanguages(const Context& context) {
    return !context.core().choices().languagesToRemove().empty();
}

bool hasMovableFonts(const Context& context) {
    return context.facts().foundationVersion <= lastFoundationVersionWithMovableFonts;
}

using Device = OZDeviceInformation;

constexpr Entry entries[] = {
    {"Restore backup files", "Restoring backup files", backup<BackupAction::restore>, printCount},
    {"Remove backup files", "Removing backup files", backup<BackupAction::remove>, printCount},
    {"Remove @1x images", "Removing @1x images", remove<OZAction::remove1xImages>, printCountAndSize,
     isNoDeviceOf<&Device::isNonRetinaDevice>, deviceError},
    {"Remove @2x images", "Removing @2x images", remove<OZAction::remove2xImages>, printCountAndSize,
     isNoDeviceOf<&Device::isRetina2xDevice>, deviceError},
    {"Remove @3x images", "Removing @3x images", remove<OZAction::remove3xImages>, printCountAndSize,
     isNoDeviceOf<&Device::isRetina3xDevice>, deviceError},
    {"Remove iPad images", "Removing iPad images", remove<OZAction::removeiPadImages>, printCountAndSize,
     isNoDeviceOf<&Device::isiPad>, deviceError},
    {"Remove 4'' display images", "Removing 4'' display images", remove<OZAction::remove4InchImages>,
     printCountAndSize, isNoDeviceOf<&Device::is4inchDevice>, deviceError},
    {"Remove iTunesArtwork files", "Removing iTunesArtwork files", remove<OZAction::removeiTunesArtwork>,
     printCountAndSize},
    {"Remove languages", "Removing languages", remove<OZAction::removeLanguages>, printCountAndSize,
     hasLanguages, languageError},
    {"Remove keyboards", "Removing keyboards", remove<OZAction::removeKeyboards>, printCountAndSize,
     hasLanguages, languageError},
    {"Remove voice control languages", "Removing voice control languages",
     remove<OZAction::removeVoiceControlLanguages>, printCountAndSize, hasLanguages, languageError},
    {"Move fonts folder", "Moving fonts folder", moveFonts, printFonts, hasMovableFonts, fontsError},
    {"Restore launch daemons, Cydia Substrate addons and Preference Bundles",
     "Restoring launch daemons, Cydia Substrate addons and Preference Bundles", restore, printReboot},
};

void printMenu(const std::string& warnings) {
    OZStdIO::clear();
    std::string text = yellow(question) + "\n\n" + warnings;
    for (size_t index = 0; index < std::size(entries); ++index) {
        text += fmt::format("{} {}\n", number(index + 1), entries[index].name);
    }
    OZStdIO::printf(text + backAndPrompt("main menu"));
}

} // namespace

void OZCLIController::showMoreMenu() {
    Context context(*this, _modelBuilder);
    std::vector<bool> available;
    for (const Entry& entry : entries) {
        available.push_back(entry.isAvailable == nullptr || entry.isAvailable(context));
    }
    for (;;) {
        printMenu(warnings());
        const int64_t choice = readChoice();
        if (choice == 0) {
            return;
        }
        if (choice < 0 || choice > std::ssize(entries)) {
            continue;
        }
        const auto index = static_cast<size_t>(choice) - 1;
        const Entry& entry = entries[index];
        if (available[index]) {
            executeBlockInBackground([&] { entry.block(context); },
                                     fmt::format("{}, please wait", entry.message));
            entry.completion(context);
        } else {
            OZStdIO::clear();
            OZStdIO::printf(red(entry.errorMsg));
        }
        OZStdIO::pause();
    }
}

#include "Interface/Screens/Clean/OZCleanViewController.h"

#include "Categories/Text.h"
#include "Interface/Alerts/AlertPresets.h"
#include "Interface/Flow/Navigator.h"
#include "Interface/Images/ImageURLs.h"
#include "Interface/Screens/Clean/OZCleanupViewController.h"
#include "Model/Core/CleanupSteps.h"
#include "Model/Core/OZCore.h"
#include "Platform/Device/Device.h"

#include <algorithm>

namespace {

constexpr std::string_view settingsSection = "cleanupSettings";
constexpr std::string_view configurationSection = "configuration";
constexpr std::string_view fileTypesRow = "fileTypeConfiguration";
constexpr std::string_view customFilesRow = "customFilesConfiguration";
constexpr std::string_view excludedAppsRow = "excludedAppsConfiguration";
constexpr std::string_view warningPopups = "warningPopups";

constexpr uint64_t smartAttachments = 1;
constexpr uint64_t allAttachments = 2;

struct StepIcon {
    std::string_view step;
    /// An application's identifier, or the name of an image.
    std::string_view icon;
};

constexpr StepIcon stepIcons[] = {
    {cleanupstep::attachments, "com.apple.MobileSMS"},
    {cleanupstep::safari, "com.apple.mobilesafari"},
    {cleanupstep::applications, "com.apple.AppStore"},
    {cleanupstep::otaUpdates, "com.apple.Preferences"},
    {cleanupstep::batteryData, "BatteryIcon"},
    {cleanupstep::cydia, "com.saurik.Cydia"},
    {cleanupstep::cydiaSources, "com.saurik.Cydia"},
    {cleanupstep::dependencies, "com.saurik.Cydia"},
    {cleanupstep::logFiles, "TextIcon"},
    {cleanupstep::cacheFiles, "FileIcon"},
    {cleanupstep::tempFiles, "FileIcon"},
    {cleanupstep::fileTypeCleanup, "FileIcon"},
    {cleanupstep::customFiles, "FolderIcon"},
};

struct ConfigurationRow {
    std::string_view name;
    std::string_view icon;
    std::string_view textKey;
};

constexpr ConfigurationRow configurationRows[] = {
    {fileTypesRow, "FileIcon", "FILETYPELBL"},
    {customFilesRow, "FolderIcon", "CUSTOMFILES"},
    {excludedAppsRow, "com.apple.AppStore", "EXAPPSLBL"},
};

std::string imageNamed(std::string_view icon) {
    return icon.contains('.') ? appIconURLWithIdentifier(icon) : namedImageURL(icon);
}

std::vector<std::string> wordsOf(std::string_view text) {
    const auto& blanks = whitespaceAndNewlineCharacterSet();
    std::vector<std::string> words;
    const auto unicode = icu::UnicodeString::fromUTF8(text);
    icu::UnicodeString part;
    const auto flush = [&] {
        std::string utf8;
        words.push_back(part.toUTF8String(utf8));
        part.remove();
    };
    for (int32_t at = 0; at < unicode.length(); at = unicode.moveIndex32(at, 1)) {
        const UChar32 character = unicode.char32At(at);
        blanks.contains(character) ? flush() : static_cast<void>(part.append(character));
    }
    flush();
    return words;
}

} // namespace

OZCleanViewController::OZCleanViewController(InterfaceContext& context, OZCore& core,
                                             OZCleanupViewController& cleanupViewController)
    : OZTableViewController(context)
    , _core(core)
    , _cleanupViewController(cleanupViewController) {
    setTabTitleKey("CLEANBTN");
}

double OZCleanViewController::diskUsageWidth(double width, double height, bool isIPad) {
    const double side = std::min(width, height);
    return isIPad ? 0.75 * side : side - 20;
}

void OZCleanViewController::populateDataSource() {
    auto settings = std::make_shared<OZTableViewSection>(std::string(settingsSection));
    for (const auto& key : CleanupChoices::cleanupStepKeys(context().device)) {
        auto row = std::make_shared<OZTableViewRow>(std::string(key));
        row->image = imageNamed(std::ranges::find(stepIcons, key, &StepIcon::step)->icon);
        settings->addRow(std::move(row));
    }
    auto configuration = std::make_shared<OZTableViewSection>(std::string(configurationSection));
    for (const auto& [name, icon, textKey] : configurationRows) {
        auto row = std::make_shared<OZTableViewRow>(std::string(name));
        row->image = imageNamed(icon);
        row->accessoryType = AccessoryType::disclosureIndicator;
        configuration->addRow(std::move(row));
    }
    dataSource().addSection(std::move(settings));
    dataSource().addSection(std::move(configuration));
}

void OZCleanViewController::viewDidLoad() {
    OZTableViewController::viewDidLoad();
    bar().rightButton = BarButton{.action = [this] { startCleanup(false); }};
    bar().leftButton = BarButton{.action = [this] { startCleanup(true); }};
    refreshButtons();
}

void OZCleanViewController::viewDidAppear(bool animated) {
    OZTableViewController::viewDidAppear(animated);
    refreshDiskUsage();
}

// A file system that hangs must not hold up the window.
void OZCleanViewController::refreshDiskUsage() {
    auto& device = context().device;
    device.backgroundQueue().async([&device, self = std::weak_ptr(_self)] {
        auto usage = std::make_shared<std::vector<PartitionUsage>>(diskUsageOf(device));
        device.mainQueue().post([self, usage] {
            if (const auto screen = self.lock(); screen) {
                (*screen)->_diskUsage = usage;
                if ((*screen)->table() != nullptr) {
                    (*screen)->table()->layOut();
                }
            }
        });
    });
}

void OZCleanViewController::localize() {
    OZTableViewController::localize();
    if (!isLoaded()) {
        return;
    }
    bar().rightButton->title = text("CLEANBTN");
    bar().leftButton->title = text("ANALYZEBTN");
    for (const auto& row : dataSource().sectionWithName(settingsSection)->allRows()) {
        row->text = text(row->name());
    }
    for (const auto& [name, icon, textKey] : configurationRows) {
        dataSource().sectionWithName(configurationSection)->rowWithName(name)->text = text(textKey);
    }
    barChanged();
    reloadTableAnimated(false);
}

void OZCleanViewController::refreshButtons() {
    const bool isAnyOn = !_core.choices().enabledCleanupStepKeys().empty();
    bar().leftButton->isEnabled = isAnyOn;
    bar().rightButton->isEnabled = isAnyOn;
    barChanged();
}

std::optional<std::string> OZCleanViewController::titleForHeaderInSection(size_t /*section*/) const {
    return " ";
}

double OZCleanViewController::heightForHeaderInSection(size_t section) {
    return dataSource().sectionNameAtIndex(section) == settingsSection
               ? diskUsageHeight
               : OZTableViewController::heightForHeaderInSection(section);
}

Cell OZCleanViewController::cellForRowAtIndexPath(IndexPath place) {
    Cell cell = OZTableViewController::cellForRowAtIndexPath(place);
    if (dataSource().sectionNameAtIndex(place.section) != settingsSection) {
        return cell;
    }
    const std::string& step = dataSource().rowAtIndexPath(place).name();
    const auto number = _core.choices().numberForCleanupSetting(step);
    if (step == cleanupstep::attachments) {
        // Scripts know these words, too, so they are the same in all languages.
        cell.control = SegmentedControl{.titles = {"off", "smart", "on"},
                                        .selected = number ? number->unsignedValue().value_or(0) : 0};
    } else {
        cell.control = SwitchControl{.isOn = number && number->boolValue().value_or(false)};
    }
    return cell;
}

void OZCleanViewController::didSelectRowAtIndexPath(IndexPath place) {
    const std::string& name = dataSource().rowAtIndexPath(place).name();
    if (dataSource().sectionNameAtIndex(place.section) == settingsSection) {
        showActionSheetForRow(place);
    } else if (name == fileTypesRow) {
        showFileTypeConfigurationAlert();
    } else if (auto* screen =
                   name == customFilesRow ? _customCleanupViewController : _excludedAppsViewController;
               screen != nullptr) {
        context().navigator.push(*screen);
    }
    if (table() != nullptr) {
        table()->deselectRow(place, true);
    }
}

void OZCleanViewController::startCleanup(bool analyze) {
    _cleanupViewController.startCleanup(std::nullopt, analyze);
}

void OZCleanViewController::showActionSheetForRow(IndexPath place) {
    const std::string& step = dataSource().rowAtIndexPath(place).name();
    platform::Dictionary settings;
    if (step == cleanupstep::attachments) {
        const auto number = _core.choices().numberForCleanupSetting(step);
        const bool takesAll = number && number->unsignedValue() == allAttachments;
        settings[step] = takesAll ? allAttachments : smartAttachments;
    } else {
        settings[step] = true;
    }
    const auto start = [this, settings](bool analyze) {
        return [this, settings, analyze](OZAlertAction&) {
            _cleanupViewController.startCleanup(settings, analyze);
        };
    };
    alerts::analyzeCleanSheet(context(), start(true), start(false), false)->show(this, place);
}

void OZCleanViewController::showFileTypeConfigurationAlert() {
    std::string joined;
    for (const auto& type : _core.choices().fileTypes()) {
        joined += (joined.empty() ? "" : " ") + type;
    }
    // The alert is there whenever its button is pressed, but must not hold on to itself.
    auto alert = std::make_shared<std::weak_ptr<OZAlertController>>();
    auto shown = alerts::defaultAlertWithActions(
        context(), {OZAlertAction::make(text("APPLY"), OZAlertActionStyle::standard,
                                        [this, alert](OZAlertAction&) {
                                            if (const auto asked = alert->lock()) {
                                                applyFileTypes(asked->textFieldText().value_or(""));
                                            }
                                        }),
                    OZAlertAction::make(text("CANCEL"), OZAlertActionStyle::cancel)});
    *alert = shown;
    shown->setMessage(text("FILETYPEMSG"));
    shown->showTextField({.text = joined, .autocorrects = false, .autocapitalizes = false});
    shown->show(this);
}

void OZCleanViewController::applyFileTypes(std::string_view text) {
    if (_core.choices().setFileTypesExcludingIllegal(wordsOf(text))) {
        const auto alert = alerts::okAlert(context());
        alert->setMessage(this->text("ILLFILETYPEMSG"));
        alert->show(this);
    }
}

void OZCleanViewController::warnOnce(bool& hasShown, std::string_view messageKey) {
    if (hasShown || !context().device.standardUserDefaults().boolForKey(warningPopups)) {
        return;
    }
    const auto alert = alerts::okAlert(context());
    alert->setMessage(text(messageKey));
    alert->show(this);
    hasShown = true;
}

void OZCleanViewController::controlChanged(IndexPath place, size_t value) {
    const std::string& step = dataSource().rowAtIndexPath(place).name();
    if (step == cleanupstep::attachments) {
        if (value != 0) {
            warnOnce(_hasShownMessagesWarning, "MSGATTACHMSG");
        }
        _core.choices().setNumberForCleanupSetting(uint64_t{value}, step);
    } else {
        if (step == cleanupstep::cydiaSources && value != 0) {
            warnOnce(_hasShownCydiaSourcesWarning, "CYDIASRCMSG");
        }
        _core.choices().setNumberForCleanupSetting(value != 0, step);
    }
    refreshButtons();
}

#pragma once

#include "Interface/Screens/Clean/DiskUsage.h"
#include "Interface/Table/OZTableViewController.h"
#include "Platform/Formats/PropertyList.h"
#include "Platform/Threads/Queue.h"

#include <functional>
#include <string_view>
#include <vector>

class OZCleanupViewController;
class OZCore;

/// The first screen: which steps a cleanup has, what belongs to them, and how full the device is. Starts
/// cleanups and analyses.
class OZCleanViewController : public OZTableViewController {
  public:
    /// Points.
    static constexpr double diskUsageHeight = 90;

    /// What is given outlives the screen.
    OZCleanViewController(InterfaceContext& context, OZCore& core,
                          OZCleanupViewController& cleanupViewController);

    /// The screens that rows of the configuration lead to; null for one that is not there.
    void setCustomCleanupViewController(OZViewController* screen) { _customCleanupViewController = screen; }
    void setExcludedAppsViewController(OZViewController* screen) { _excludedAppsViewController = screen; }

    /// What is known of the device's partitions by now; found out beside the main thread.
    [[nodiscard]] const std::vector<PartitionUsage>& diskUsage() const { return *_diskUsage; }
    /// The width of the bars in a view; an iPad's are narrower.
    [[nodiscard]] static double diskUsageWidth(double width, double height, bool isIPad);

    void viewDidAppear(bool animated) override;
    void localize() override;
    [[nodiscard]] std::optional<std::string> titleForHeaderInSection(size_t section) const override;
    [[nodiscard]] double heightForHeaderInSection(size_t section) override;
    [[nodiscard]] Cell cellForRowAtIndexPath(IndexPath place) override;
    void didSelectRowAtIndexPath(IndexPath place) override;
    void controlChanged(IndexPath place, size_t value) override;

  protected:
    void viewDidLoad() override;
    void populateDataSource() override;

  private:
    void startCleanup(bool analyze);
    void refreshButtons();
    void refreshDiskUsage();
    void showActionSheetForRow(IndexPath place);
    void showFileTypeConfigurationAlert();
    void applyFileTypes(std::string_view text);
    /// Once in the life of the program, unless the user wants no warnings.
    void warnOnce(bool& hasShown, std::string_view messageKey);

    OZCore& _core;
    OZCleanupViewController& _cleanupViewController;
    OZViewController* _customCleanupViewController = nullptr;
    OZViewController* _excludedAppsViewController = nullptr;
    bool _hasShownMessagesWarning = false;
    bool _hasShownCydiaSourcesWarning = false;
    std::shared_ptr<std::vector<PartitionUsage>> _diskUsage = std::make_shared<std::vector<PartitionUsage>>();
    std::shared_ptr<OZCleanViewController*> _self = std::make_shared<OZCleanViewController*>(this);
};

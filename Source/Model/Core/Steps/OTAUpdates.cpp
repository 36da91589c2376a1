#include "Model/Core/CleanupSteps.h"
#include "Model/Core/Steps/StepContext.h"
#include "Platform/Device/DeviceNames.h"

// Downloaded updates of the system.

namespace {

using enum CleanupPrimitive;

// One letter short of "SoftwareUpdate" for names that go on differently behind it.
constexpr std::string_view softwareUpdateAssets[] = {"com_apple_MobileAsset_SoftwareUpdat"};
constexpr std::string_view softwareUpdateDownloads[] = {"com_apple_MobileAsset_SoftwareUpdate"};

constexpr CleanupAction otaUpdateActions[] = {
    {.primitive = delFolderContents, .path = "/var/MobileSoftwareUpdate"},
    {.primitive = delFolderContents, .path = "/var/mobile/MobileSoftwareUpdate"},
    {.primitive = delWithPatterns,
     .path = devicename::mobileAssets,
     .patterns = {.startPatterns = softwareUpdateAssets}},
    {.primitive = delWithPatterns,
     .path = "/var/MobileAsset/Assets",
     .patterns = {.startPatterns = softwareUpdateDownloads}},
};

} // namespace

void cleanOTAUpdates(const StepContext& context) {
    context.run.perform(otaUpdateActions);
}

#pragma once

#include "Platform/Formats/PropertyList.h"

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

class FileManager;

/// One generation of the platform: what a product version implies for the version numbers of its libraries.
struct SystemVersion {
    std::string_view productVersion;
    double foundationVersion;
    double coreFoundationVersion;
};

/// The newest generation of the table that is not newer than the product version ("9.3.5" gives that of
/// "9.3"); none for a text that is no version or one older than the table.
std::optional<SystemVersion> systemVersionForProductVersion(std::string_view productVersion);

/// The numbers of a product version, without zeros at its end, so that "10" and "10.0" are the same; none for
/// a text that is no version.
std::optional<std::vector<unsigned>> versionNumbers(std::string_view productVersion);

/// True for a name as devices tell it as "hw.machine": "iPad", "iPhone" or "iPod", a number, a comma and a
/// number.
bool isHardwareModel(std::string_view text);

/// Sizes of a file system, in bytes.
struct VolumeFacts {
    uint64_t size = 0;
    uint64_t free = 0;
};

/// What a person tells about a device where its tree or its folder does not. Empty where nothing is told.
struct GivenFacts {
    std::string hardwareModel;
    /// A product version such as "9.3.5".
    std::string systemVersion;
};

/// What is known about a device beside its tree.
struct DeviceFacts {
    /// `NSFoundationVersionNumber` and `kCFCoreFoundationVersionNumber`; 0 if nothing tells.
    double foundationVersion = 0;
    double coreFoundationVersion = 0;
    /// "hw.machine", such as "iPhone9,3"; empty if nothing tells.
    std::string hardwareModel;
    /// Such as "11.1.2"; empty if nothing tells.
    std::string systemVersion;
    /// A zone's name such as "Europe/Berlin"; none means the host's own.
    std::optional<std::string> timeZone;
    std::optional<std::string> carrierCountryCode;
    std::optional<std::string> carrierISOCountryCode;
    /// By mount path; a mount point that is missing here is measured on the host.
    std::map<std::string, VolumeFacts, std::less<>> volumes;
    /// Info dictionaries of the installed applications; none means that the tree is to be searched.
    std::optional<Array> applications;

    /// Facts from the dictionary of a device folder; what they lack comes from the tree and from what is
    /// given by hand. For the version the tree's word comes first, since it is the system's own; for the
    /// model the person's, since the tree has it from caches. Values of a wrong type are passed over as if
    /// they were missing.
    static DeviceFacts read(const Dictionary& dictionary, FileManager& fileManager,
                            const GivenFacts& given = {});
};

} // namespace platform

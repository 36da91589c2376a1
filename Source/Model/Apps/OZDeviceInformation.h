#pragma once

#include <string>

/// An answer that may be missing. Callers compare with `yes` or `no`, whichever they need for certain.
enum class OZTriState : unsigned { no = 0, yes = 1, unknown = 2 };

/// What a device's hardware model tells about it. A model that is not in the table has no known screen; of a
/// device without a model nothing is known.
class OZDeviceInformation {
  public:
    /// The hardware model is what the device reports as "hw.machine", such as "iPhone9,3"; empty if nothing
    /// tells.
    explicit OZDeviceInformation(std::string hardwareString)
        : _hardwareString(std::move(hardwareString)) {}

    [[nodiscard]] const std::string& hardwareString() const { return _hardwareString; }
    [[nodiscard]] bool isKnownDevice() const;
    [[nodiscard]] OZTriState is4inchDevice() const;
    /// Unknown without a name alone: its beginning tells.
    [[nodiscard]] OZTriState isiPad() const;
    /// Exactly one of the three holds for a known device.
    [[nodiscard]] OZTriState isNonRetinaDevice() const;
    [[nodiscard]] OZTriState isRetina2xDevice() const;
    [[nodiscard]] OZTriState isRetina3xDevice() const;

  private:
    std::string _hardwareString;
};

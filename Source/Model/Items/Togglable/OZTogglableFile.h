#pragma once

#include "Model/Items/Togglable/OZTogglableItem.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace platform {
class Device;
class FileManager;
} // namespace platform

/// A file that is enabled at one path and disabled at another. Only what is no folder counts as the file; a
/// link counts, whatever it leads to.
///
/// A subclass whose files all stand in the same folders hides the four class operations with its own, and
/// takes the found file in its constructor.
class OZTogglableFile : public OZTogglableItem {
  public:
    /// A file that stands at one of its paths at least; made by `find` alone.
    class Found {
      public:
        [[nodiscard]] const std::string& identifier() const { return _identifier; }
        /// Where it stands; of two places, the enabled one.
        [[nodiscard]] const std::string& currentPath() const {
            return _enabled ? _enabledPath : _disabledPath;
        }

      private:
        friend class OZTogglableFile;
        Found(platform::Device& device, std::string identifier, std::string enabledPath,
              std::string disabledPath, bool enabled);

        platform::Device* _device;
        std::string _identifier;
        std::string _enabledPath;
        std::string _disabledPath;
        bool _enabled;
    };

    // Where a class's files stand: folders with a "/" at the end or without, extensions without a dot.
    static std::optional<std::string_view> enabledFolder() { return std::nullopt; }
    static std::optional<std::string_view> disabledFolder() { return std::nullopt; }
    static std::optional<std::string_view> enabledExtension() { return std::nullopt; }
    static std::optional<std::string_view> disabledExtension() { return std::nullopt; }

    /// None if no file stands at either path; the wanted state is the state that it is found in. Throws
    /// AssertionFailure without an identifier. The device outlives what is made of it.
    static std::optional<Found> find(platform::Device& device, std::string_view identifier,
                                     std::string_view enabledPath, std::string_view disabledPath);
    /// The same for the paths that a class builds from a file's name. None if the class does not tell where
    /// its files stand.
    template <class File>
    static std::optional<Found> find(platform::Device& device, std::string_view identifier,
                                     std::string_view fileNameWithoutExtension) {
        const auto enabled =
            pathOf(File::enabledFolder(), fileNameWithoutExtension, File::enabledExtension());
        const auto disabled =
            pathOf(File::disabledFolder(), fileNameWithoutExtension, File::disabledExtension());
        return enabled && disabled ? find(device, identifier, *enabled, *disabled) : std::nullopt;
    }

    /// An item of a class for a file that is there, otherwise null.
    template <class File = OZTogglableFile>
    static std::shared_ptr<File> make(platform::Device& device, std::string_view identifier,
                                      std::string_view enabledPath, std::string_view disabledPath) {
        auto found = find(device, identifier, enabledPath, disabledPath);
        return found ? std::make_shared<File>(*std::move(found)) : nullptr;
    }
    template <class File = OZTogglableFile>
    static std::shared_ptr<File> make(platform::Device& device, std::string_view identifier,
                                      std::string_view fileNameWithoutExtension) {
        auto found = find<File>(device, identifier, fileNameWithoutExtension);
        return found ? std::make_shared<File>(*std::move(found)) : nullptr;
    }

    explicit OZTogglableFile(Found found);
    OZTogglableFile(const OZTogglableFile&) = delete;
    OZTogglableFile& operator=(const OZTogglableFile&) = delete;

    [[nodiscard]] std::string identifier() const override { return _identifier; }
    [[nodiscard]] std::string title() const override { return _title; }
    void setTitle(std::string title) override { _title = std::move(title); }

    [[nodiscard]] const std::string& enabledPath() const { return _enabledPath; }
    [[nodiscard]] const std::string& disabledPath() const { return _disabledPath; }
    /// Where the file stands now; none if it is gone. Of two, the enabled one.
    [[nodiscard]] std::optional<std::string> currentPath() const;

    /// Moves the file. Whatever stands at its new path is removed before; the folder there is made if it is
    /// missing or neither a folder nor a link to one.
    bool applyChanges() override;
    bool discardChanges() override;
    [[nodiscard]] bool currentEnabledState() override;
    [[nodiscard]] bool enabledState() override { return _enabledState; }
    void setEnabledState(bool enabled) override { _enabledState = enabled; }

  protected:
    [[nodiscard]] platform::Device& device() const { return _device; }

  private:
    static std::optional<std::string> pathOf(std::optional<std::string_view> folder, std::string_view name,
                                             std::optional<std::string_view> extension);

    platform::Device& _device;
    bool _enabledState;
    std::string _disabledPath;
    std::string _enabledPath;
    std::string _identifier;
    std::string _title;
};

#pragma once

#include "Platform/Device/Warnings.h"
#include "Platform/Files/FileManager.h"
#include "Platform/Formats/PropertyList.h"
#include "Platform/Threads/NotificationCenter.h"

#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

namespace platform {

/// Posted without an object, on the thread that calls `synchronize`, before the store is saved.
inline constexpr std::string_view userDefaultsWillSynchronizeNotification =
    "OZUserDefaultsWillSynchronizeNotification";

/// A program's stored choices: values by key in one property list of the device. They are read at first use
/// and kept in memory, with a warning if they cannot be; nothing is written before
/// `synchronize`. A stored value hides a registered one of the same key, whatever its type. Safe to use from
/// several threads.
class UserDefaults {
  public:
    /// The path names the property list, which need not exist, nor its folder. The centre and the
    /// warnings outlive this object.
    UserDefaults(FileManager fileManager, NotificationCenter& notificationCenter, const Warnings& warnings,
                 std::string path);
    UserDefaults(const UserDefaults&) = delete;
    UserDefaults& operator=(const UserDefaults&) = delete;

    /// Adds values that are read where nothing is stored. They are never saved.
    void registerDefaults(const Dictionary& defaults);

    /// The stored value, else the registered one, else none.
    [[nodiscard]] std::optional<Value> objectForKey(std::string_view key) const;
    /// None for a value of another type.
    [[nodiscard]] std::optional<std::string> stringForKey(std::string_view key) const;
    [[nodiscard]] std::optional<Array> arrayForKey(std::string_view key) const;
    [[nodiscard]] std::optional<Dictionary> dictionaryForKey(std::string_view key) const;
    /// A number that is not 0, or a text that begins with "Y", "T" or a number that is not 0. False for the
    /// rest.
    [[nodiscard]] bool boolForKey(std::string_view key) const;

    /// Reads the choices if that has not been done. An error says in words why they cannot be read; it warns
    /// of nothing, and the next use tries again. A file that does not exist or is empty holds none.
    [[nodiscard]] std::expected<void, std::string> load();
    /// Why the choices could not be read at their first use, which this may be; none if they could, or if
    /// none are stored.
    [[nodiscard]] std::optional<std::error_code> readError() const;
    /// Gives the file a name of its own with the date and time, beside its old one, and that path to the
    /// caller; from then on nothing is stored. An error says in words why it stays, as does whatever is no
    /// file.
    [[nodiscard]] std::expected<std::string, std::string> reset();
    /// The device path of the file.
    [[nodiscard]] const std::string& path() const { return _path; }

    void setObject(std::string_view key, Value value);
    void setBool(std::string_view key, bool value) { setObject(key, value); }
    void removeObjectForKey(std::string_view key);

    /// Posts the notification, then saves what has changed into the file as it is by then, so that what other
    /// processes stored under other keys stays. The file is replaced in one step, and left alone if nothing
    /// changes. One that cannot be read, or could not be when its choices were, is kept under another name
    /// when something is stored, with a warning that tells so. A failure is a warning, too; the changes wait
    /// for the next call.
    Result<void> synchronize();

    /// Forgets what has been set since the last save and reads the file anew; where that cannot be read, what
    /// was read last stays.
    void revert();

    [[nodiscard]] NotificationCenter& notificationCenter() const { return _notificationCenter; }

  private:
    template <class T>
    std::optional<T> typedObjectForKey(std::string_view key) const;
    const Dictionary& stored() const;
    void setChange(std::string_view key, std::optional<Value> value);
    /// The file's values: empty for a file that does not exist, an error for one that cannot be read.
    Result<Dictionary> readFile() const;
    /// Moves the file to the first of "name", "name-2", "name-3" that is free, and gives that path.
    Result<std::string> setAside(const std::string& name);
    /// Whether a save has something to do.
    [[nodiscard]] bool isChanged() const;
    Result<void> writeFile(const Dictionary& values);
    Result<void> save();

    mutable std::mutex _mutex;
    mutable FileManager _fileManager;
    NotificationCenter& _notificationCenter;
    const Warnings& _warnings;
    std::string _path;
    Dictionary _registered;
    // As last read or saved, without the changes.
    mutable std::optional<Dictionary> _stored;
    mutable std::optional<std::error_code> _readError;
    // Since the last save; none stands for a removal.
    std::map<std::string, std::optional<Value>, std::less<>> _changes;
};

} // namespace platform

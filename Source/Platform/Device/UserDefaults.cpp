#include "Platform/Device/UserDefaults.h"

#include "Platform/Formats/PropertyListCheck.h"

#include <algorithm>
#include <ctime>

#include <fmt/chrono.h>
#include <fmt/format.h>

namespace platform {

namespace {

constexpr int noPropertyList = EILSEQ;
constexpr int noDictionary = EBADMSG;
constexpr int noTarget = ENOLINK;

std::string inWords(const std::error_code& error) {
    switch (error.value()) {
    case noPropertyList:
        return "they are no whole property list";
    case noDictionary:
        return "they are a property list, but no dictionary";
    case noTarget:
        return "it is a link that leads nowhere";
    case EINVAL:
        return "it is no regular file";
    default:
        return error.message();
    }
}

} // namespace

UserDefaults::UserDefaults(FileManager fileManager, NotificationCenter& notificationCenter,
                           const Warnings& warnings, std::string path)
    : _fileManager(std::move(fileManager))
    , _notificationCenter(notificationCenter)
    , _warnings(warnings)
    , _path(std::move(path)) {}

void UserDefaults::registerDefaults(const Dictionary& defaults) {
    const std::lock_guard lock(_mutex);
    for (const auto& [key, value] : defaults) {
        _registered.insert_or_assign(key, value);
    }
}

std::optional<Value> UserDefaults::objectForKey(std::string_view key) const {
    const std::lock_guard lock(_mutex);
    const auto change = _changes.find(key);
    if (change != _changes.end() && change->second) {
        return change->second;
    }
    if (const auto found = stored().find(key); found != stored().end() && change == _changes.end()) {
        return found->second;
    }
    const auto found = _registered.find(key);
    return found != _registered.end() ? std::optional(found->second) : std::nullopt;
}

template <class T>
std::optional<T> UserDefaults::typedObjectForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    const T* typed = value ? value->as<T>() : nullptr;
    return typed != nullptr ? std::optional(*typed) : std::nullopt;
}

std::optional<std::string> UserDefaults::stringForKey(std::string_view key) const {
    return typedObjectForKey<std::string>(key);
}

std::optional<Array> UserDefaults::arrayForKey(std::string_view key) const {
    return typedObjectForKey<Array>(key);
}

std::optional<Dictionary> UserDefaults::dictionaryForKey(std::string_view key) const {
    return typedObjectForKey<Dictionary>(key);
}

bool UserDefaults::boolForKey(std::string_view key) const {
    const auto value = objectForKey(key);
    return value && value->truthValue().value_or(false);
}

void UserDefaults::setObject(std::string_view key, Value value) {
    setChange(key, std::move(value));
}

void UserDefaults::removeObjectForKey(std::string_view key) {
    setChange(key, std::nullopt);
}

void UserDefaults::setChange(std::string_view key, std::optional<Value> value) {
    const std::lock_guard lock(_mutex);
    // Whether anything could be read before decides on what a save does.
    std::ignore = stored();
    _changes.insert_or_assign(std::string(key), std::move(value));
}

const Dictionary& UserDefaults::stored() const {
    if (!_stored) {
        auto file = readFile();
        if (!file) {
            // Saving deals with the file. A user whose choices are out of force has to know.
            _readError = file.error();
            _warnings.tell(fmt::format("The settings in {} cannot be read ({}); the defaults serve.", _path,
                                       inWords(file.error())));
        }
        _stored = file ? std::move(*file) : Dictionary{};
    }
    return *_stored;
}

std::expected<void, std::string> UserDefaults::load() {
    const std::lock_guard lock(_mutex);
    if (!_stored) {
        auto file = readFile();
        if (!file) {
            return std::unexpected(inWords(file.error()));
        }
        _stored = std::move(*file);
    }
    return {};
}

std::optional<std::error_code> UserDefaults::readError() const {
    const std::lock_guard lock(_mutex);
    std::ignore = stored();
    return _readError;
}

Result<Dictionary> UserDefaults::readFile() const {
    const auto bytes = _fileManager.contentsAtPath(_path, maximumPropertyListSize);
    if (!bytes && !meansAbsence(bytes.error())) {
        return std::unexpected(bytes.error());
    }
    if (!bytes) {
        return _fileManager.attributesOfItemAtPath(_path) ? failure(noTarget)
                                                          : Result<Dictionary>(Dictionary{});
    }
    if (bytes->empty()) {
        return Dictionary{};
    }
    // Not even a format that takes nothing but space for an empty dictionary says that this was one.
    const bool isSpace = bytes->find_first_not_of(" \t\r\n") == std::string::npos;
    auto list = isSpace ? failure(noPropertyList) : parsePropertyList(*bytes);
    if (!list) {
        return list.error() == std::errc::illegal_byte_sequence ? failure(noPropertyList)
                                                                : std::unexpected(list.error());
    }
    auto* values = list->as<Dictionary>();
    return values != nullptr ? Result<Dictionary>(std::move(*values)) : failure(noDictionary);
}

std::expected<std::string, std::string> UserDefaults::reset() {
    const std::lock_guard lock(_mutex);
    const auto attributes = _fileManager.attributesOfTargetAtPath(_path);
    if (attributes && attributes->type != FileType::regular) {
        return std::unexpected("it is no regular file");
    }
    const std::time_t now = std::time(nullptr);
    auto kept = setAside(fmt::format("{}.damaged-{:%Y-%m-%dT%H-%M-%S}", _path, fmt::localtime(now)));
    if (!kept) {
        return std::unexpected(kept.error().message());
    }
    _stored = Dictionary{};
    _readError.reset();
    _changes.clear();
    return *kept;
}

Result<void> UserDefaults::synchronize() {
    _notificationCenter.post(userDefaultsWillSynchronizeNotification);
    const std::lock_guard lock(_mutex);
    auto saved = save();
    if (!saved) {
        _warnings.tell(
            fmt::format("The settings cannot be saved to {} ({}).", _path, saved.error().message()));
    }
    return saved;
}

// Of choices that nobody has read none can be taken away: their owners only say that they have none.
bool UserDefaults::isChanged() const {
    return _readError ? std::ranges::any_of(_changes, [](auto& change) { return change.second.has_value(); })
                      : !_changes.empty();
}

Result<void> UserDefaults::save() {
    auto file = readFile();
    if (!isChanged() && (!file || _readError)) {
        return {};
    }
    // Where nothing could be read, the changes are made to the defaults: they must not replace what is there.
    if (!file || (_readError && !file->empty())) {
        const auto kept = setAside(_path + ".damaged");
        if (!kept) {
            return std::unexpected(kept.error());
        }
        _warnings.tell(
            fmt::format("The settings in {} could not be read; they were kept as {}.", _path, *kept));
        file = failure(noPropertyList);
    }
    // What was read before the file was damaged is better than nothing.
    Dictionary values = file ? *file : stored();
    for (const auto& [key, value] : _changes) {
        if (value) {
            values.insert_or_assign(key, *value);
        } else {
            values.erase(key);
        }
    }
    if (!file || values != *file) {
        if (auto written = writeFile(values); !written) {
            return written;
        }
    }
    _stored = std::move(values);
    _readError.reset();
    _changes.clear();
    return {};
}

void UserDefaults::revert() {
    const std::lock_guard lock(_mutex);
    _changes.clear();
    if (auto file = readFile()) {
        _stored = std::move(*file);
        _readError.reset();
    }
}

Result<std::string> UserDefaults::setAside(const std::string& name) {
    constexpr int mostKept = 1000;
    for (int number = 1; number <= mostKept; ++number) {
        std::string numbered = number == 1 ? name : fmt::format("{}-{}", name, number);
        const auto moved = _fileManager.moveItemAtPath(_path, numbered);
        if (moved) {
            return numbered;
        }
        if (moved.error() != std::errc::file_exists) {
            return std::unexpected(moved.error());
        }
    }
    return failure(EEXIST);
}

Result<void> UserDefaults::writeFile(const Dictionary& values) {
    const std::string bytes = serializePropertyList(values, PropertyListFormat::binary);
    auto written = _fileManager.writeContents(_path, bytes);
    if (!written && written.error() == std::errc::no_such_file_or_directory) {
        const auto folder = deletingLastPathComponent(_path);
        if (auto made = _fileManager.createDirectoryAtPath(folder, IntermediateFolders::create); !made) {
            return made;
        }
        written = _fileManager.writeContents(_path, bytes);
    }
    return written;
}

} // namespace platform

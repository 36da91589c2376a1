#include "Model/Core/MessageDatabase.h"

#include "Model/Core/ReadOnlyDatabase.h"

#include <memory>

#include <fmt/format.h>

namespace {

// The schema is the system's own; this much of it is known.
constexpr int pathColumn = 4;

constexpr std::string_view homes[] = {"~/", "/var/mobile/", "/private/var/mobile/"};

std::string_view relativeToHome(std::string_view path) {
    for (const auto home : homes) {
        if (path.starts_with(home)) {
            return path.substr(home.size());
        }
    }
    return path;
}

using Statement = std::unique_ptr<sqlite3_stmt, decltype(&sqlite3_finalize)>;

Statement prepare(sqlite3* database, const std::string& query) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(database, query.c_str(), -1, &statement, nullptr);
    return {statement, &sqlite3_finalize};
}

} // namespace

MessageDatabase::MessageDatabase(platform::FileManager fileManager, std::string_view table)
    : _fileManager(std::move(fileManager))
    , _table(table) {}

std::optional<std::vector<std::string>> MessageDatabase::attachmentFolders() {
    const std::string before = fingerprint();
    auto folders = readFolders();
    // Without locks, a list that was read while somebody wrote may lack attachments.
    return before == fingerprint() ? folders : std::nullopt;
}

std::string MessageDatabase::fingerprint() {
    std::string result;
    for (const auto* companion : {"", "-wal", "-journal"}) {
        const auto file = _fileManager.attributesOfTargetAtPath(std::string(path) + companion);
        if (file) {
            result += fmt::format("{} {} {} {}", file->inode, file->size, file->modified.tv_sec,
                                  file->modified.tv_nsec);
        }
        result += '\n';
    }
    return result;
}

std::optional<std::vector<std::string>> MessageDatabase::readFolders() {
    const ReadOnlyDatabase database(_fileManager, std::string(path));
    if (database.handle() == nullptr) {
        return std::nullopt;
    }
    const auto statement = prepare(database.handle(), fmt::format("select * from {}", _table));
    // In a table without the column every row would look as if it had no attachment.
    if (!statement || sqlite3_column_count(statement.get()) <= pathColumn) {
        return std::nullopt;
    }
    std::vector<std::string> folders;
    int result = SQLITE_ROW;
    while ((result = sqlite3_step(statement.get())) == SQLITE_ROW) {
        const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement.get(), pathColumn));
        if (text != nullptr) {
            folders.emplace_back(relativeToHome(platform::deletingLastPathComponent(text)));
        }
    }
    return result == SQLITE_DONE ? std::optional(std::move(folders)) : std::nullopt;
}

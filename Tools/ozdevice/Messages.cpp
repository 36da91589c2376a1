#include "DeviceBuild.h"
#include "Platform/Device/Generations.h"

#include <memory>
#include <stdexcept>

#include <fmt/format.h>
#include <sqlite3.h>

namespace ozdevice {
namespace {

constexpr std::string_view messageFolder = "/var/mobile/Library/SMS";
/// From this generation on, the table of attachments has its present name.
constexpr double presentTableSince = ios::v6_0;

enum class Known { no, yes };

struct AttachmentRow {
    /// Below the message folder.
    std::string_view path;
    Known known;
    /// How the database writes the home folder.
    std::string_view home = "~";
};

constexpr AttachmentRow attachments[] = {
    {"Attachments/0a/10/6B1D0B57-1C11/IMG_0107.jpg", Known::yes},
    {"Attachments/1f/15/0F8E2F52-7A90/Voice.caf", Known::yes, "/var/mobile"},
    {"Attachments/2c/12/91C7A1C2-52D3/Card.vcf", Known::yes, "/private/var/mobile"},
    {"Attachments/2c/12/91C7A1C2-52D4/IMG_0031.png", Known::no},
    {"Attachments/5e/14/D3A94A4D-3E1B/IMG_0044.jpg", Known::no},
    {"Attachments/5e/14/D3A94A4D-3E1B/IMG_0045.jpg", Known::no},
    {"Attachments/stray.jpg", Known::no},
    {"Parts/00/00/17-0.jpg", Known::yes},
    {"Parts/00/03/29-0.jpg", Known::no},
    {"Parts/00/03/29-1-preview", Known::no},
};

constexpr TreeEntry emptyFolders[] = {
    {"/var/mobile/Library/SMS/Attachments/7a/"},
    {"/var/mobile/Library/SMS/Attachments/7b/11/"},
    {"/var/mobile/Library/SMS/Parts/00/04/"},
    {"/var/mobile/Library/SMS/Drafts/PENDING.draft/message.plist"},
};

using Database = std::unique_ptr<sqlite3, decltype(&sqlite3_close)>;

void execute(sqlite3* database, const std::string& statement) {
    if (sqlite3_exec(database, statement.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
        throw std::runtime_error(
            fmt::format("cannot write the message database: {}", sqlite3_errmsg(database)));
    }
}

void fillDatabase(sqlite3* database, std::string_view table, std::string_view idColumn) {
    execute(database, "PRAGMA journal_mode = OFF; PRAGMA synchronous = OFF; BEGIN;");
    execute(database,
            "CREATE TABLE message (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, guid TEXT, text TEXT);");
    execute(database,
            fmt::format("CREATE TABLE {} (ROWID INTEGER PRIMARY KEY AUTOINCREMENT, {} TEXT UNIQUE NOT "
                        "NULL, created_date INTEGER, start_date INTEGER, filename TEXT, uti TEXT);",
                        table, idColumn));
    int row = 0;
    const auto insert = [&](const std::string& filename) {
        execute(database,
                fmt::format("INSERT INTO {0} VALUES ({1}, 'guid-{1}', 43{1}, 43{1}, {2}, 'public.data');",
                            table, ++row, filename));
    };
    for (const AttachmentRow& attachment : attachments) {
        if (attachment.known == Known::yes) {
            insert(fmt::format("'{}/Library/SMS/{}'", attachment.home, attachment.path));
        }
    }
    // An attachment that never arrived, and one whose file is gone.
    insert("NULL");
    insert("'~/Library/SMS/Attachments/9f/15/GONE/IMG_0999.jpg'");
    execute(database, "INSERT INTO message VALUES (1, 'guid-m1', 'See you at the harbor'); COMMIT;");
}

} // namespace

void addMessages(DeviceBuild& build) {
    build.add(emptyFolders);
    for (const AttachmentRow& attachment : attachments) {
        const TreeEntry entry[] = {{attachment.path}};
        build.add(entry, fmt::format("{}/", messageFolder));
    }
    const std::string path = fmt::format("{}/sms.db", messageFolder);
    sqlite3* opened = nullptr;
    const int result = sqlite3_open(build.tree.hostPath(path).c_str(), &opened);
    Database database(opened, &sqlite3_close);
    if (result != SQLITE_OK) {
        throw std::runtime_error("cannot create the message database " + build.tree.hostPath(path));
    }
    if (build.generation.foundationVersion >= presentTableSince) {
        fillDatabase(database.get(), "attachment", "guid");
    } else {
        fillDatabase(database.get(), "madrid_attachment", "attachment_guid");
    }
    database.reset();
    build.tree.adopt(path, {.age = 0});
}

} // namespace ozdevice

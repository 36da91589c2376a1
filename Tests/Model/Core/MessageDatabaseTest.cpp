#include "Model/Core/MessageDatabase.h"

#include "Tests/Support/TemporaryDevice.h"

#include <functional>
#include <map>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace fs = std::filesystem;
using testing::ElementsAre;
using testing::Optional;

namespace {

constexpr const char* folder = "/var/mobile/Library/SMS";

/// A connection of somebody else to a database of the host.
class Writer {
  public:
    explicit Writer(const fs::path& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &_database), SQLITE_OK);
        sqlite3_db_config(_database, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
    }
    Writer(const Writer&) = delete;
    Writer& operator=(const Writer&) = delete;
    ~Writer() { sqlite3_close(_database); }

    void execute(const std::string& statements) const {
        char* message = nullptr;
        EXPECT_EQ(sqlite3_exec(_database, statements.c_str(), nullptr, nullptr, &message), SQLITE_OK)
            << (message != nullptr ? message : "");
        sqlite3_free(message);
    }
    void createTable(const std::string& table = "attachment") const {
        execute("create table " + table + " (a, b, c, d, path text, f)");
    }
    void addAttachment(const std::string& path, const std::string& table = "attachment") const {
        execute("insert into " + table + " (path) values ('" + path + "')");
    }

  private:
    sqlite3* _database = nullptr;
};

class MessageDatabaseTest : public testing::Test {
  protected:
    MessageDatabaseTest() { fs::create_directories(temporary.hostPath(folder)); }

    using Folders = std::optional<std::vector<std::string>>;
    /// Names, times and contents of all that is beside the database.
    using Snapshot = std::map<std::string, std::pair<fs::file_time_type, std::string>>;

    [[nodiscard]] fs::path database() const { return temporary.hostPath(MessageDatabase::path); }

    [[nodiscard]] Snapshot snapshot() const {
        Snapshot snapshot;
        for (const auto& entry : fs::directory_iterator(temporary.hostPath(folder))) {
            const std::string name = entry.path().filename();
            snapshot[name] = {entry.last_write_time(), temporary.contents(std::string(folder) + "/" + name)};
        }
        return snapshot;
    }

    /// Reads the database, and makes sure that nothing has changed beside it.
    Folders read(std::string_view table = "attachment") {
        const auto before = snapshot();
        auto folders = MessageDatabase(temporary.device().fileManager(), table).attachmentFolders();
        EXPECT_EQ(before, snapshot());
        return folders;
    }

    /// Copies a database with its companions into the tree, as a dump of a device would.
    void takeCopy(const fs::path& from) const {
        for (const auto* companion : {"", "-wal", "-journal"}) {
            if (fs::exists(from.string() + companion)) {
                fs::copy_file(from.string() + companion, database().string() + companion);
            }
        }
    }

    TemporaryDevice temporary;
};

TEST_F(MessageDatabaseTest, GivesFoldersRelativeToTheHome) {
    Writer writer(database());
    writer.createTable();
    EXPECT_THAT(read(), Optional(testing::IsEmpty()));
    for (const auto* path : {"~/Library/SMS/Attachments/aa/01/X/a.jpg", "/var/mobile/Library/SMS/Parts/b.jpg",
                             "/private/var/mobile/L/c/d.jpg/", "~/Library/SMS/Attachments/aa/01/X/b.jpg",
                             "/elsewhere/e//f", "/top", "bare", "~/~/g/h"}) {
        writer.addAttachment(path);
    }
    writer.execute("insert into attachment (f) values (1)");
    EXPECT_THAT(read(),
                Optional(ElementsAre("Library/SMS/Attachments/aa/01/X", "Library/SMS/Parts", "L/c",
                                     "Library/SMS/Attachments/aa/01/X", "/elsewhere/e", "/", "", "~/g")));
    EXPECT_EQ(read("madrid_attachment"), std::nullopt);
}

TEST_F(MessageDatabaseTest, SeesWhatIsInTheWriteAheadLogAlone) {
    const Writer writer(database());
    writer.execute("pragma journal_mode = wal");
    writer.createTable();
    writer.execute("pragma wal_checkpoint(truncate)");
    writer.addAttachment("~/in log/x");
    ASSERT_GT(fs::file_size(database().string() + "-wal"), 0);
    EXPECT_THAT(read(), Optional(ElementsAre("in log")));
    // Uncommitted rows are none, and nobody's lock is waited for.
    writer.execute("begin immediate");
    writer.addAttachment("~/uncommitted/x");
    EXPECT_THAT(read(), Optional(ElementsAre("in log")));
}

TEST_F(MessageDatabaseTest, ReadsADumpWithoutCompanions) {
    {
        const Writer writer(temporary.folder() / "origin.db");
        writer.execute("pragma journal_mode = wal");
        writer.createTable();
        writer.execute("pragma wal_checkpoint(truncate)");
        writer.addAttachment("~/in log/x");
        takeCopy(temporary.folder() / "origin.db");
    }
    EXPECT_THAT(read(), Optional(ElementsAre("in log")));
    // With the log gone, the database alone still says that it has one.
    fs::remove(database().string() + "-wal");
    EXPECT_THAT(read(), Optional(testing::IsEmpty()));
}

TEST_F(MessageDatabaseTest, ReadsALockedDatabase) {
    Writer writer(database());
    writer.createTable();
    writer.addAttachment("~/a/b");
    writer.execute("begin exclusive");
    EXPECT_THAT(read(), Optional(ElementsAre("a")));
}

TEST_F(MessageDatabaseTest, LeavesARollbackToOthers) {
    {
        const Writer writer(temporary.folder() / "origin.db");
        writer.createTable();
        writer.addAttachment("~/a/b");
        // A cache of one page writes into the database before the transaction's end.
        writer.execute("pragma cache_size = 1; begin; delete from attachment;"
                       "create table more as with recursive n(i) as (select 1 union all select i + 1 from n"
                       " where i < 5000) select i, randomblob(100) as data from n");
        takeCopy(temporary.folder() / "origin.db");
    }
    ASSERT_GT(fs::file_size(database().string() + "-journal"), 512);
    EXPECT_EQ(read(), std::nullopt);
    // The same database can be read once the rollback is done.
    Writer(database()).execute("select * from attachment");
    EXPECT_THAT(read(), Optional(ElementsAre("a")));
}

TEST_F(MessageDatabaseTest, GivesNoneForWhatItCannotReadAsAWhole) {
    const auto longPath = "~/" + std::string(3000, 'x') + "/y";
    const std::map<std::string, std::function<void()>> cases = {
        {"no file", [] {}},
        {"an empty file", [&] { temporary.addFile(MessageDatabase::path); }},
        {"other content", [&] { temporary.addFile(MessageDatabase::path, std::string(5000, 'x')); }},
        {"a folder", [&] { fs::create_directory(database()); }},
        {"a link out of the tree",
         [&] {
             Writer(temporary.folder() / "out.db").createTable();
             fs::create_symlink(temporary.folder() / "out.db", database());
         }},
        {"too few columns", [&] { Writer(database()).execute("create table attachment (a, b, c, path)"); }},
        {"a view",
         [&] { Writer(database()).execute("create view attachment as select 1, 2, 3, 4, '~/a/b' as path"); }},
        {"a truncated database",
         [&] {
             Writer writer(database());
             writer.createTable();
             for (int row = 0; row < 20; ++row) {
                 writer.addAttachment(longPath);
             }
             fs::resize_file(database(), 16384);
         }},
        {"a broken page",
         [&] {
             Writer writer(database());
             writer.createTable();
             for (int row = 0; row < 20; ++row) {
                 writer.addAttachment(longPath);
             }
             // The pages of the last rows.
             const auto size = fs::file_size(database());
             fs::resize_file(database(), size - 16384);
             fs::resize_file(database(), size);
         }},
    };
    for (const auto& [what, prepare] : cases) {
        SCOPED_TRACE(what);
        for (const auto& entry : fs::directory_iterator(temporary.hostPath(folder))) {
            fs::remove_all(entry);
        }
        prepare();
        const auto before = fs::is_regular_file(fs::symlink_status(database())) ? snapshot() : Snapshot{};
        EXPECT_EQ(MessageDatabase(temporary.device().fileManager(), "attachment").attachmentFolders(),
                  std::nullopt);
        if (!before.empty()) {
            EXPECT_EQ(before, snapshot());
        }
    }
}

} // namespace

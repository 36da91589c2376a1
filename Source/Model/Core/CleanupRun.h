#pragma once

#include "Model/Core/CleanupAction.h"
#include "Model/Core/FoundPaths.h"
#include "Model/Core/OZCoreMode.h"
#include "Model/Core/OnlyFiles.h"
#include "Model/Core/StayedItems.h"
#include "Model/Core/TreeView.h"
#include "Platform/Device/DeviceNames.h"
#include "Platform/Files/FileManager.h"

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

namespace platform {
class BackgroundWork;
class Device;
} // namespace platform
class ItemLooks;
class RunRecord;
class SizeSum;
struct ItemLook;

/// One run over a device: the primitives, which alone know the mode, act on the tree, count and log. Steps
/// name things and call them, and look at the tree through `tree()`. What cannot be reached is passed over;
/// it is kept in the record, as is what could not be done.
class CleanupRun {
  public:
    using Paths = std::vector<std::string>;

    static constexpr std::string_view backupExtension = devicename::backupExtension;

    /// The device and the record outlive the run.
    CleanupRun(platform::Device& device, RunRecord& record, OZCoreMode mode);
    CleanupRun(const CleanupRun&) = delete;
    CleanupRun& operator=(const CleanupRun&) = delete;

    // Looking.
    [[nodiscard]] TreeView& tree() { return _tree; }
    /// The paths that the device's "find" prints for these arguments, the first of which is the folder to
    /// search. None without the tool.
    FoundPaths find(const std::vector<std::string>& arguments);
    /// The same over several folders with one run of the tool; those that are not there are left out.
    std::vector<FoundPaths> find(const Paths& folders, const std::vector<std::string>& predicates);
    /// The patterns of folders that a search is to pass by. An analysis passes by `countedFolders`, too: it
    /// has counted what it would have removed from them, and would find it there again.
    [[nodiscard]] std::vector<std::string>
    patternsToPrune(std::vector<std::string> patterns,
                    std::span<const std::string_view> countedFolders) const;
    /// The folders of the attachments that the message database knows, relative to the user's home, one for
    /// each attachment. None if the database cannot be read as a whole; an empty list means that it knows
    /// none.
    std::optional<Paths> attachmentPathsFromSMSDatabase();

    // Named items.
    /// Regular files only.
    void del(const Paths& paths);
    void del(const FoundPaths& found);
    /// Regular files and whole folders; a folder counts as one item, and each entry below it as one more.
    void delr(const Paths& paths);
    void delr(const FoundPaths& found);
    /// Whatever is named, for long lists of paths known to be wanted. Counts what really went.
    void quickDel(const Paths& paths);
    void quickDel(const FoundPaths& found);
    /// `quickDel` of what `find` gives. An analysis looks at what is found while the search goes on.
    void quickDelFound(const std::vector<std::string>& arguments);
    /// Folders that count as one item each.
    void quickDelLang(const Paths& paths);
    void quickDelLang(const FoundPaths& found);
    /// Links alone, which go uncounted in a cleanup and stay in any other run: what counts is what they lead
    /// to.
    void removeLinks(const FoundPaths& links);
    /// Whether an error says that nothing can be there, rather than that nobody may look.
    [[nodiscard]] static bool leadsNowhere(const std::error_code& reason);
    /// A path that a run would act on if it could be reached; nothing to note where it leads nowhere.
    void noteUnreached(std::string_view path, const std::error_code& reason);
    /// Backups get their old names again, in place of whatever has them by now.
    void restore(const FoundPaths& backups);

    // What is in a folder.
    /// A folder's direct entries; the folder stays.
    void delFolderContents(std::string_view folder, OnlyFiles onlyFiles);
    /// Every regular file below a folder; its folders stay, emptied.
    void delFilesInFolderRecursive(std::string_view folder);
    /// The same without the files whose name matches one of the patterns.
    void delFilesExcludingPatternsRecursive(std::string_view folder, const NamePatterns& patterns);
    /// Whether a path's last component is one of the exact matches, or begins with, contains or ends in a
    /// pattern.
    [[nodiscard]] static bool matchDelExcludingPatterns(std::string_view path, const NamePatterns& patterns);
    /// Direct entries whose name has all the given patterns; an absent one is not asked for.
    void delWithPattern(std::string_view folder, std::optional<std::string_view> startPattern,
                        std::optional<std::string_view> middlePattern,
                        std::optional<std::string_view> endPattern, OnlyFiles onlyFiles);
    /// Direct entries whose name has any of the patterns. End patterns are tried at the name's beginning,
    /// too.
    void delWithPatterns(std::string_view folder, const NamePatterns& patterns, OnlyFiles onlyFiles);
    /// Folders below a folder that hold no file at any depth.
    void delEmptyDirs(std::string_view folder);

    // Tables.
    /// The rows that count on this generation of the platform, in their order.
    void perform(std::span<const CleanupAction> actions);
    void performInDirectory(const CleanupGroup& group);
    /// Goes to a directory and logs that; false, and nothing logged, if there is none.
    bool changeDir(std::string_view path);

    // What is no item. Nothing of it is counted.
    /// Replaces a file's content in any mode, as FileManager::writeContents does.
    void writeContents(std::string_view path, std::string_view bytes,
                       const platform::FileOwnership& ownership);
    /// Ends the programs of these names in any mode.
    void quit(const std::vector<std::string>& programs);
    /// Ends the program whose files are about to go; an analysis leaves it alone.
    void quitUnlessAnalyzing(const std::string& program);
    /// Work on what no restore brings back: a cleanup alone does it.
    void onlyWhenCleaning(const std::function<void()>& work);
    /// Has the device's "apt-get" carry out a command, or, in any run but a cleanup, show its plan of it.
    /// Gives what it prints; none without the tool.
    std::optional<std::string> aptGet(std::string_view command);
    /// Has the device's "dpkg" work on its database, in a cleanup alone.
    void dpkg(std::vector<std::string> arguments);
    /// What "dpkg" prints of all its packages; empty without the tool.
    [[nodiscard]] std::string packageList();

    // What a run says.
    void log(std::string_view text);
    /// For whoever sits at a terminal; nothing unless command-line output is enabled.
    void print(std::string_view text) const;
    void printAndLog(std::string_view text);

  private:
    /// Is given each name and the folder that it was found in.
    using FoundHandler = std::function<void(FoundPaths& home, std::string_view name)>;
    /// Searches the folders, which it gives, without the names.
    std::vector<FoundPaths> search(const Paths& folders, const std::vector<std::string>& predicates,
                                   const FoundHandler& handler);

    // What the primitives do with one item. The path is the item's as it was named, for the log.
    template <class Work>
    void forEachItem(const Paths& paths, Work work);
    template <class Work>
    void forEachItem(const FoundPaths& found, Work work);
    void delItem(const platform::Item& item, std::string_view path);
    template <class Work>
    auto whereFound(Work work);
    template <class List>
    void delrEach(const List& list);
    /// A folder is left to `removals` where there are some.
    void delrItem(const platform::Item& item, std::string_view path, SizeSum& sizes,
                  platform::BackgroundWork* removals = nullptr);
    /// Entries of one folder.
    void delrEntries(const FoundPaths& entries);
    void quickDelItem(const platform::Item& item, std::string_view path);
    void quickDelLangItem(const platform::Result<platform::Item>& item, std::string_view path);
    void restoreItem(const platform::Item& backup, std::string_view path);
    void countEntriesBelow(const platform::Item& folder, std::string_view path, SizeSum& sizes);
    /// Counts the items that an analysis wants: all that exist, where no condition is given.
    void countLooks(ItemLooks& looks, const std::function<bool(const ItemLook& look)>& isWanted = {});
    /// `sizes` are those that are still being summed, if any.
    [[nodiscard]] platform::Result<void> moveToBackup(const platform::Item& item, std::string_view path,
                                                      platform::FileType type, SizeSum* sizes = nullptr);
    void delEntriesWhere(std::string_view folder, OnlyFiles onlyFiles,
                         const std::function<bool(std::string_view name)>& isWanted);
    void count(std::string_view path);
    void addSize(uint64_t bytes);

    // What could not be done is kept for the end of the run. The first two may be called on any thread.
    platform::Result<void> removeItem(const platform::Item& item, std::string_view path, StayedItem kind);
    void noteStayed(std::string_view path, const std::error_code& reason, StayedItem kind);
    void noteStayedBelow(const platform::Item& folder, std::string_view path, const std::error_code& reason);

    platform::Device& _device;
    RunRecord& _record;
    const OZCoreMode _mode;
    platform::FileManager _files;
    TreeView _tree;
};

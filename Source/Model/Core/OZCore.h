#pragma once

#include "Model/Core/CleanupAction.h"
#include "Model/Core/CleanupChoices.h"
#include "Model/Core/CustomFileRecord.h"
#include "Model/Core/OZCleanupLogger.h"
#include "Model/Core/OnlyFiles.h"
#include "Model/Core/StayedItems.h"
#include "Platform/FileManager.h"
#include "Platform/PropertyList.h"

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
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
enum class OZAction : unsigned;
struct CleanupStepDescription;
class ItemLooks;
class OZApp;
class OZAppList;
class OZLocalizationManager;
class SizeSum;
struct ItemLook;

/// What a run does with the items that its steps name.
enum class OZCoreMode : unsigned long {
    /// Items are deleted.
    clean = 0,
    /// Nothing changes; sizes are summed.
    analyze = 1,
    /// Items move to a backup name in their folder; sizes are summed.
    test = 2,
};

/// Whether a run only looks.
enum class Analyze : bool { no, yes };

/// What becomes of the backups of test runs.
enum class BackupAction : bool { remove, restore };

/// The cleanup engine. One long-lived object serves all front ends; one run at a time occupies the calling
/// thread, and the device's current directory belongs to it. While it runs, another thread may poll
/// `isRunning`, `cleanupStepCount` and `fileCount`.
class OZCore : public platform::FileManager {
  public:
    using Paths = std::vector<std::string>;

    /// The collaborators outlive the engine.
    OZCore(platform::Device& device, const OZAppList& appList,
           const OZLocalizationManager& localizationManager);
    ~OZCore();

    static constexpr std::string_view backupExtension = ".OzvarineBackup";

    /// What the user chose; whoever shows or changes choices asks them alone.
    [[nodiscard]] CleanupChoices& choices() { return _choices; }
    [[nodiscard]] const CleanupChoices& choices() const { return _choices; }

    [[nodiscard]] OZCleanupLogger* cleanupLogger() const { return _cleanupLogger.get(); }
    void setCleanupLogger(std::unique_ptr<OZCleanupLogger> logger) { _cleanupLogger = std::move(logger); }
    /// Whether the steps print their headings; one switch for all engines of the process.
    [[nodiscard]] bool commandLineOutputEnabled() const { return _commandLineOutputEnabled; }
    void setCommandLineOutputEnabled(bool enabled) { _commandLineOutputEnabled = enabled; }

    // A run and what it tells.
    /// Walks the steps that the settings (the engine's own, if none are given) switch on. Returns when it is
    /// over.
    void clean(const platform::Dictionary* settings, Analyze analyze);
    /// Removes payload that the device or its user has no need of: images, artwork, languages, keyboards or
    /// voices. An action of another kind leaves the run open; nobody may ask for one.
    void remove(OZAction action, Analyze analyze);
    /// Restores all backups of test runs, or removes them for good. What stands in a backup's old place gives
    /// way to it.
    void backup(BackupAction action);
    [[nodiscard]] bool isRunning() const { return _isRunning; }
    [[nodiscard]] uint64_t fileCount() const { return _fileCount; }
    [[nodiscard]] uint64_t cleanupStepCount() const { return _cleanupStepCount; }
    /// Bytes: what the file systems gained in a cleanup, what the items' sizes add up to in the other modes.
    [[nodiscard]] uint64_t freedSpace() const { return _freedSpace; }
    /// The same for people; none before the end of a run.
    [[nodiscard]] const std::optional<std::string>& freedSpaceString() const { return _freedSpaceString; }
    /// What the last cleanup, test run, removal or restore tried and could not do.
    [[nodiscard]] const StayedItems& stayedItems() const { return _stayedItems; }
    /// Back to the state before a run: counters at 0, current directory "/", log closed.
    void resetState();
    /// Completes the counters of a run and gives its summary; with the size when asked for it.
    std::string processFreedSpaceAndReturnResultsString(bool withSize);

    // Primitives. Steps name things and call them; only they look at the mode, count, log and act. What
    // cannot be read is skipped without a word.
    /// Regular files only.
    void del(const Paths& paths);
    void del(const platform::FoundPaths& found);
    /// Regular files and whole folders; a folder counts as one item, and each entry below it as one more.
    void delr(const Paths& paths);
    void delr(const platform::FoundPaths& found);
    /// Whatever is named, for long lists of paths known to be wanted. Counts what really went.
    void quickDel(const Paths& paths);
    void quickDel(const platform::FoundPaths& found);
    /// Folders that count as one item each.
    void quickDelLang(const Paths& paths);
    void quickDelLang(const platform::FoundPaths& found);
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
    /// Goes to a directory and logs that; false, and nothing logged, if there is none.
    bool changeDir(std::string_view path);
    /// Folders below a folder that hold no file at any depth.
    void delEmptyDirs(std::string_view folder);
    /// The paths that the device's "find" prints for these arguments, the first of which is the folder to
    /// search. None without the tool.
    platform::FoundPaths find(const std::vector<std::string>& arguments);
    /// The same over several folders with one run of the tool; those that are not there are left out.
    std::vector<platform::FoundPaths> find(const Paths& folders, const std::vector<std::string>& predicates);
    /// `quickDel` of what `find` gives. An analysis looks at what is found while the search goes on.
    void quickDelFound(const std::vector<std::string>& arguments);

    // What is no fixed step.
    /// Removes what a record of the user names. A blank path names nothing.
    void cleanCustomFile(const CustomFileRecord& record);
    /// What a well-known application leaves behind; nothing for one that is unknown or not installed. The
    /// current directory stays where the rule for the application went.
    void cleanKnownApp(std::string_view identifier);

    /// The folders of the attachments that the message database knows, relative to the user's home, one for
    /// each attachment. None if the database cannot be read as a whole; an empty list means that it knows
    /// none.
    std::optional<Paths> attachmentPathsFromSMSDatabase();

  private:
    struct Run;

    /// Is given each name and the folder that it was found in.
    using FoundHandler = std::function<void(platform::FoundPaths& home, std::string_view name)>;
    /// Searches the folders, which it gives, without the names.
    std::vector<platform::FoundPaths> search(const Paths& folders, const std::vector<std::string>& predicates,
                                             const FoundHandler& handler);

    // The frame of every run.
    [[nodiscard]] OZCoreMode modeFor(Analyze analyze) const;
    /// Begins a new log. Gives the free bytes of the moment, 0 in a mode that frees none.
    uint64_t beginRun(OZCoreMode mode);
    uint64_t beginRun(OZCoreMode mode, std::string_view title, platform::FileWriting logWriting);
    /// Completes counters and log; tells no size where no start is given.
    void endRun(std::optional<uint64_t> freeAtStart);

    void runStep(const CleanupStepDescription& step, const Run& run);
    /// For whoever sits at a terminal; nothing unless command-line output is enabled.
    void print(std::string_view text) const;
    void log(std::string_view text);
    void printAndLog(std::string_view text);
    void perform(std::span<const CleanupAction> actions);
    void performInDirectory(const CleanupGroup& group);

    // The sections of a run, in its order.
    void cleanAttachments(const Run& run);
    void cleanSafari(const Run& run);
    void cleanApplications(const Run& run);
    void cleanOTAUpdates(const Run& run);
    void cleanBatteryData(const Run& run);
    void cleanCydia(const Run& run);
    void cleanCydiaSources(const Run& run);
    void cleanDependencies(const Run& run);
    void cleanLogFiles(const Run& run);
    void cleanCacheFiles(const Run& run);
    void cleanTempFiles(const Run& run);
    void cleanFileTypes(const Run& run);
    void cleanCustomFiles(const Run& run);

    // Parts of sections.
    void cleanUnknownAttachments();
    void logNameOfApplication(const OZApp& app, std::string_view ending);
    void quitApplication(const OZApp& app, const Run& run);
    void cleanSystemApplications(const Run& run);
    void cleanAuxoSnapshots();
    void purgeRemovedPackages();
    void cleanLinkedCrashReports();
    [[nodiscard]] std::vector<std::string> prunePatterns(const Run& run) const;

    void cleanInsideCustomFolder(const CustomFileRecord& record, OnlyFiles onlyFiles);

    // Removal actions.
    /// False for an action that is none of them.
    bool performRemoval(OZAction action);
    [[nodiscard]] Paths bundlePathsForImageRemoval() const;
    std::vector<platform::FoundPaths> findImages(std::string_view regex);
    void quickDelAll(const std::vector<platform::FoundPaths>& found);
    void removeImagesOfScale(unsigned target);
    void removeiPadImages();
    void remove4InchImages();
    void removeiTunesArtwork();
    void removeLanguages();
    [[nodiscard]] std::string prunePatternForLanguages() const;
    std::vector<platform::FoundPaths> findLanguageData(const std::vector<std::string>& codes);
    void removeOwnLanguages();
    void removeKeyboards();
    void removeVoiceControlLanguages();
    /// Whether the language that the device speaks can be spared; tells a person if not.
    [[nodiscard]] bool knowsLanguageInUse() const;
    void quickDelLangAll(const std::vector<platform::FoundPaths>& found);
    void restore(const platform::FoundPaths& backups);
    void restoreItem(const platform::Item& backup, std::string_view path);

    // What the primitives do with one item. The path is the item's as it was named, for the log.
    void delItem(const platform::Item& item, std::string_view path);
    template <class List>
    void delrEach(const List& list);
    /// A folder is left to `removals` where there are some.
    void delrItem(const platform::Item& item, std::string_view path, SizeSum& sizes,
                  platform::BackgroundWork* removals = nullptr);
    void quickDelItem(const platform::Item& item, std::string_view path);
    void quickDelLangItem(const platform::Result<platform::Item>& item, std::string_view path);
    void countEntriesBelow(const platform::Item& folder, std::string_view path, SizeSum& sizes);
    /// Counts the items that an analysis wants: all that exist, where no condition is given.
    void countLooks(ItemLooks& looks, const std::function<bool(const ItemLook& look)>& isWanted = {});
    /// `sizes` are those that are still being summed, if any.
    [[nodiscard]] platform::Result<void> moveToBackup(const platform::Item& item, std::string_view path,
                                                      platform::FileType type, SizeSum* sizes = nullptr);
    // What could not be done is kept for the end of the run. The first two may be called on any thread.
    platform::Result<void> removeItem(const platform::Item& item, std::string_view path, StayedItem kind);
    void noteStayed(std::string_view path, const std::error_code& reason, StayedItem kind);
    void noteStayedBelow(const platform::Item& folder, std::string_view path, const std::error_code& reason);
    /// An item that a search has found and that cannot be reached.
    void noteUnreached(std::string_view path, const std::error_code& reason);
    void tellWhatStayed();
    void delEntriesWhere(std::string_view folder, OnlyFiles onlyFiles,
                         const std::function<bool(std::string_view name)>& isWanted);
    void count(std::string_view path);
    void addSize(uint64_t bytes);

    /// Whether it is known which applications there are, and so which ones are to be spared.
    [[nodiscard]] bool knowsApplications() const;

    platform::Device& _device;

    OZCoreMode _mode = OZCoreMode::clean;
    std::atomic<uint64_t> _fileCount = 0;
    std::atomic<uint64_t> _freedSpace = 0;
    std::atomic<bool> _isRunning = false;
    const OZAppList& _appList;
    const OZLocalizationManager& _localizationManager;
    CleanupChoices _choices;
    std::unique_ptr<OZCleanupLogger> _cleanupLogger;
    std::atomic<uint64_t> _cleanupStepCount = 0;
    std::optional<std::string> _freedSpaceString;
    StayedItems _stayedItems;

    static inline bool _commandLineOutputEnabled = false;
};

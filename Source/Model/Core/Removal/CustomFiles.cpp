#include "Model/Core/Removal/CustomFiles.h"

#include "Categories/Text.h"
#include "Model/Core/CleanupRun.h"
#include "Model/Core/CustomFileRecord.h"

#include <string_view>

// The files and folders that the user has added to a cleanup.

namespace {

bool isPattern(const std::optional<std::string>& pattern) {
    return pattern && !pattern->empty();
}

// A backslash takes a character's meaning away in a regular expression and in a shell pattern alike.
std::string escapedPatternForString(std::string_view text) {
    std::string escaped;
    for (const char character : text) {
        if (std::string_view("*?+[(){}^$|\\./").contains(character)) {
            escaped += '\\';
        }
        escaped += character;
    }
    return escaped;
}

// Names that a deep search takes, as a shell pattern.
std::string globFor(const CustomFileRecord& record) {
    std::string glob;
    if (record.startPattern) {
        glob += escapedPatternForString(*record.startPattern);
    }
    glob += '*';
    if (record.middlePattern) {
        glob += escapedPatternForString(*record.middlePattern) + '*';
    }
    if (record.endPattern) {
        glob += escapedPatternForString(*record.endPattern);
    }
    return glob;
}

void cleanInsideCustomFolder(CleanupRun& run, const CustomFileRecord& record, OnlyFiles onlyFiles) {
    const bool hasPattern =
        isPattern(record.startPattern) || isPattern(record.middlePattern) || isPattern(record.endPattern);
    if (!hasPattern && record.recursive && onlyFiles == OnlyFiles::yes) {
        run.delFilesInFolderRecursive(*record.filePath);
    } else if (!hasPattern) {
        run.delFolderContents(*record.filePath, onlyFiles);
    } else if (!record.recursive) {
        run.delWithPattern(*record.filePath, record.startPattern, record.middlePattern, record.endPattern,
                           onlyFiles);
    } else {
        std::vector<std::string> arguments = {*record.filePath, "-mindepth",     "1",
                                              "-name",          globFor(record), "-prune"};
        if (onlyFiles == OnlyFiles::yes) {
            arguments.insert(arguments.end(), {"-type", "f"});
        }
        run.delr(run.find(arguments));
    }
}

} // namespace

void cleanCustomFile(CleanupRun& run, const CustomFileRecord& record) {
    if (!record.filePath || !isNotEmptyOrWhitespace(*record.filePath)) {
        return;
    }
    if (record.fileType != CustomFileRecord::directoryType) {
        run.del(CleanupRun::Paths{*record.filePath});
        return;
    }
    switch (record.customFolderSetting) {
    case OZCustomFolderSetting::whole:
        run.delr(CleanupRun::Paths{*record.filePath});
        break;
    case OZCustomFolderSetting::filesAndSubfolders:
        cleanInsideCustomFolder(run, record, OnlyFiles::no);
        break;
    case OZCustomFolderSetting::onlyFiles:
        cleanInsideCustomFolder(run, record, OnlyFiles::yes);
        break;
    case OZCustomFolderSetting::unknown:
        break;
    }
}

// What goes with the languages that the user has no need of.
#include "Categories/Text.h"
#include "Model/Core/LanguageTable.h"
#include "Model/Core/Removal/RemovalActions.h"
#include "Model/Core/RunContext.h"
#include "Platform/Device/DeviceNames.h"
#include "Platform/Device/Generations.h"

#include <algorithm>
#include <array>
#include <functional>

#include <fmt/format.h>
#include <fmt/ranges.h>

using languagetable::isCode;

namespace {

constexpr std::string_view languageFileExtension = ".strings";
constexpr double sinceCarrierBundles = ios::v7_0;

const std::string sharedData = "/usr/share/";
constexpr std::array<std::string_view, 2> languageDataFolders = {"mecabra", "tokenizer"};

const std::string textInput = "/System/Library/TextInput/";
const std::string linguisticData = "/System/Library/LinguisticData/";
const std::string voiceServices = "/System/Library/PrivateFrameworks/VoiceServices.framework/";
const std::string workoutVoices = "/System/Library/PrivateFrameworks/SportsWorkout.framework/voices/";

std::string upperCase(std::string code) {
    std::ranges::transform(code, code.begin(), [](char letter) {
        return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
    });
    return code;
}

// Chinese has a file for each script and region, but is one language.
std::string languageOfFile(std::string_view fileName) {
    constexpr std::string_view chinese = "Chinese";
    fileName.remove_suffix(languageFileExtension.size());
    return std::string(fileName.starts_with(chinese) ? chinese : fileName);
}

// What the search does not enter: carriers' settings, and the bundles and containers of excluded
// applications.
std::string prunePatternForLanguages(const RunContext& context) {
    std::string pattern;
    if (context.facts.foundationVersion >= sinceCarrierBundles) {
        pattern = "^/System/Library/Carrier Bundles$";
    }
    std::vector<std::string> names;
    for (const auto& path :
         context.appList.pathsForExcludedApps(OZExclusionMask::languages, OZAppTypeMask::all)) {
        names.push_back(stringByEscapingForRegex(platform::lastPathComponent(path)));
    }
    if (!names.empty()) {
        pattern += fmt::format("{}^.*/({})$", pattern.empty() ? "" : "|", fmt::join(names, "|"));
    }
    return pattern;
}

// With no code at all, the expression fits all folders, the ones that are searched as well. Those are then
// named from their own parent, like any other item that is to go.
std::vector<FoundPaths> findLanguageData(CleanupRun& run, const std::vector<std::string>& codes) {
    CleanupRun::Paths folders;
    for (const auto name : languageDataFolders) {
        folders.push_back(sharedData + std::string(name) + "/");
    }
    auto found = run.find(folders, {"-maxdepth", "1", "-regextype", "posix-extended", "-regex",
                                    fmt::format("^.*({})$", fmt::join(codes, "|")), "-type", "d", "-print"});
    if (!codes.empty()) {
        return found;
    }
    const auto parent = run.tree().directEntries(sharedData);
    if (!parent) {
        return found;
    }
    for (auto& paths : found) {
        const auto folder = paths.prefix.substr(sharedData.size());
        for (auto& name : paths.names) {
            name.insert(0, folder);
        }
        paths.names.insert(paths.names.begin(), folder.substr(0, folder.size() - 1));
        paths = parent->withNames(std::move(paths.names));
    }
    return found;
}

// The files of a program that is installed on the device. Those of the running one lie on the host.
void removeOwnLanguages(const RunContext& context) {
    const auto names = context.run.tree().contentsOfDirectoryAtPath(devicename::programBundle);
    if (!names) {
        return;
    }
    CleanupRun::Paths paths;
    for (const auto& name : *names) {
        if (name.ends_with(languageFileExtension) &&
            context.choices.languagesToRemove().contains(languageOfFile(name))) {
            paths.push_back(platform::joinPath(devicename::programBundle, name));
        }
    }
    context.run.del(paths);
}

void quickDelLangAll(CleanupRun& run, const std::vector<FoundPaths>& found) {
    for (const auto& paths : found) {
        run.quickDelLang(paths);
    }
}

} // namespace

void removeLanguages(const RunContext& context) {
    auto components = context.choices.languageRegexComponentsShort(false);
    // Without an inventory nobody knows which applications are to be spared.
    if (components.empty() || !context.knowsApplications()) {
        return;
    }
    std::vector<std::string> arguments = {"/", "-regextype", "posix-extended"};
    if (const auto prunePattern = prunePatternForLanguages(context); !prunePattern.empty()) {
        arguments.insert(arguments.end(), {"-regex", prunePattern, "-prune", "-o"});
    }
    arguments.insert(
        arguments.end(),
        {"-regex", fmt::format(R"(^.*({})\.lproj$)", fmt::join(components, "|")), "-type", "d", "-print"});
    std::vector<FoundPaths> found = {context.run.find(arguments)};
    std::erase_if(components, std::not_fn(isCode));
    std::ranges::move(findLanguageData(context.run, components), std::back_inserter(found));
    quickDelLangAll(context.run, found);
    if (!context.appList.isAppExcluded(devicename::programIdentifier, OZExclusionMask::languages)) {
        removeOwnLanguages(context);
    }
}

void removeKeyboards(const RunContext& context) {
    const auto components = context.choices.languageRegexComponentsShort(false);
    const auto codes = context.choices.languageRegexComponentsShort(true);
    const auto search = [&](const std::string& folder, const std::string& regex) {
        return context.run.find({folder, "-maxdepth", "1", "-regextype", "posix-extended", "-regex", regex,
                                 "-type", "d", "-print"});
    };
    std::vector<FoundPaths> found;
    if (!components.empty()) {
        found.push_back(
            search(textInput, fmt::format(R"(^.*TextInput_({})\.bundle$)", fmt::join(components, "|"))));
    }
    if (!components.empty() && !codes.empty()) {
        found.push_back(
            search(linguisticData, fmt::format(R"(^.*({}|RequiredAssets_({})\.bundle)$)",
                                               fmt::join(codes, "|"), fmt::join(components, "|"))));
    }
    quickDelLangAll(context.run, found);
}

void removeVoiceControlLanguages(const RunContext& context) {
    auto codes = context.choices.languageRegexComponentsShort(true);
    if (codes.empty()) {
        return;
    }
    context.run.quickDelLang(context.run.find(
        {voiceServices + "TTSResources/", "-maxdepth", "1", "-regextype", "posix-extended", "-regex",
         fmt::format("^.*({})-..$", fmt::join(codes, "|")), "-type", "d", "-print"}));
    context.run.quickDel(context.run.find(
        {voiceServices + "RecognitionResources/Express/", "-regextype", "posix-extended", "-regex",
         fmt::format(R"(^.*({})-..\..*\.bin$)", fmt::join(codes, "|")), "-type", "f", "-print"}));
    std::ranges::transform(codes, codes.begin(), upperCase);
    context.run.quickDelLang(context.run.find(
        {workoutVoices, "-mindepth", "2", "-maxdepth", "2", "-regextype", "posix-extended", "-regex",
         fmt::format("^.*({})..$", fmt::join(codes, "|")), "-type", "d", "-print"}));
}

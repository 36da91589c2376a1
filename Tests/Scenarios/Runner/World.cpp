#include "Tests/Scenarios/Runner/World.h"

#include "Model/Apps/OZAppList.h"
#include "Platform/Device/DeviceFacts.h"
#include "Platform/Formats/PropertyList.h"
#include "Tests/Scenarios/Runner/Effects.h"
#include "Tests/Support/Host.h"

#include <sqlite3.h>

namespace scenarios {

namespace fs = std::filesystem;

namespace {

using platform::Dictionary;
using platform::Value;
using tests::TreeSnapshot;

constexpr std::string_view logFolder = "var/mobile/Library/Ozvarine";
constexpr const char* usualContent = "12345";

} // namespace

World::World(Variables loops)
    : variables(std::move(loops))
    , _facts{{"TimeZone", "UTC"}, {"FoundationVersion", 1445.32}, {"Applications", platform::Array{}}} {
    folder.addNotingTool("/usr/bin/killall");
    variables["DEVICE"] = folder.folder().string();
}

World::~World() {
    reopen();
    tests::unmountAll();
}

bool World::takeConditions(std::string_view& line) const {
    bool holds = true;
    const double* version = platform::valueAt<double>(_facts, "FoundationVersion");
    while (line.starts_with('[')) {
        const size_t end = line.find(']');
        Words words = wordsOf(expanded(line.substr(1, end - 1), variables));
        line.remove_prefix(std::min(line.find_first_not_of(' ', end + 1), line.size()));
        const bool negated = words[0] == "not";
        words.erase(words.begin(), words.begin() + (negated ? 1 : 0));
        bool isMet = false;
        if (words[0] == "from" || words[0] == "below") {
            const auto named = platform::systemVersionForProductVersion(words[1]);
            const double bound =
                named && std::stod(words[1]) < 100 ? named->foundationVersion : std::stod(words[1]);
            isMet = ((version == nullptr ? 0 : *version) >= bound) == (words[0] == "from");
        } else {
            isMet = std::ranges::any_of(variables, [&](const auto& loop) {
                return std::ranges::find(words, loop.second) != words.end();
            });
        }
        holds = holds && isMet != negated;
    }
    return holds;
}

Words World::spread(std::string_view word) const {
    Words result = {expanded(word, variables)};
    for (auto loop = _each.rbegin(); loop != _each.rend(); ++loop) {
        Words next;
        for (const auto& text : result) {
            if (expanded(text, {{loop->first, ""}}) == text) {
                next.push_back(text);
                continue;
            }
            for (const auto& value : loop->second) {
                next.push_back(expanded(text, {{loop->first, value}}));
            }
        }
        result = next;
    }
    return result;
}

void World::give(std::string_view line) {
    if (!takeConditions(line)) {
        return;
    }
    const std::string kind = takeWord(line);
    const auto rest = [&] { return expanded(line, variables); };
    if (kind == "let") {
        const std::string name = takeWord(line);
        takeWord(line);
        variables[name] = line;
    } else if (kind == "each") {
        const std::string name = takeWord(line);
        takeWord(line);
        _each.emplace_back(name, wordsOf(rest()));
    } else if (kind == "ios") {
        const auto version = platform::systemVersionForProductVersion(rest());
        _facts["SystemVersion"] = rest();
        _facts["FoundationVersion"] = version.value().foundationVersion;
        _facts["CoreFoundationVersion"] = version.value().coreFoundationVersion;
    } else if (kind == "foundation") {
        _facts["FoundationVersion"] = std::stod(rest());
    } else if (kind == "fact") {
        const std::string name = takeWord(line);
        _facts[name] = valueOf(rest());
    } else if (kind == "no") {
        _facts.erase(rest());
    } else if (kind == "demo") {
        giveDemo(rest().empty() ? "11.1.2" : rest());
    } else if (kind == "app") {
        giveApp(wordsOf(rest()));
    } else if (kind == "takes") {
        const size_t end = std::min(line.find_first_of(" :"), line.size());
        const std::string patterns = tests::replaced(std::string(line.substr(end)), ":", " ");
        _rules.emplace_back(line.substr(0, end), tests::replaced(patterns, "\\n", " "));
    } else if (kind == "gone" && line.starts_with("by ")) {
        giveGoneBy(wordsOf(rest()));
    } else if (kind == "gone" || kind == "kept" || kind == "file") {
        giveItems(line, kind == "gone");
    } else if (kind == "plist" || kind == "bplist") {
        const std::string path = expanded(takeWord(line), variables);
        const auto format =
            kind == "plist" ? platform::PropertyListFormat::xml : platform::PropertyListFormat::binary;
        giveItem(path, platform::serializePropertyList(valueOf(rest()), format), false);
    } else if (kind == "sqlite") {
        const std::string path = expanded(takeWord(line), variables);
        giveItem(path, "", false);
        sqlite3* database = nullptr;
        if (sqlite3_open(folder.hostPath(path).c_str(), &database) != SQLITE_OK ||
            sqlite3_exec(database, rest().c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            throw std::runtime_error(sqlite3_errmsg(database));
        }
        sqlite3_close(database);
    } else if (kind == "tool") {
        const std::string path = expanded(takeWord(line), variables);
        line.empty() ? folder.addNotingTool(path) : folder.addTool(path, rest());
    } else if (kind == "package") {
        givePackage(rest());
    } else if (kind == "host") {
        if (const auto outcome = host(rest()); outcome.status != 0) {
            throw std::runtime_error(outcome.output);
        }
    } else if (kind == "readonly" || kind == "memory") {
        if (!tests::hasOwnMounts()) {
            throw Skipped("needs mounts of its own");
        }
        const fs::path place = folder.hostPath(expanded(takeWord(line), variables));
        fs::create_directories(place);
        kind == "memory" ? tests::mountMemory(place, std::stoull(rest())) : tests::makeReadOnly(place);
    } else if (kind == "needs") {
        if (const auto outcome = host(rest()); outcome.status != 0) {
            throw Skipped("needs " + rest() + "\n" + outcome.output);
        }
    } else if (kind == "bundle" || kind == "container") {
        for (const auto& text : spread(line)) {
            giveBundle(wordsOf(text), kind == "container");
        }
    } else {
        throw std::runtime_error("unknown line: " + kind);
    }
}

void World::giveItems(std::string_view rest, bool isGone) {
    const size_t colon = rest.find(": ");
    const size_t arrow = rest.find(" -> ");
    if (arrow != std::string_view::npos && arrow < colon) {
        for (const auto& path : spread(rest.substr(0, arrow))) {
            folder.addLink(path, expanded(rest.substr(arrow + 4), variables));
            if (isGone) {
                _gone.insert(path.substr(1));
            }
        }
    } else if (colon != std::string_view::npos) {
        for (const auto& path : spread(rest.substr(0, colon))) {
            giveItem(path, unescaped(expanded(rest.substr(colon + 2), variables)), isGone);
        }
    } else {
        // "~9" at the end: so many days old.
        Words words = wordsOf(rest);
        const bool isAged = words.back().starts_with('~');
        const auto age = std::chrono::days(isAged ? std::stoi(words.back().substr(1)) : 0);
        const auto date = fs::file_time_type::clock::now() - age;
        words.resize(words.size() - (isAged ? 1 : 0));
        for (const auto& word : words) {
            for (const auto& path : spread(word)) {
                if (!path.ends_with("/*")) {
                    giveItem(path, usualContent, isGone);
                    isAged ? fs::last_write_time(folder.hostPath(path), date) : void();
                    continue;
                }
                const std::string around = path.substr(1, path.size() - 2);
                for (const auto& entry : fs::directory_iterator(folder.hostPath("/" + around))) {
                    _gone.insert(around + entry.path().filename().string());
                }
            }
        }
    }
}

void World::giveItem(const std::string& path, std::string_view content, bool isGone) {
    if (!path.starts_with('/')) {
        throw std::runtime_error("no path: " + path);
    }
    path.ends_with('/') ? void(fs::create_directories(folder.hostPath(path))) : folder.addFile(path, content);
    if (isGone) {
        _gone.insert(path.substr(1, path.find_last_not_of('/')));
    }
}

// Its dates count back from the day it is made on. Making one takes long, so it is made once a day and build.
void World::giveDemo(const std::string& version) {
    give("host version=" + version +
         R"demo(; bin=$(dirname "$(command -v ozdevice)"); all=$bin/../demo; rm -r Tools
made="$all/$version $(stat -c %Y "$bin/ozdevice") $(date +%F)"
if [ ! -d "$made" ]; then
    mkdir -p "$all" && rm -rf "$all/$version "*
    new=$(mktemp -d) && ozdevice create "$new/d" --ios $version --files 100 && cp -a "$new/d" "$all/$$" || exit
    # Another process may have been quicker.
    mv -T "$all/$$" "$made" || rm -r "$all/$$"
    rm -r "$new"
fi
cp -a "$made/." .)demo");
    _facts = *platform::parsePropertyList(tests::contentOf(folder.folder() / "Device.plist"))
                  .value()
                  .as<Dictionary>();
}

platform::Device& World::device() {
    if (!_device) {
        std::ofstream(folder.folder() / "Device.plist")
            << platform::serializePropertyList(_facts, platform::PropertyListFormat::binary);
        auto opened = platform::Device::open(folder.folder());
        if (!opened) {
            throw std::runtime_error(opened.error());
        }
        _device = std::move(opened.value());
        _device->warnings().setReceiver([this](const auto& line) { sayWarning(line); });
    }
    return *_device;
}

OZModelBuilder& World::builder() {
    if (!_builder) {
        _builder = std::make_unique<OZModelBuilder>(device());
        for (const auto& [identifier, mask] : _exclusions) {
            _builder->appList().setExclusionMask(mask == "cleanup"  ? OZExclusionMask::cleanup
                                                 : mask == "images" ? OZExclusionMask::images
                                                                    : OZExclusionMask::languages,
                                                 identifier);
        }
    }
    return *_builder;
}

void World::reopen() {
    _kept.clear();
    _builder.reset();
    _device.reset();
}

void World::say(std::string_view line) {
    _output.push_back(line.empty() ? "|" : "| " + std::string(line));
}

void World::sayWarning(std::string_view line) {
    _output.push_back("& " + escaped(line));
}

void World::print(std::string_view lines) {
    for (const auto& line : linesOf(lines)) {
        say(escaped(line));
    }
}

TreeSnapshot World::tree() const {
    TreeSnapshot tree = tests::snapshotOf((folder.folder() / "Root").string());
    std::erase_if(tree, [](const auto& item) {
        std::string_view path = item.first;
        path.remove_prefix(path.starts_with("private/") ? 8 : 0);
        return path == logFolder || isBelow(path, logFolder);
    });
    return tree;
}

Lines World::takeEffects() {
    const TreeSnapshot now = tree();
    Lines effects = effectsOn(_before, now);
    _before = now;
    const Lines journal = folder.journal();
    for (_journalLines = std::min(_journalLines, journal.size()); _journalLines < journal.size();) {
        effects.push_back("! " + journal[_journalLines++]);
    }
    return effects;
}

tests::Outcome World::host(const std::string& command) const {
    return tests::shell("cd '" + folder.folder().string() +
                        "' && export PATH=" OZ_BINARY_DIRECTORY ":$PATH LC_ALL=C.UTF-8 && (" + command + ")");
}

void World::shell(const std::string& command) {
    device();
    reopen();
    const fs::path errors = folder.folder() / ".errors";
    const auto outcome = host("(" + command + ") 2>.errors </dev/null");
    print(outcome.output);
    for (const auto& line : linesOf(tests::contentOf(errors))) {
        _output.push_back("& " + escaped(line));
    }
    fs::remove(errors);
    if (outcome.status != 0) {
        _output.push_back(fmt::format("= {}", outcome.status));
    }
}

} // namespace scenarios

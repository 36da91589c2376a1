#include "Packages.h"

#include "HostProgram.h"
#include "Platform/Device/DeviceNames.h"

#include <filesystem>

#include <fmt/format.h>

namespace ozdevice {
namespace {

constexpr TreeEntry emptyDatabase[] = {
    {"/var/lib/dpkg/alternatives/"}, {"/var/lib/dpkg/info/"},      {"/var/lib/dpkg/parts/"},
    {"/var/lib/dpkg/triggers/"},     {"/var/lib/dpkg/updates/"},   {"/etc/apt/apt.conf.d/"},
    {"/etc/apt/preferences.d/"},     {"/etc/apt/sources.list.d/"},
};

bool isFor(const PackageRow& row, const Generation& generation) {
    return generation.major >= row.since && generation.major <= row.until;
}

std::string control(const PackageRow& row, std::string_view architecture) {
    std::string text = fmt::format("Package: {}\nName: {}\nVersion: {}\nSection: Tweaks\nArchitecture: {}\n"
                                   "Maintainer: Hillside <packages@example.org>\nDescription: {}\n",
                                   row.identifier, row.name, row.version, architecture, row.name);
    if (!row.depends.empty()) {
        text += fmt::format("Depends: {}\n", row.depends);
    }
    if (!row.preDepends.empty()) {
        text += fmt::format("Pre-Depends: {}\n", row.preDepends);
    }
    if (!row.icon.empty()) {
        text += fmt::format("Icon: file:///Library/Icons/{}\n", row.icon);
    }
    return text;
}

/// Builds packages in a directory of its own, as a packager would, and installs them with the host's tools.
class PackageInstaller {
  public:
    PackageInstaller(DeviceBuild& build, std::string staging)
        : _build(build)
        , _staging(std::move(staging)) {}

    void install();

  private:
    void writeContents(DeviceBuild& contents, const PackageRow& row);
    std::string buildArchive(const PackageRow& row);
    void runDpkg(std::vector<std::string> arguments);
    void keepArchives();
    void writeAutomaticPackages();

    DeviceBuild& _build;
    std::string _staging;
    std::vector<std::string> _archives;
};

void PackageInstaller::writeContents(DeviceBuild& contents, const PackageRow& row) {
    contents.add("/DEBIAN/control", control(row, _build.options.packageArchitecture));
    contents.add(row.files);
    if (!row.application.identifier.empty()) {
        addApplicationOfPackage(contents, row.application, row.applicationIcon);
    }
    if (!row.icon.empty()) {
        const std::string icon = fmt::format("/Library/Icons/{}", row.icon);
        const TreeEntry entry[] = {{icon}};
        contents.add(entry);
    }
    if (!row.configurationFile.empty()) {
        contents.add("/DEBIAN/conffiles", TreeWriter::physicalPath(row.configurationFile) + '\n');
        contents.add(row.configurationFile, std::string_view("enabled = yes\n"));
    }
    for (const PreferenceBundleRow& page : preferenceBundleTable()) {
        if (page.package == row.identifier) {
            addPreferenceBundle(contents, page);
        }
    }
}

std::string PackageInstaller::buildArchive(const PackageRow& row) {
    const std::string tree = fmt::format("{}/{}", _staging, row.identifier);
    std::filesystem::create_directory(tree);
    TreeWriter writer(tree);
    DeviceBuild contents(writer, _build.generation, _build.options);
    writeContents(contents, row);
    writer.dateFolders();
    std::string archive = fmt::format("{}/{}_{}_{}.deb", _staging, row.identifier, row.version,
                                      _build.options.packageArchitecture);
    runHostProgram({"dpkg-deb", "--root-owner-group", "-Znone", "--build", tree, archive}, _staging);
    return archive;
}

void PackageInstaller::runDpkg(std::vector<std::string> arguments) {
    // The host's own settings name a log file of the host.
    std::vector<std::string> commandLine{"dpkg",
                                         "--root=" + _build.tree.hostPath("/"),
                                         "--log=/dev/null",
                                         "--force-not-root",
                                         "--force-architecture",
                                         "--force-depends",
                                         "--force-bad-path",
                                         "--force-unsafe-io",
                                         "--force-script-chrootless"};
    commandLine.insert(commandLine.end(), arguments.begin(), arguments.end());
    runHostProgram(commandLine, _staging);
}

void PackageInstaller::keepArchives() {
    for (const std::string& archive : _archives) {
        const std::string name = std::filesystem::path(archive).filename();
        const std::string kept = fmt::format("{}/{}", devicename::packageArchives, name);
        std::filesystem::copy_file(archive, _build.tree.hostPath(kept));
        _build.tree.adopt(kept, {.age = _build.someAge()});
    }
}

void PackageInstaller::writeAutomaticPackages() {
    std::string text;
    for (const PackageRow& row : packageTable()) {
        if (row.state == PackageState::automatic && isFor(row, _build.generation)) {
            text += fmt::format("Package: {}\nArchitecture: {}\nAuto-Installed: 1\n\n", row.identifier,
                                _build.options.packageArchitecture);
        }
    }
    _build.add("/var/lib/apt/extended_states", text);
    _build.add("/etc/apt/sources.list", std::string_view("# Sources are kept by the installer.\n"));
}

void PackageInstaller::install() {
    _build.add(emptyDatabase);
    _build.add(fmt::format("{}/status", devicename::packageDatabase), std::string_view());
    _build.add(fmt::format("{}/available", devicename::packageDatabase), std::string_view());
    std::vector<std::string> removed;
    for (const PackageRow& row : packageTable()) {
        if (isFor(row, _build.generation)) {
            _archives.push_back(buildArchive(row));
            if (row.state == PackageState::configurationLeft) {
                removed.emplace_back(row.identifier);
            }
        }
    }
    std::vector<std::string> arguments{"--install"};
    arguments.insert(arguments.end(), _archives.begin(), _archives.end());
    runDpkg(arguments);
    arguments = {"--remove"};
    arguments.insert(arguments.end(), removed.begin(), removed.end());
    runDpkg(arguments);
    keepArchives();
    writeAutomaticPackages();
}

} // namespace

void addPackages(DeviceBuild& build, const std::string& stagingDirectory) {
    PackageInstaller(build, stagingDirectory).install();
    addLooseAddOns(build);
}

} // namespace ozdevice

#include "Model/Apps/AppReport.h"

#include "Categories/Text.h"
#include "Model/Apps/OZAppList.h"
#include "Platform/Device/Device.h"

#include <iterator>

#include <fmt/format.h>

namespace {

/// Names come from the applications' own files: one must not command the reader's terminal.
std::string printable(std::string_view text) {
    static const icu::UnicodeSet controls = icu::UnicodeSet(0, 0x1F).add(0x7F, 0x9F);
    return stringByDeletingCharactersInSet(text, controls);
}

class Report {
  public:
    void add(std::string_view heading, const OZAppList::Apps& apps) {
        fmt::format_to(std::back_inserter(_text), "{}: {}\n", heading, apps.size());
        for (const auto& app : apps) {
            add(*app);
        }
    }
    [[nodiscard]] const std::string& text() const { return _text; }

  private:
    void add(const OZApp& app) {
        fmt::format_to(std::back_inserter(_text), "  {} ({})\n", printable(app.displayName()),
                       printable(app.identifier()));
        line("bundle", app.bundlePath());
        if (app.dataContainer()) {
            line("data", *app.dataContainer());
        }
        for (const auto& [identifier, path] : app.groupDataContainers()) {
            line("group", identifier + ": " + path);
        }
        for (const auto& [identifier, path] : app.pluginDataContainers()) {
            line("plug-in", identifier + ": " + path);
        }
    }
    void line(std::string_view label, const std::string& text) {
        fmt::format_to(std::back_inserter(_text), "    {:<8} {}\n", label, printable(text));
    }

    std::string _text;
};

} // namespace

std::string describeApplications(platform::Device& device) {
    const OZAppList list(device);
    Report report;
    report.add("user applications", list.appList({.typeMask = OZAppTypeMask::user}));
    report.add("system applications", list.appList({.typeMask = OZAppTypeMask::system}));
    return report.text();
}

#include "Controller/CommandLine/MenuWarnings.h"

#include "Controller/CommandLine/MenuText.h"
#include "Platform/Device/Warnings.h"

#include <algorithm>
#include <utility>

MenuWarnings::MenuWarnings(platform::Warnings& warnings)
    : _warnings(warnings) {
    _warnings.setReceiver([this](const std::string& line) { add(line); });
}

MenuWarnings::~MenuWarnings() {
    _warnings.setReceiver({});
    for (const auto& line : _lines) {
        _warnings.tell(line);
    }
}

void MenuWarnings::add(const std::string& line) {
    const std::scoped_lock lock(_mutex);
    if (std::ranges::find(_lines, line) == _lines.end()) {
        _lines.push_back(line);
    }
}

std::string MenuWarnings::take() {
    const std::scoped_lock lock(_mutex);
    std::string text;
    for (const auto& line : std::exchange(_lines, {})) {
        text += menutext::red(line) + "\n";
    }
    return text.empty() ? text : text + "\n";
}

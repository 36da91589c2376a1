#include "Interface/Table/OZTableViewDataSource.h"

void OZTableViewDataSource::removeSectionWithName(std::string_view name) {
    if (const size_t index = indexOfSectionWithName(name); index != notFound) {
        removeSectionAtIndex(index);
    }
}

void OZTableViewDataSource::removeAllRows() {
    for (const auto& section : _sections.objects()) {
        section->removeAllRows();
    }
}

size_t OZTableViewDataSource::numberOfRows() const {
    size_t count = 0;
    for (const auto& section : _sections.objects()) {
        count += section->numberOfRows();
    }
    return count;
}

std::optional<IndexPath> OZTableViewDataSource::indexPathOfRowWithName(std::string_view name,
                                                                       std::string_view sectionName) const {
    const size_t section = indexOfSectionWithName(sectionName);
    if (section == notFound) {
        return std::nullopt;
    }
    const size_t row = sectionAtIndex(section).indexOfRowWithName(name);
    return row == notFound ? std::nullopt : std::optional(IndexPath{.section = section, .row = row});
}

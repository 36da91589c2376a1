#pragma once

#include "Interface/Table/NamedList.h"
#include "Interface/Table/OZTableViewSection.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A row's place in a table.
struct IndexPath {
    size_t section = 0;
    size_t row = 0;
    auto operator<=>(const IndexPath&) const = default;
};

/// A table as its screen describes it: named sections of named rows. Indexes and names that must be there
/// throw AssertionFailure where they are not.
class OZTableViewDataSource {
  public:
    using Sections = std::vector<std::shared_ptr<OZTableViewSection>>;
    using Row = std::shared_ptr<OZTableViewRow>;

    static constexpr size_t notFound = NamedList<OZTableViewSection>::notFound;

    // Sections.
    void addSection(std::shared_ptr<OZTableViewSection> section) {
        insertSection(std::move(section), numberOfSections());
    }
    /// Throws platform::Exception ("OZTSSectionName") for a section without a name or with one that is
    /// present.
    void insertSection(std::shared_ptr<OZTableViewSection> section, size_t index) {
        _sections.insert(std::move(section), index);
    }
    [[nodiscard]] Sections allSections() const { return _sections.objects(); }
    [[nodiscard]] bool containsSectionWithName(std::string_view name) const {
        return sectionWithName(name) != nullptr;
    }
    [[nodiscard]] size_t indexOfSectionWithName(std::string_view name) const {
        return _sections.indexOf(name);
    }
    [[nodiscard]] size_t numberOfSections() const { return _sections.count(); }
    [[nodiscard]] OZTableViewSection& sectionAtIndex(size_t index) const { return _sections.at(index); }
    [[nodiscard]] const std::string& sectionNameAtIndex(size_t index) const {
        return _sections.at(index).name();
    }
    /// Null for an absent name.
    [[nodiscard]] OZTableViewSection* sectionWithName(std::string_view name) const {
        return _sections.named(name);
    }
    void removeSectionAtIndex(size_t index) { _sections.remove(index); }
    void removeSectionsInRange(size_t index, size_t length) { _sections.remove(index, length); }
    /// Nothing for an absent name.
    void removeSectionWithName(std::string_view name);
    void removeAllSections() { _sections.clear(); }

    // Rows.
    /// Empties every section; the sections stay.
    void removeAllRows();
    /// Of all sections.
    [[nodiscard]] size_t numberOfRows() const;
    void addRow(Row row, size_t sectionIndex) const { sectionAtIndex(sectionIndex).addRow(std::move(row)); }
    void addRow(Row row, std::string_view sectionName) const {
        sectionThatIsThere(sectionName).addRow(std::move(row));
    }
    void insertRow(Row row, IndexPath place) const {
        sectionAtIndex(place.section).insertRow(std::move(row), place.row);
    }
    void insertRow(Row row, std::string_view sectionName, size_t index) const {
        sectionThatIsThere(sectionName).insertRow(std::move(row), index);
    }
    [[nodiscard]] size_t indexOfRowWithName(std::string_view name, size_t sectionIndex) const {
        return sectionAtIndex(sectionIndex).indexOfRowWithName(name);
    }
    [[nodiscard]] size_t indexOfRowWithName(std::string_view name, std::string_view sectionName) const {
        return sectionThatIsThere(sectionName).indexOfRowWithName(name);
    }
    /// None where either name is absent.
    [[nodiscard]] std::optional<IndexPath> indexPathOfRowWithName(std::string_view name,
                                                                  std::string_view sectionName) const;
    [[nodiscard]] OZTableViewRow& rowAtIndexPath(IndexPath place) const {
        return sectionAtIndex(place.section).rowAtIndex(place.row);
    }
    void removeRowAtIndexPath(IndexPath place) const {
        sectionAtIndex(place.section).removeRowAtIndex(place.row);
    }

  private:
    [[nodiscard]] OZTableViewSection& sectionThatIsThere(std::string_view name) const {
        return sectionAtIndex(indexOfSectionWithName(name));
    }

    NamedList<OZTableViewSection> _sections{"OZTSSectionName", "Null section name or already present: "};
};

#pragma once

#include "Interface/Table/HeaderFooterView.h"
#include "Interface/Table/NamedList.h"
#include "Interface/Table/OZTableViewRow.h"

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// A section of a table: rows in order, each with a name that no other row of the section has.
class OZTableViewSection {
  public:
    using Rows = std::vector<std::shared_ptr<OZTableViewRow>>;

    explicit OZTableViewSection(std::string name)
        : _name(std::move(name)) {}

    [[nodiscard]] const std::string& name() const { return _name; }

    void addRow(std::shared_ptr<OZTableViewRow> row) { insertRow(std::move(row), numberOfRows()); }
    /// Throws platform::Exception ("OZTRRowName") for a row without a name or with one that is present, and
    /// AssertionFailure for an index behind the end.
    void insertRow(std::shared_ptr<OZTableViewRow> row, size_t index) { _rows.insert(std::move(row), index); }

    [[nodiscard]] Rows allRows() const { return _rows.objects(); }
    [[nodiscard]] std::vector<std::string> allRowNames() const { return _rows.names(); }
    [[nodiscard]] bool containsRowWithName(std::string_view name) const {
        return rowWithName(name) != nullptr;
    }
    /// `NamedList::notFound` for an absent name.
    [[nodiscard]] size_t indexOfRowWithName(std::string_view name) const { return _rows.indexOf(name); }
    [[nodiscard]] size_t numberOfRows() const { return _rows.count(); }
    /// Throws AssertionFailure behind the end.
    [[nodiscard]] OZTableViewRow& rowAtIndex(size_t index) const { return _rows.at(index); }
    /// Null for an absent name.
    [[nodiscard]] OZTableViewRow* rowWithName(std::string_view name) const { return _rows.named(name); }

    /// These throw AssertionFailure for what is behind the end.
    void removeRowAtIndex(size_t index) { _rows.remove(index); }
    void removeRowsInRange(size_t index, size_t length) { _rows.remove(index, length); }
    void removeAllRows() { _rows.clear(); }
    /// Nothing for an absent name.
    void removeRowWithName(std::string_view name) {
        if (const size_t index = indexOfRowWithName(name); index != NamedList<OZTableViewRow>::notFound) {
            removeRowAtIndex(index);
        }
    }

    std::optional<std::string> headerTitle;
    std::optional<std::string> footerTitle;
    std::optional<HeaderFooterView> headerView;
    std::optional<HeaderFooterView> footerView;

  private:
    std::string _name;
    NamedList<OZTableViewRow> _rows{"OZTRRowName", "Null row name or already present: "};
};

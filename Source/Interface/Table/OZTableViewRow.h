#pragma once

#include "Interface/Table/Cell.h"

#include <any>
#include <optional>
#include <string>
#include <utility>

/// A row of a table, as its screen describes it once. The name is its identity within its section; the texts
/// come from `localize` alone. Main thread only, as all of a table.
class OZTableViewRow {
  public:
    explicit OZTableViewRow(std::string name)
        : _name(std::move(name)) {}

    [[nodiscard]] const std::string& name() const { return _name; }

    AccessoryType accessoryType = AccessoryType::none;
    /// A control at the row's end, in place of the accessory.
    std::optional<CellControl> accessoryView;
    /// Shown as it stands, in place of one that is made of the other fields.
    std::optional<Cell> cell;
    /// For screens that show it; the base of tables does not.
    std::string detailText;
    /// A URL of the image cache; empty for no image.
    std::string image;
    /// What the row stands for; free for the screen.
    std::any info;
    /// For screens that apply it; the base of tables does not.
    SelectionStyle selectionStyle = SelectionStyle::standard;
    std::string text;

  private:
    std::string _name;
};

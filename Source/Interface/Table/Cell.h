#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <variant>
#include <vector>

/// What stands at a row's end and tells what pressing the row does. The values are the toolkit's of old.
enum class AccessoryType : int {
    none = 0,
    disclosureIndicator = 1,
    detailDisclosureButton = 2,
    checkmark = 3,
    detailButton = 4
};

enum class SelectionStyle : int { none = 0, standard = 1 };

/// A switch that a row carries.
struct SwitchControl {
    bool isOn = false;
    bool isEnabled = true;
    bool operator==(const SwitchControl&) const = default;
};

/// A choice of few, side by side.
struct SegmentedControl {
    std::vector<std::string> titles;
    size_t selected = 0;
    bool isEnabled = true;
    bool operator==(const SegmentedControl&) const = default;
};

using CellControl = std::variant<SwitchControl, SegmentedControl>;

/// A row as it is drawn: a plain value, made when a view asks for it and not kept.
struct Cell {
    std::string text;
    std::string detailText;
    /// A URL of the image cache; empty for no image.
    std::string image;
    AccessoryType accessoryType = AccessoryType::none;
    std::optional<CellControl> control;
    SelectionStyle selectionStyle = SelectionStyle::standard;
    bool isEnabled = true;

    bool operator==(const Cell&) const = default;
};

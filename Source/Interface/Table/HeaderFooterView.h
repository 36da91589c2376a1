#pragma once

#include <string>

/// What stands above or below a section: a text in the style of headers or of footers, or a view of the
/// screen's own under its name.
struct HeaderFooterView {
    enum class Style : unsigned { header = 0, footer = 1 };

    std::string text;
    Style style = Style::header;
    bool isCentered = false;
    /// Points; set by `sizeToFitWithWidth` of the screen's view.
    double height = 0;

    bool operator==(const HeaderFooterView&) const = default;
};

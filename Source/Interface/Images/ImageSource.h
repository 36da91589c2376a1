#pragma once

#include "Platform/Formats/Image.h"

#include <optional>
#include <string_view>

/// What a toolkit gives to the image cache. Any thread may call.
class ImageSource {
  public:
    virtual ~ImageSource() = default;

    /// How many pixels of the screen make up a point.
    [[nodiscard]] virtual double screenScale() const = 0;
    /// One of the program's own drawings, such as "FolderIcon", in its own size and for this scale; none for
    /// an unknown name.
    [[nodiscard]] virtual std::optional<platform::Image> imageNamed(std::string_view name) const = 0;
};

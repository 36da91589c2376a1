#pragma once

#include "Interface/Images/ImageSource.h"

/// The program's own drawings, which lie in the library of the window.
class Drawings : public ImageSource {
  public:
    /// There is an application by then.
    Drawings();

    [[nodiscard]] double screenScale() const override { return _screenScale; }
    [[nodiscard]] std::optional<platform::Image> imageNamed(std::string_view name) const override;

  private:
    double _screenScale;
};

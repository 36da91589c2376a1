#pragma once

#include <optional>
#include <string>

/// Something that a list shows to the user.
class OZItem {
  public:
    virtual ~OZItem() = default;

    [[nodiscard]] virtual std::string identifier() const = 0;
    /// Empty if it has none.
    [[nodiscard]] virtual std::string title() const = 0;
    virtual void setTitle(std::string title) = 0;

    // What not every item has: absent, and not to be set, where it is not overridden.
    [[nodiscard]] virtual std::optional<std::string> itemDescription() const { return std::nullopt; }
    virtual void setItemDescription(std::optional<std::string> /*description*/) {}
    /// A URL's text.
    [[nodiscard]] virtual std::optional<std::string> iconURL() { return std::nullopt; }
    virtual void setIconURL(std::optional<std::string> /*url*/) {}
};

#pragma once

#include "Interface/OZViewController.h"

#include <cstdint>
#include <functional>
#include <string>

/// A screen that shows a text.
class OZTextViewController : public OZViewController {
  public:
    /// What "Done" does; without it there is no such button. The context outlives the screen.
    OZTextViewController(InterfaceContext& context, std::function<void()> close);

    [[nodiscard]] const std::string& content() const { return _content; }
    void setContent(std::string content);
    /// Another number for each content.
    [[nodiscard]] uint64_t contentNumber() const { return _contentNumber; }
    /// A literal, or, where it is one, a key of the language files.
    void setTitleKey(std::string key) { _titleKey = std::move(key); }
    using OZViewController::setTabTitleKey;

    void localize() override;

  protected:
    void viewDidLoad() override;

  private:
    std::function<void()> _close;
    std::string _content;
    uint64_t _contentNumber = 1;
    std::string _titleKey;
};

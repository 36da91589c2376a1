#pragma once

#include "Desktop/Adapters/PageView.h"
#include "Interface/Screens/Text/OZTextViewController.h"

/// A text, as its page shows it.
class TextAdapter : public PageView<ScreenView> {
    Q_OBJECT
    Q_PROPERTY(QString content READ content NOTIFY barUpdated)

  public:
    explicit TextAdapter(OZTextViewController& screen)
        : PageView(screen, "text")
        , _text(screen) {}

    [[nodiscard]] QString content() const { return QString::fromStdString(_text.content()); }
    [[nodiscard]] bool isScrollable() const override { return true; }

  private:
    OZTextViewController& _text;
};

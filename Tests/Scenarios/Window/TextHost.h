#pragma once

#include "Interface/Alerts/OZACConcrete.h"
#include "Interface/Host.h"
#include "Interface/Images/ImageSource.h"
#include "Interface/OZViewController.h"
#include "Interface/Screens/Clean/OZCleanupView.h"
#include "Interface/Table/TableView.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace scenarios {

class TextAlert;

/// A toolkit that shows everything as lines of text and notes what it is told to show.
class TextHost : public Host {
  public:
    using Say = std::function<void(const std::string& line)>;

    explicit TextHost(Say say);
    ~TextHost() override;

    void prepare(OZViewController& screen) override;
    void transition(const Transition& transition, std::function<void()> done) override;
    std::unique_ptr<OZACConcrete> makeAlert(OZAlertStyle style) override;
    void presentActivity(OZActivityHUD hud) override;
    void dismissActivity(bool success) override;
    bool openURL(std::string_view url) override;
    [[nodiscard]] bool canOpenURL(std::string_view /*url*/) const override { return true; }
    void setIdleTimerDisabled(bool disabled) override;
    [[nodiscard]] double screenHeight() const override { return 667; }
    [[nodiscard]] const ImageSource& imageSource() const override { return _noDrawings; }

    void say(const std::string& line) const { _say(line); }
    /// The dialogs that are shown, the last one on top.
    std::vector<TextAlert*> alerts;

  private:
    class View;
    struct NoDrawings : ImageSource {
        [[nodiscard]] double screenScale() const override { return 1; }
        [[nodiscard]] std::optional<platform::Image> imageNamed(std::string_view) const override {
            return std::nullopt;
        }
    };

    Say _say;
    NoDrawings _noDrawings;
    std::vector<std::unique_ptr<View>> _views;
};

/// A dialog as text. A press of a button runs its action between the two ends of the dialog's dismissal.
class TextAlert : public OZACConcrete {
  public:
    TextAlert(TextHost& host, OZAlertStyle style)
        : _host(host)
        , _style(style) {}
    ~TextAlert() override;

    void setDelegate(OZACDelegate& delegate) override { _delegate = &delegate; }
    void setTitle(const std::string& title) override { _title = title; }
    void setMessage(const std::string& message) override;
    void addAction(std::shared_ptr<OZAlertAction> action) override { _actions.push_back(std::move(action)); }
    void addTextField(const OZTextField& field) override { text = field.text; }
    [[nodiscard]] std::string textFieldText() const override { return text.value_or(""); }
    void show(OZViewController* screen, const AlertAnchor& anchor, const Rectangle& rectangle) override;
    void dismiss() override { dismissBy(nullptr); }

    /// False for a title that no button has.
    bool press(const std::string& title);

    std::optional<std::string> text;

  private:
    void dismissBy(const std::shared_ptr<OZAlertAction>& action);
    void tell() const;

    TextHost& _host;
    OZAlertStyle _style;
    OZACDelegate* _delegate = nullptr;
    std::string _title;
    std::string _message;
    std::vector<std::shared_ptr<OZAlertAction>> _actions;
    bool _isShown = false;
};

/// What a progress view is told, as lines.
class TextPainter : public CleanupPainter {
  public:
    TextPainter(OZCleanupView& view, const TextHost& host)
        : _view(view)
        , _host(host) {
        view.setPainter(this);
    }
    ~TextPainter() override { _view.setPainter(nullptr); }

    void refresh() override {}
    void footerChanged(bool animated) override;
    void progressChanged(bool animated) override;
    void startSpinning() override;
    void complete(std::function<void()> handler) override;
    void reset() override { _host.say("rings reset"); }

  private:
    OZCleanupView& _view;
    const TextHost& _host;
};

} // namespace scenarios

#pragma once

#include "Interface/Host.h"

#include <functional>
#include <string>

/// What draws the progress of a run: two rings, a title and a footer.
class CleanupPainter {
  public:
    virtual ~CleanupPainter() = default;

    /// The mode, the title or the layout is another one.
    virtual void refresh() = 0;
    /// With animation the old footer leaves while the new one comes.
    virtual void footerChanged(bool animated) = 0;
    virtual void progressChanged(bool animated) = 0;
    virtual void startSpinning() = 0;
    /// The ring fills and the activity stops; the handler runs when both have come to rest, and not before.
    virtual void complete(std::function<void()> handler) = 0;
    virtual void reset() = 0;
};

/// Where the parts of the view lie, in points.
struct CleanupLayout {
    Rectangle ring;
    double titleCentre = 0;
    double footerCentre = 0;
    double trackWidth = 0;
    double fillWidth = 0;
    double labelFont = 0;
    double titleFont = 0;
    /// How far an old footer moves to the right while it fades.
    double footerDrift = 0;
};

/// The view of a run, as far as it is no drawing. Main thread only.
class OZCleanupView {
  public:
    /// Whether it is known how much there is to do.
    enum class Mode : unsigned { determinate = 0, indeterminate = 1 };

    static constexpr double animationSpeed = 1.5;
    static constexpr double footerDuration = 0.3;
    static constexpr double activityWidth = 3;

    /// Null for none; it outlives the view or takes itself away.
    void setPainter(CleanupPainter* painter) { _painter = painter; }

    [[nodiscard]] Mode mode() const { return _mode; }
    void setMode(Mode mode);
    [[nodiscard]] const std::string& titleText() const { return _titleText; }
    void setTitleText(std::string text);
    [[nodiscard]] const std::string& footerText() const { return _footerText; }
    void setFooterText(std::string text, bool animated);
    /// From 0 to 1.
    [[nodiscard]] float progress() const { return _progress; }
    void setProgress(float progress, bool animated);
    [[nodiscard]] bool isActivityVisible() const { return _isActivityVisible; }

    void startAnimating();
    /// Fills the ring and ends the activity; the handler runs when the animations have ended.
    void completeWithHandler(std::function<void()> handler);
    void reset();

    /// For a view of a size, on a screen of a size; an iPad's display has larger type.
    [[nodiscard]] static CleanupLayout layoutFor(double width, double height, double screenWidth,
                                                 double screenHeight, bool isIPad);

  private:
    CleanupPainter* _painter = nullptr;
    Mode _mode = Mode::determinate;
    std::string _titleText;
    std::string _footerText;
    float _progress = 0;
    bool _isActivityVisible = false;
};

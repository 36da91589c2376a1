#pragma once

#include "Desktop/Adapters/PageView.h"
#include "Interface/Screens/Clean/OZCleanupViewController.h"

#include <functional>

/// The progress of a run, as its page draws it.
class CleanupAdapter : public PageView<ScreenView>, public CleanupPainter {
    Q_OBJECT
    Q_PROPERTY(bool determinate READ isDeterminate NOTIFY refreshed)
    Q_PROPERTY(QString runTitle READ runTitle NOTIFY refreshed)
    Q_PROPERTY(QString footer READ footer NOTIFY footerMoved)
    Q_PROPERTY(double progress READ progress NOTIFY progressMoved)
    Q_PROPERTY(bool spinning READ isSpinning NOTIFY spinningChanged)

  public:
    explicit CleanupAdapter(OZCleanupViewController& screen);
    ~CleanupAdapter() override;

    [[nodiscard]] bool isDeterminate() const;
    [[nodiscard]] QString runTitle() const { return QString::fromStdString(_view.titleText()); }
    [[nodiscard]] QString footer() const { return QString::fromStdString(_view.footerText()); }
    [[nodiscard]] double progress() const { return _view.progress(); }
    [[nodiscard]] bool isSpinning() const { return _isSpinning; }

    /// Where the parts lie in a page of this size.
    Q_INVOKABLE QVariantMap layout(double width, double height) const;
    /// The animations of the end are over.
    Q_INVOKABLE void completed();

    [[nodiscard]] bool isScrollable() const override { return false; }
    void refresh() override { emit refreshed(); }
    void footerChanged(bool animated) override { emit footerMoved(animated); }
    void progressChanged(bool animated) override { emit progressMoved(animated); }
    void startSpinning() override;
    void complete(std::function<void()> handler) override;
    void reset() override;

  signals:
    void refreshed();
    void footerMoved(bool animated);
    void progressMoved(bool animated);
    void spinningChanged();
    void completing();

  private:
    OZCleanupView& _view;
    std::function<void()> _handler;
    bool _isSpinning = false;
};

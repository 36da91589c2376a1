#pragma once

#include "Interface/Host.h"
#include "Interface/Table/OZTableViewDataSource.h"

#include <functional>
#include <memory>
#include <string>
#include <variant>

class OZAlertAction;

enum class OZAlertStyle : int { actionSheet = 0, alert = 1 };

/// The one line that a dialog may ask for.
struct OZTextField {
    std::string text;
    bool autocorrects = true;
    bool autocapitalizes = true;
};

/// Where a sheet comes from: nothing, a row of its screen's table, or a button of the bar.
enum class BarSide { left, right };
using AlertAnchor = std::variant<std::monostate, IndexPath, BarSide>;

/// Hears of a dialog's life.
class OZACDelegate {
  public:
    virtual ~OZACDelegate() = default;
    virtual void concreteControllerWillShow() = 0;
    virtual void concreteControllerWillDismiss() = 0;
    virtual void concreteControllerDidDismiss() = 0;
};

/// A toolkit's dialog. It tells its delegate when it is about to be shown, about to go, and gone; a button
/// that is pressed runs the handler of its action between the latter two.
class OZACConcrete {
  public:
    virtual ~OZACConcrete() = default;

    /// The delegate outlives this dialog.
    virtual void setDelegate(OZACDelegate& delegate) = 0;
    /// Both may change while the dialog is shown.
    virtual void setTitle(const std::string& title) = 0;
    virtual void setMessage(const std::string& message) = 0;
    virtual void addAction(std::shared_ptr<OZAlertAction> action) = 0;
    virtual void addTextField(const OZTextField& field) = 0;
    /// What stands in the field by now.
    [[nodiscard]] virtual std::string textFieldText() const = 0;
    /// Over all screens where none is given. The rectangle lies in the screen's view; `Rectangle::null()` is
    /// none.
    virtual void show(OZViewController* screen, const AlertAnchor& anchor, const Rectangle& rectangle) = 0;
    virtual void dismiss() = 0;
};

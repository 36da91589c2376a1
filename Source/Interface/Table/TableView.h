#pragma once

#include "Interface/ScreenView.h"
#include "Interface/Table/HeaderFooterView.h"
#include "Interface/Table/OZTableViewDataSource.h"

/// The view of a table screen. It asks its screen for what it shows, by index, and is told what has changed.
class TableView : public ScreenView {
  public:
    [[nodiscard]] bool isScrollable() const override { return true; }

    virtual void reloadData() = 0;
    virtual void reloadSectionIndexTitles() = 0;
    virtual void reloadRow(IndexPath place) = 0;
    /// Lays out everything anew without asking for rows again.
    virtual void layOut() = 0;
    virtual void selectRow(IndexPath place) = 0;
    virtual void deselectRow(IndexPath place, bool animated) = 0;
    /// To the top of what is visible, at once.
    virtual void scrollToRow(IndexPath place) = 0;
    virtual void setEditing(bool editing, double duration) = 0;

    /// What lies above the visible part, in points; negative within the top inset.
    [[nodiscard]] virtual double contentOffset() const = 0;
    virtual void setContentOffset(double offset, bool animated) = 0;
    /// Points, with header and footer.
    [[nodiscard]] virtual double heightOfSection(size_t section) const = 0;
    [[nodiscard]] virtual bool hasVisibleImage() const = 0;
    /// The height that a label's text takes in the table's width.
    [[nodiscard]] virtual double heightThatFits(const HeaderFooterView& label) const = 0;
};

#pragma once

#include "Interface/OZViewController.h"
#include "Interface/Table/OZTableViewDataSource.h"
#include "Interface/Table/TableHeader.h"
#include "Interface/Table/TableView.h"
#include "Platform/Threads/Queue.h"

#include <optional>
#include <string>
#include <vector>

/// A screen that is a table: it describes itself once in its data source, and the base answers from that.
/// Structure comes from `populateDataSource`, all texts from `localize`.
class OZTableViewController : public OZViewController {
  public:
    static constexpr double rowHeight = 44;

    explicit OZTableViewController(InterfaceContext& context);
    ~OZTableViewController() override;

    /// The same view as the base's, as a table.
    void load(TableView& table);

    void viewWillAppear(bool animated) override;
    void viewDidAppear(bool animated) override;
    void setEditing(bool editing, bool animated) override;

    // What a table view asks. Points; an index that nothing has throws AssertionFailure.
    [[nodiscard]] size_t numberOfSections() const { return _dataSource.numberOfSections(); }
    [[nodiscard]] size_t numberOfRowsInSection(size_t section) const {
        return _dataSource.sectionAtIndex(section).numberOfRows();
    }
    [[nodiscard]] virtual std::optional<std::string> titleForHeaderInSection(size_t section) const;
    [[nodiscard]] virtual Cell cellForRowAtIndexPath(IndexPath place);
    /// The section's header and footer, made where a title asks for one and kept in the section; null for
    /// none.
    [[nodiscard]] virtual const HeaderFooterView* viewForHeaderInSection(size_t section);
    [[nodiscard]] virtual const HeaderFooterView* viewForFooterInSection(size_t section);
    [[nodiscard]] virtual double heightForHeaderInSection(size_t section);
    [[nodiscard]] virtual double heightForFooterInSection(size_t section);
    [[nodiscard]] const std::optional<TableHeader>& header() const { return _header; }
    [[nodiscard]] std::string titleForDeleteConfirmationButton() const { return text("DELETE"); }

    // What a table view tells.
    virtual void didSelectRowAtIndexPath(IndexPath /*place*/) {}
    /// A control of a row has a new value: 0 or 1 for a switch, the segment's index otherwise.
    virtual void controlChanged(IndexPath /*place*/, size_t /*value*/) {}
    /// Does what a press of the row does.
    void accessoryButtonTapped(IndexPath place);

    // The strip of initial letters.
    [[nodiscard]] bool shouldShowTableIndexTitles() const;
    /// None where the strip would be too short to help.
    [[nodiscard]] std::optional<std::vector<std::string>> sectionIndexTitles();
    void indexTitleTapped(size_t index);

    // For screens and those who use them.
    [[nodiscard]] OZTableViewDataSource& dataSource() { return _dataSource; }
    [[nodiscard]] const OZTableViewDataSource& dataSource() const { return _dataSource; }
    void setTableHeaderTitle(std::string title);
    void setTableHeaderComment(std::string comment);
    /// Throws AssertionFailure for a table without sections.
    [[nodiscard]] size_t lastSectionInTable() const;
    [[nodiscard]] size_t numberOfRowsInTable() const { return _dataSource.numberOfRows(); }
    void reloadTableAnimated(bool animated);
    void stopTableScrollAnimation();
    void scrollTableToTopAnimated(bool animated);
    /// The same unless somebody has scrolled away from the top.
    void pinTableToTopAnimated(bool animated);

  protected:
    void viewDidLoad() override;
    void handleRotation() override;
    void handleAnimatedRotationWithDuration(double duration) override;

    /// Adds sections and rows, without texts.
    virtual void populateDataSource() {}
    /// The section that has a strip of initial letters; none for no strip.
    [[nodiscard]] virtual std::optional<size_t> indexedTableSection() const { return std::nullopt; }
    [[nodiscard]] virtual std::string tableIndexStringForRow(const OZTableViewRow& row) const {
        return row.text;
    }

    [[nodiscard]] TableView* table() const { return _table; }
    /// Whether a reload goes on in which controls may move to their new state.
    [[nodiscard]] bool animateTableReload() const { return _animateTableReload; }

  private:
    const HeaderFooterView* fitted(HeaderFooterView& label) const;
    const HeaderFooterView* copyrightFooter();
    TableHeader& headerForChange();

    OZTableViewDataSource _dataSource;
    TableView* _table = nullptr;
    std::optional<TableHeader> _header;
    std::optional<HeaderFooterView> _copyrightFooter;
    std::optional<HeaderFooterView> _emptyFooter;
    std::vector<size_t> _indexedRowIndexes;
    bool _animateTableReload = false;
    bool _didUpdateOnFirstAppear = false;
    platform::MainQueue::Token _reloadEnd = 0;
    platform::MainQueue::Token _firstUpdate = 0;
};

#include "Interface/Table/OZTableViewController.h"

#include "Categories/Text.h"
#include "Platform/Device/Device.h"
#include "Platform/Device/Generations.h"

#include <chrono>
#include <cmath>
#include <unordered_set>

#include <fmt/chrono.h>
#include <unicode/unistr.h>

namespace {

constexpr double noHeight = 0.001;
constexpr double firstHeaderBelowTableHeader = 10;
constexpr double usualHeader = 20;
constexpr double usualFooter = 10;
constexpr double pinDistance = 100;
constexpr double reloadAnimation = 0.1;
constexpr double firstUpdateDelay = 0.001;
constexpr double oldEditingDuration = 0.3;
constexpr double usualEditingDuration = 0.3;
// A strip of letters needs a list that is longer than the screen, and some letters.
constexpr double screensForIndex = 1.2;
constexpr size_t lettersForIndex = 5;

std::string initialOf(const std::string& text) {
    const auto unicode = icu::UnicodeString::fromUTF8(text);
    icu::UnicodeString initial(unicode, 0, unicode.moveIndex32(0, 1));
    std::string letter;
    initial.toUpper().toUTF8String(letter);
    return letter;
}

} // namespace

OZTableViewController::OZTableViewController(InterfaceContext& context)
    : OZViewController(context) {}

OZTableViewController::~OZTableViewController() {
    auto& queue = context().device.mainQueue();
    queue.cancel(_reloadEnd);
    queue.cancel(_firstUpdate);
}

void OZTableViewController::load(TableView& table) {
    _table = &table;
    OZViewController::load(table);
}

void OZTableViewController::viewDidLoad() {
    populateDataSource();
    updateViewInsetsAnimated(false);
    scrollTableToTopAnimated(false);
}

void OZTableViewController::viewWillAppear(bool animated) {
    OZViewController::viewWillAppear(animated);
    updateViewInsetsAnimated(false);
    pinTableToTopAnimated(true);
    // A table learns the height of its header when it is laid out once more.
    if (_header && !_didUpdateOnFirstAppear) {
        _firstUpdate = context().device.mainQueue().postAfter(firstUpdateDelay, [this] {
            if (_table != nullptr) {
                _table->layOut();
            }
            _didUpdateOnFirstAppear = true;
        });
    }
}

void OZTableViewController::viewDidAppear(bool animated) {
    OZViewController::viewDidAppear(animated);
    updateViewInsetsAnimated(true);
    pinTableToTopAnimated(true);
}

void OZTableViewController::handleRotation() {
    OZViewController::handleRotation();
    pinTableToTopAnimated(true);
}

void OZTableViewController::handleAnimatedRotationWithDuration(double duration) {
    OZViewController::handleAnimatedRotationWithDuration(duration);
    updateViewInsetsAnimated(false);
}

void OZTableViewController::setEditing(bool editing, bool animated) {
    OZViewController::setEditing(editing, animated);
    if (_table == nullptr) {
        return;
    }
    // Tables of old moved the images of their cells badly when an editing ended, so all of it is one
    // animation there.
    const double version = context().foundationVersion();
    const bool isOld = version >= ios::v5_0 && version < ios::v7_0;
    const bool endsWithImages = isOld && animated && !editing && _table->hasVisibleImage();
    _table->setEditing(editing, endsWithImages ? oldEditingDuration : animated ? usualEditingDuration : 0);
}

std::optional<std::string> OZTableViewController::titleForHeaderInSection(size_t section) const {
    return _dataSource.sectionAtIndex(section).headerTitle;
}

Cell OZTableViewController::cellForRowAtIndexPath(IndexPath place) {
    const OZTableViewRow& row = _dataSource.rowAtIndexPath(place);
    if (row.cell) {
        return *row.cell;
    }
    return {.text = row.text,
            .detailText = {},
            .image = row.image,
            .accessoryType = row.accessoryType,
            .control = row.accessoryView,
            .selectionStyle = SelectionStyle::standard,
            .isEnabled = true};
}

const HeaderFooterView* OZTableViewController::fitted(HeaderFooterView& label) const {
    label.height = _table == nullptr ? 0 : _table->heightThatFits(label);
    return &label;
}

const HeaderFooterView* OZTableViewController::viewForHeaderInSection(size_t section) {
    auto& view = _dataSource.sectionAtIndex(section).headerView;
    const auto title = titleForHeaderInSection(section);
    if (title && !view) {
        view = HeaderFooterView{.text = {}, .style = HeaderFooterView::Style::header};
    }
    if (!view) {
        return nullptr;
    }
    if (title) {
        view->text = *title;
    }
    return fitted(*view);
}

double OZTableViewController::heightForHeaderInSection(size_t section) {
    if (const auto* view = viewForHeaderInSection(section)) {
        return view->height;
    }
    if (numberOfRowsInSection(section) == 0) {
        return noHeight;
    }
    return section == 0 && _header ? firstHeaderBelowTableHeader : usualHeader;
}

const HeaderFooterView* OZTableViewController::copyrightFooter() {
    if (!_copyrightFooter) {
        const auto now =
            fmt::localtime(std::chrono::system_clock::to_time_t(std::chrono::system_clock::now()));
        _copyrightFooter = HeaderFooterView{
            .text = fmt::format("{} {} \u00A9 {:%Y}", context().displayName, context().shortVersion, now),
            .style = HeaderFooterView::Style::footer,
            .isCentered = true};
    }
    return fitted(*_copyrightFooter);
}

const HeaderFooterView* OZTableViewController::viewForFooterInSection(size_t section) {
    if (section != lastSectionInTable()) {
        return nullptr;
    }
    if (numberOfRowsInTable() > 0) {
        return copyrightFooter();
    }
    _emptyFooter = HeaderFooterView{
        .text = text("NOTHINGHERE"), .style = HeaderFooterView::Style::footer, .isCentered = true};
    return fitted(*_emptyFooter);
}

double OZTableViewController::heightForFooterInSection(size_t section) {
    if (const auto* view = viewForFooterInSection(section)) {
        return view->height;
    }
    const bool isLast = section == lastSectionInTable();
    return isLast || viewForHeaderInSection(section + 1) != nullptr ? usualFooter : noHeight;
}

void OZTableViewController::accessoryButtonTapped(IndexPath place) {
    if (_table != nullptr) {
        _table->reloadRow(place);
        _table->selectRow(place);
    }
    didSelectRowAtIndexPath(place);
}

bool OZTableViewController::shouldShowTableIndexTitles() const {
    const auto section = indexedTableSection();
    return section && *section < numberOfSections() && _table != nullptr &&
           _table->heightOfSection(*section) >= screensForIndex * context().host.screenHeight();
}

std::optional<std::vector<std::string>> OZTableViewController::sectionIndexTitles() {
    if (!shouldShowTableIndexTitles()) {
        return std::nullopt;
    }
    std::vector<std::string> letters;
    std::unordered_set<std::string> seen;
    _indexedRowIndexes.clear();
    const auto& section = _dataSource.sectionAtIndex(*indexedTableSection());
    for (size_t row = 0; row < section.numberOfRows(); ++row) {
        const std::string string = tableIndexStringForRow(section.rowAtIndex(row));
        if (!isNotEmptyOrWhitespace(string)) {
            continue;
        }
        if (const std::string letter = initialOf(string); seen.insert(letter).second) {
            letters.push_back(letter);
            _indexedRowIndexes.push_back(row);
        }
    }
    return letters.size() < lettersForIndex ? std::nullopt : std::optional(letters);
}

void OZTableViewController::indexTitleTapped(size_t index) {
    if (const auto section = indexedTableSection();
        section && _table != nullptr && index < _indexedRowIndexes.size()) {
        _table->scrollToRow({.section = *section, .row = _indexedRowIndexes[index]});
    }
}

TableHeader& OZTableViewController::headerForChange() {
    if (!_header) {
        _header.emplace();
    }
    return *_header;
}

void OZTableViewController::setTableHeaderTitle(std::string title) {
    headerForChange().title = std::move(title);
}

void OZTableViewController::setTableHeaderComment(std::string comment) {
    headerForChange().comment = std::move(comment);
}

size_t OZTableViewController::lastSectionInTable() const {
    OZ_REQUIRE(numberOfSections() > 0);
    return numberOfSections() - 1;
}

void OZTableViewController::reloadTableAnimated(bool animated) {
    if (animated) {
        _animateTableReload = true;
        auto& queue = context().device.mainQueue();
        queue.cancel(_reloadEnd);
        _reloadEnd = queue.postAfter(reloadAnimation, [this] { _animateTableReload = false; });
        stopTableScrollAnimation();
    }
    if (_table != nullptr) {
        _table->reloadData();
        if (shouldShowTableIndexTitles()) {
            _table->reloadSectionIndexTitles();
        }
    }
}

void OZTableViewController::stopTableScrollAnimation() {
    if (_table != nullptr) {
        _table->setContentOffset(_table->contentOffset(), false);
    }
}

void OZTableViewController::scrollTableToTopAnimated(bool animated) {
    if (_table != nullptr) {
        _table->setContentOffset(-topInset(), animated);
    }
}

void OZTableViewController::pinTableToTopAnimated(bool animated) {
    if (_table != nullptr && std::abs(_table->contentOffset() + topInset()) <= pinDistance) {
        scrollTableToTopAnimated(animated);
    }
}

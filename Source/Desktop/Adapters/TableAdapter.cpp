#include "Desktop/Adapters/TableAdapter.h"

#include "Interface/Screens/Clean/OZCleanViewController.h"

#include <QStringList>
#include <algorithm>

namespace {

constexpr int entryRole = Qt::UserRole + 1;

constexpr double lineHeight = 18;

QVariantMap controlOf(const CellControl& control) {
    if (const auto* segmented = std::get_if<SegmentedControl>(&control)) {
        QStringList titles;
        for (const auto& title : segmented->titles) {
            titles.push_back(QString::fromStdString(title));
        }
        return {{"control", "segments"},
                {"titles", titles},
                {"value", static_cast<int>(segmented->selected)},
                {"enabled", segmented->isEnabled}};
    }
    const auto& onOff = std::get<SwitchControl>(control);
    return {{"control", "switch"}, {"value", onOff.isOn ? 1 : 0}, {"enabled", onOff.isEnabled}};
}

} // namespace

TableAdapter::TableAdapter(OZTableViewController& screen)
    : PageView(screen, "table")
    , _table(screen) {}

QVariantList TableAdapter::partitions() const {
    QVariantList partitions;
    if (const auto* clean = dynamic_cast<const OZCleanViewController*>(&_table)) {
        for (const auto& partition : clean->diskUsage()) {
            partitions.push_back(QVariantMap{{"name", QString::fromStdString(partition.name())},
                                             {"share", partition.usedShare()},
                                             {"words", QString::fromStdString(partition.sizesText())}});
        }
    }
    return partitions;
}

void TableAdapter::fill() {
    _list.clear();
    for (size_t section = 0; section < _table.numberOfSections(); ++section) {
        _list.push_back({Kind::header, {.section = section, .row = 0}});
        for (size_t row = 0; row < _table.numberOfRowsInSection(section); ++row) {
            _list.push_back({Kind::row, {.section = section, .row = row}});
        }
        _list.push_back({Kind::footer, {.section = section, .row = 0}});
    }
}

void TableAdapter::reloadData() {
    const size_t before = _list.size();
    fill();
    // The same rows with other content keep their place on the screen.
    if (before == _list.size() && before > 0) {
        _entries.changed(-1);
    } else {
        _entries.reset();
    }
}

void TableAdapter::reloadRow(IndexPath place) {
    _entries.changed(entryAt(place));
}

int TableAdapter::entryAt(IndexPath place) const {
    const auto found = std::ranges::find_if(
        _list, [&](const Entry& entry) { return entry.kind == Kind::row && entry.place == place; });
    return found == _list.end() ? -1 : static_cast<int>(found - _list.begin());
}

void TableAdapter::press(int entry) {
    const Entry pressed = _list.at(static_cast<size_t>(entry));
    _table.didSelectRowAtIndexPath(pressed.place);
}

void TableAdapter::turn(int entry, int value) {
    const Entry turned = _list.at(static_cast<size_t>(entry));
    _table.controlChanged(turned.place, static_cast<size_t>(value));
    _entries.changed(entry);
}

void TableAdapter::selectRow(IndexPath place) {
    emit selected(entryAt(place));
}

void TableAdapter::scrollToRow(IndexPath place) {
    emit entryWanted(entryAt(place));
}

void TableAdapter::setContentOffset(double offset, bool animated) {
    if (offset != _offset) {
        _offset = offset;
        emit scrollWanted(offset, animated);
    }
}

double TableAdapter::heightOfSection(size_t section) const {
    return static_cast<double>(_table.numberOfRowsInSection(section)) * OZTableViewController::rowHeight;
}

double TableAdapter::heightThatFits(const HeaderFooterView& /*label*/) const {
    return 2 * lineHeight;
}

int TableAdapter::Entries::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(_table._list.size());
}

QHash<int, QByteArray> TableAdapter::Entries::roleNames() const {
    return {{entryRole, "entry"}};
}

QVariantMap TableAdapter::Entries::rowAt(IndexPath place) const {
    const Cell cell = _table._table.cellForRowAtIndexPath(place);
    QVariantMap row{{"kind", "row"},
                    {"text", QString::fromStdString(cell.text)},
                    {"detail", QString::fromStdString(cell.detailText)},
                    {"image", QString::fromStdString(cell.image)},
                    {"accessory", static_cast<int>(cell.accessoryType)},
                    {"height", OZTableViewController::rowHeight},
                    {"first", place.row == 0},
                    {"last", place.row + 1 == _table._table.numberOfRowsInSection(place.section)}};
    if (cell.control) {
        row.insert(controlOf(*cell.control));
    }
    return row;
}

QVariant TableAdapter::Entries::data(const QModelIndex& index, int role) const {
    if (role != entryRole || !index.isValid()) {
        return {};
    }
    const auto& [kind, place] = _table._list.at(static_cast<size_t>(index.row()));
    if (kind == Kind::row) {
        return rowAt(place);
    }
    auto& screen = _table._table;
    const auto* view = kind == Kind::header ? screen.viewForHeaderInSection(place.section)
                                            : screen.viewForFooterInSection(place.section);
    const double height = kind == Kind::header ? screen.heightForHeaderInSection(place.section)
                                               : screen.heightForFooterInSection(place.section);
    return QVariantMap{{"kind", kind == Kind::header ? "header" : "footer"},
                       {"section", static_cast<int>(place.section)},
                       {"text", view == nullptr ? QString() : QString::fromStdString(view->text).trimmed()},
                       {"centred", view != nullptr && view->isCentered},
                       {"height", height}};
}

void TableAdapter::Entries::reset() {
    beginResetModel();
    endResetModel();
}

void TableAdapter::Entries::changed(int entry) {
    const int first = entry < 0 ? 0 : entry;
    const int last = entry < 0 ? rowCount({}) - 1 : entry;
    emit dataChanged(index(first), index(last), {entryRole});
}
